// Shows a ring of coloured squares around you, through OpenXR and OpenGL, until the session ends.
// Apart from drawing, it does only what every OpenXR program must do.
#include <qlt/Math/Quaternion.h>

#define GLFW_EXPOSE_NATIVE_GLX
#define GLFW_EXPOSE_NATIVE_X11
#define GLFW_INCLUDE_GLEXT
#define GL_GLEXT_PROTOTYPES
#include <GLFW/glfw3.h>
#include <GLFW/glfw3native.h>

#define XR_USE_GRAPHICS_API_OPENGL
#define XR_USE_PLATFORM_XLIB
#include <openxr/openxr.h>
#include <openxr/openxr_platform.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace
{

constexpr XrViewConfigurationType STEREO = XR_VIEW_CONFIGURATION_TYPE_PRIMARY_STEREO;

void Check(XrResult result, const char* what)
{
    if (XR_FAILED(result))
    {
        std::fprintf(stderr, "%s fails with %d\n", what, result);
        std::exit(1);
    }
}

/// Returns a structure of OpenXR with its type. All other fields are zero.
template <typename Structure>
Structure Make(XrStructureType type)
{
    Structure made{};
    made.type = type;
    return made;
}

/// Draws a square of 20 cm that faces the viewer, as a rectangle of pixels.
void DrawSquare(const XrView& view, const XrRect2Di& rect, const qlt::Vec3& center)
{
    const XrQuaternionf& q = view.pose.orientation;
    const XrVector3f& p = view.pose.position;
    const qlt::Vec3 at = // right, up and backwards of the eye
        qlt::Quaternion::Rotate({q.w, -q.x, -q.y, -q.z}, center - qlt::Vec3(p.x, p.y, p.z));
    const float left = std::tan(view.fov.angleLeft);
    const float right = std::tan(view.fov.angleRight);
    const float scale = static_cast<float>(rect.extent.width) / (right - left);
    const float half = 0.1f / -at.z();
    const float x = at.x() / -at.z();
    if (at.z() > -0.1f || x - half < left || x + half > right)
    {
        return; // it is behind the viewer, or it does not fit into the eye's half of the image
    }
    glScissor(rect.offset.x + static_cast<GLint>((x - half - left) * scale),
              static_cast<GLint>((at.y() / -at.z() - half - std::tan(view.fov.angleDown)) * scale),
              static_cast<GLsizei>(2 * half * scale), static_cast<GLsizei>(2 * half * scale));
    glClear(GL_COLOR_BUFFER_BIT);
}

void DrawWorld(const XrView& view, const XrRect2Di& rect)
{
    constexpr int SQUARES = 24;
    glScissor(rect.offset.x, rect.offset.y, rect.extent.width, rect.extent.height);
    glClearColor(0.02f, 0.03f, 0.08f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    for (int i = 0; i < 3 * SQUARES; ++i)
    {
        const float angle = 6.2831853f * static_cast<float>(i % SQUARES) / SQUARES;
        const float height = static_cast<float>(i / SQUARES - 1);
        const float x = std::sin(angle);
        const float z = -std::cos(angle);
        glClearColor(0.5f - 0.5f * z, 0.5f + 0.5f * x, 0.5f + 0.4f * height, 1.0f);
        DrawSquare(view, rect, {2.0f * x, height, 2.0f * z});
    }
}

XrInstance gInstance = XR_NULL_HANDLE;
XrSystemId gSystem = XR_NULL_SYSTEM_ID;
XrSession gSession = XR_NULL_HANDLE;
XrSpace gSpace = XR_NULL_HANDLE;
XrSwapchain gSwapchain = XR_NULL_HANDLE;
std::vector<XrSwapchainImageOpenGLKHR> gImages;
int32_t gWidth = 0; // the width of one eye's half in pixels
int32_t gHeight = 0;
XrCompositionLayerProjectionView gViews[2] = {};
bool gRunning = false;

void CreateInstance()
{
    const char* const extension = XR_KHR_OPENGL_ENABLE_EXTENSION_NAME;
    auto info = Make<XrInstanceCreateInfo>(XR_TYPE_INSTANCE_CREATE_INFO);
    std::strcpy(info.applicationInfo.applicationName, "hello_openxr");
    info.applicationInfo.apiVersion = XR_MAKE_VERSION(1, 0, 0);
    info.enabledExtensionCount = 1;
    info.enabledExtensionNames = &extension;
    Check(xrCreateInstance(&info, &gInstance), "xrCreateInstance");
    auto system = Make<XrSystemGetInfo>(XR_TYPE_SYSTEM_GET_INFO);
    system.formFactor = XR_FORM_FACTOR_HEAD_MOUNTED_DISPLAY;
    Check(xrGetSystem(gInstance, &system, &gSystem), "xrGetSystem");
}

void CreateSession()
{
    // OpenXR requires this call before xrCreateSession.
    PFN_xrGetOpenGLGraphicsRequirementsKHR getRequirements = nullptr;
    xrGetInstanceProcAddr(gInstance, "xrGetOpenGLGraphicsRequirementsKHR",
                          reinterpret_cast<PFN_xrVoidFunction*>(&getRequirements));
    auto needs = Make<XrGraphicsRequirementsOpenGLKHR>(XR_TYPE_GRAPHICS_REQUIREMENTS_OPENGL_KHR);
    getRequirements(gInstance, gSystem, &needs);
    auto binding = Make<XrGraphicsBindingOpenGLXlibKHR>(XR_TYPE_GRAPHICS_BINDING_OPENGL_XLIB_KHR);
    binding.xDisplay = glfwGetX11Display();
    binding.glxDrawable = glfwGetGLXWindow(glfwGetCurrentContext());
    binding.glxContext = glfwGetGLXContext(glfwGetCurrentContext());
    const XrSessionCreateInfo info{XR_TYPE_SESSION_CREATE_INFO, &binding, 0, gSystem};
    Check(xrCreateSession(gInstance, &info, &gSession), "xrCreateSession");
    auto space = Make<XrReferenceSpaceCreateInfo>(XR_TYPE_REFERENCE_SPACE_CREATE_INFO);
    space.referenceSpaceType = XR_REFERENCE_SPACE_TYPE_LOCAL;
    space.poseInReferenceSpace.orientation.w = 1.0f;
    Check(xrCreateReferenceSpace(gSession, &space, &gSpace), "xrCreateReferenceSpace");
}

/// Makes one swapchain, whose images hold both eyes side by side.
void CreateSwapchain()
{
    const auto empty = Make<XrViewConfigurationView>(XR_TYPE_VIEW_CONFIGURATION_VIEW);
    XrViewConfigurationView views[2] = {empty, empty};
    uint32_t count = 0;
    xrEnumerateViewConfigurationViews(gInstance, gSystem, STEREO, 2, &count, views);
    gWidth = static_cast<int32_t>(views[0].recommendedImageRectWidth);
    gHeight = static_cast<int32_t>(views[0].recommendedImageRectHeight);
    auto info = Make<XrSwapchainCreateInfo>(XR_TYPE_SWAPCHAIN_CREATE_INFO);
    info.usageFlags = XR_SWAPCHAIN_USAGE_COLOR_ATTACHMENT_BIT;
    info.format = GL_SRGB8_ALPHA8;
    info.width = 2 * views[0].recommendedImageRectWidth;
    info.height = views[0].recommendedImageRectHeight;
    info.sampleCount = info.faceCount = info.arraySize = info.mipCount = 1;
    Check(xrCreateSwapchain(gSession, &info, &gSwapchain), "xrCreateSwapchain");
    xrEnumerateSwapchainImages(gSwapchain, 0, &count, nullptr);
    gImages.assign(count, {XR_TYPE_SWAPCHAIN_IMAGE_OPENGL_KHR, nullptr, 0});
    auto* images = reinterpret_cast<XrSwapchainImageBaseHeader*>(gImages.data());
    xrEnumerateSwapchainImages(gSwapchain, count, &count, images);

    GLuint framebuffer = 0;
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glEnable(GL_SCISSOR_TEST);
}

/// Returns false when the session is over.
bool HandleEvents()
{
    auto event = Make<XrEventDataBuffer>(XR_TYPE_EVENT_DATA_BUFFER);
    while (xrPollEvent(gInstance, &event) == XR_SUCCESS)
    {
        const auto& changed = reinterpret_cast<const XrEventDataSessionStateChanged&>(event);
        const XrSessionBeginInfo begin{XR_TYPE_SESSION_BEGIN_INFO, nullptr, STEREO};
        switch (event.type == XR_TYPE_EVENT_DATA_SESSION_STATE_CHANGED ? changed.state : 0)
        {
        case XR_SESSION_STATE_READY:
            gRunning = xrBeginSession(gSession, &begin) == XR_SUCCESS;
            break;
        case XR_SESSION_STATE_STOPPING:
            gRunning = xrEndSession(gSession) != XR_SUCCESS;
            break;
        case XR_SESSION_STATE_EXITING:
            return false;
        }
    }
    return true;
}

/// Draws the views of this time. Returns false while the pose of the head is unknown.
bool Render(XrTime time)
{
    XrView views[2] = {Make<XrView>(XR_TYPE_VIEW), Make<XrView>(XR_TYPE_VIEW)};
    auto state = Make<XrViewState>(XR_TYPE_VIEW_STATE);
    const XrViewLocateInfo info{XR_TYPE_VIEW_LOCATE_INFO, nullptr, STEREO, time, gSpace};
    uint32_t index = 0;
    Check(xrLocateViews(gSession, &info, &state, 2, &index, views), "xrLocateViews");
    if ((state.viewStateFlags & XR_VIEW_STATE_ORIENTATION_VALID_BIT) == 0)
    {
        return false;
    }
    auto wait = Make<XrSwapchainImageWaitInfo>(XR_TYPE_SWAPCHAIN_IMAGE_WAIT_INFO);
    wait.timeout = XR_INFINITE_DURATION;
    xrAcquireSwapchainImage(gSwapchain, nullptr, &index);
    xrWaitSwapchainImage(gSwapchain, &wait);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D,
                           gImages[index].image, 0);
    for (int eye = 0; eye < 2; ++eye)
    {
        const XrRect2Di rect = {{eye * gWidth, 0}, {gWidth, gHeight}};
        DrawWorld(views[eye], rect);
        gViews[eye] =
            Make<XrCompositionLayerProjectionView>(XR_TYPE_COMPOSITION_LAYER_PROJECTION_VIEW);
        gViews[eye].pose = views[eye].pose;
        gViews[eye].fov = views[eye].fov;
        gViews[eye].subImage = {gSwapchain, rect, 0};
    }
    return xrReleaseSwapchainImage(gSwapchain, nullptr) == XR_SUCCESS;
}

void Frame()
{
    auto state = Make<XrFrameState>(XR_TYPE_FRAME_STATE);
    Check(xrWaitFrame(gSession, nullptr, &state), "xrWaitFrame");
    Check(xrBeginFrame(gSession, nullptr), "xrBeginFrame");
    const bool isDrawn = state.shouldRender == XR_TRUE && Render(state.predictedDisplayTime);
    auto layer = Make<XrCompositionLayerProjection>(XR_TYPE_COMPOSITION_LAYER_PROJECTION);
    layer.space = gSpace;
    layer.viewCount = 2;
    layer.views = gViews;
    const auto* layers = reinterpret_cast<const XrCompositionLayerBaseHeader*>(&layer);
    auto end = Make<XrFrameEndInfo>(XR_TYPE_FRAME_END_INFO);
    end.displayTime = state.predictedDisplayTime;
    end.environmentBlendMode = XR_ENVIRONMENT_BLEND_MODE_OPAQUE;
    end.layerCount = isDrawn;
    end.layers = &layers;
    Check(xrEndFrame(gSession, &end), "xrEndFrame");
}

} // namespace

int main()
{
    glfwInit();
    GLFWwindow* window = glfwCreateWindow(64, 64, "hello_openxr", nullptr, nullptr);
    if (window == nullptr)
    {
        std::fprintf(stderr, "there is no display with OpenGL\n");
        return 1;
    }
    glfwMakeContextCurrent(window);
    CreateInstance();
    CreateSession();
    CreateSwapchain();
    while (HandleEvents())
    {
        gRunning ? Frame() : glfwWaitEventsTimeout(0.05);
    }
    xrDestroyInstance(gInstance); // this also destroys everything that the instance owns
}
