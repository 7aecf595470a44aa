// A frame that the program has sent. It is checked, and it contains no pointer to memory of the
// program.
#pragma once

#include "State/Extensions.h"
#include "State/Spaces.h"
#include "State/SwapchainRules.h"

#include <array>
#include <memory>

namespace qltxr
{

constexpr std::uint32_t MAX_LAYERS = 16;
constexpr std::uint32_t VIEW_COUNT = 2;

/// The images of a swapchain in the graphics API. Any thread may be the last owner.
class ImageSet
{
public:
    virtual ~ImageSet() = default;

    /// Fills one structure for each image. Types and chains stay as they are. Throws
    /// XR_ERROR_VALIDATION_FAILURE when the structures are of another API.
    virtual void Enumerate(XrSwapchainImageBaseHeader* images) const = 0;

    /// Call it when the program has finished its drawing into the image, on the thread that says
    /// so.
    virtual void Released(std::uint32_t image) = 0;
};

struct Swapchain
{
    static constexpr HandleKind KIND = HandleKind::Swapchain;

    Swapchain(HandleTable& table, const XrSwapchainCreateInfo& createInfo,
              std::shared_ptr<ImageSet> set, XrSession itsSession)
        : info(createInfo)
        , images(createInfo)
        , imageSet(std::move(set))
        , session(itsSession)
        , handle(table, this)
    {
    }

    const XrSwapchainCreateInfo info;
    SwapchainImages images;
    const std::shared_ptr<ImageSet> imageSet;
    const XrSession session;
    Registration<XrSwapchain, KIND> handle;
};

struct Space
{
    static constexpr HandleKind KIND = HandleKind::Space;

    Space(HandleTable& table, const SpaceOrigin& itsOrigin, XrSession itsSession)
        : origin(itsOrigin)
        , session(itsSession)
        , handle(table, this)
    {
    }

    const SpaceOrigin origin;
    const XrSession session;
    Registration<XrSpace, KIND> handle;
};

/// A part of an image that the program has released.
struct SubImage
{
    std::shared_ptr<ImageSet> images;
    std::uint32_t image = 0;
    std::uint32_t arrayIndex = 0;
    XrRect2Di rect{}; // in pixels
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

struct LayerView
{
    SubImage source;
    Rigid pose; // the pose of the eye, or of the quad, in the layer's space
    XrFovf fov{};
};

struct Layer
{
    bool isQuad = false;
    bool hasAlpha = false; // otherwise the layer hides everything below it
    bool isPremultiplied = true;
    SpaceOrigin space;
    std::array<LayerView, VIEW_COUNT> views; // a quad uses the first view for both eyes
    XrEyeVisibility eyes = XR_EYE_VISIBILITY_BOTH;
    XrExtent2Df size{}; // the size of a quad in metres
};

struct Frame
{
    std::array<Layer, MAX_LAYERS> layers;
    std::uint32_t layerCount = 0;
    XrTime displayTime = 0;
};

/// Checks all layers first, and fills the frame only after that. It does not allocate.
void TakeLayers(const HandleTable& table, const EnabledExtensions& extensions,
                const XrFrameEndInfo& info, Frame& frame);

} // namespace qltxr
