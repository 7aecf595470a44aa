#include <qlt/Render/NvidiaRenderer.h>

// There is neither Direct3D nor direct mode here.

struct NvidiaRenderer::State
{
};

NvidiaRenderer::NvidiaRenderer() = default;

NvidiaRenderer::~NvidiaRenderer() = default;

NvidiaRenderer::NvidiaRenderer(const NvidiaRenderer& other) = default;

NvidiaRenderer& NvidiaRenderer::operator=(const NvidiaRenderer& other) = default;

bool NvidiaRenderer::Initialize() { return false; }

bool NvidiaRenderer::IsInitialized() { return false; }

void NvidiaRenderer::Shutdown() {}

void NvidiaRenderer::Submit(ID3D11Device* /*device*/, ID3D11Texture2D* /*texture*/) {}
