#include <qlt/Sensors/Camera.h>

#include "Runtime/Check.h"
#include "Runtime/FrameHeader.h"
#include "Runtime/VRUsbStreamAsync.h"
#include "Sensors/Camera/GlTexture.h"

#define QLT_SOURCE_FILE L"Sensors/Camera"

namespace qlt
{
namespace
{

constexpr std::uint16_t VENDOR_ID = 0x04B4;
constexpr std::uint16_t PRODUCT_ID = 0x00F1;
constexpr std::uint8_t BULK_ADDRESS = 0x82;
constexpr std::uint32_t FRAME_SIZE = 0x388000; // header, image and unused bytes
constexpr int WIDTH = 2560;
constexpr int HEIGHT = 1440;
static_assert(FRAME_HEADER_SIZE + WIDTH * HEIGHT <= FRAME_SIZE);

} // namespace

Camera::Camera()
    : Camera(0)
{
}

Camera::Camera(unsigned int texture_id, RENDERER renderer)
    : Camera(texture_id, renderer, UsbHost::System())
{
}

Camera::Camera(unsigned int texture_id, RENDERER renderer, UsbHost& host)
    : mRenderer(renderer)
    , mStream(nullptr)
{
    auto stream =
        std::make_unique<VRUsbStreamAsync>(VENDOR_ID, PRODUCT_ID, BULK_ADDRESS, FRAME_SIZE, host);
    InitGraphics(texture_id);
    stream->Init();
    stream->SetTrashEnabled(true);
    mFrameEvent = stream->CreateFrameConsumerEvent(L"VR_FRAME_CONSUMER").Handle();
    stream->Start(true, WAIT_FOREVER);
    mStream = stream.release();
}

Camera::~Camera()
{
    mStream->Stop(true);
    delete mStream;
}

void Camera::InitGraphics(unsigned int id)
{
    if (mRenderer == RENDERER_GL)
    {
        mTextureId = InitLuminanceTexture(id);
    }
    else if (mRenderer == RENDERER_D3D)
    {
        QLT_CHECK_AS(id != 0, L"texture_id", 60);
        mTextureId = id;
    }
}

void Camera::Update()
{
    if (WaitNativeEvent(mFrameEvent, WAIT_FOREVER) != WAIT_SIGNALLED)
    {
        return;
    }
    const std::uint8_t* frame = mStream->GetCurrentFrame();
    if (frame != nullptr && mRenderer == RENDERER_GL)
    {
        UploadLuminance(mTextureId, WIDTH, HEIGHT, frame + FRAME_HEADER_SIZE);
    }
}

int Camera::GetWidth() { return WIDTH; }

int Camera::GetHeight() { return HEIGHT; }

int Camera::GetTextureId() const { return static_cast<int>(mTextureId); }

} // namespace qlt
