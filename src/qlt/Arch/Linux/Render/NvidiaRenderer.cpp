#include <qlt/Render/NvidiaRenderer.h>

// This system has neither Direct3D nor direct mode, so the renderer has no state.

NvidiaRenderer::NvidiaRenderer()
    : mState(nullptr)
{
}

NvidiaRenderer::~NvidiaRenderer() { Shutdown(); }

NvidiaRenderer::NvidiaRenderer(const NvidiaRenderer& other) = default;

NvidiaRenderer& NvidiaRenderer::operator=(const NvidiaRenderer& other) = default;

bool NvidiaRenderer::Initialize() { return false; }

bool NvidiaRenderer::IsInitialized() { return false; }

void NvidiaRenderer::Shutdown() {}

void NvidiaRenderer::Submit(ID3D11Device* /*device*/, ID3D11Texture2D* /*texture*/) {}
