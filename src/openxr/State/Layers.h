// A frame as the program has handed it over: checked, and without a pointer to what the program
// owns.
#pragma once

#include "State/Spaces.h"
#include "State/SwapchainRules.h"

#include <array>
#include <memory>

namespace qltxr
{

constexpr std::uint32_t MAX_LAYERS = 16;
constexpr std::uint32_t VIEW_COUNT = 2;

/// The images of a swapchain, as its graphics API has them. The last owner may be any thread.
class ImageSet
{
public:
    virtual ~ImageSet() = default;

    /// Fills as many structures as there are images, without touching their types and chains;
    /// XR_ERROR_VALIDATION_FAILURE when they are of another API.
    virtual void Enumerate(XrSwapchainImageBaseHeader* images) const = 0;

    /// The program has drawn into the image; on the thread on which it says so.
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
    XrRect2Di rect{}; // pixels
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

struct LayerView
{
    SubImage source;
    Rigid pose; // in the layer's space: of the eye, or of the quad
    XrFovf fov{};
};

struct Layer
{
    bool isQuad = false;
    bool hasAlpha = false; // or else it covers what is below it
    bool isPremultiplied = true;
    SpaceOrigin space;
    std::array<LayerView, VIEW_COUNT> views; // of a quad, the first for both eyes
    XrEyeVisibility eyes = XR_EYE_VISIBILITY_BOTH;
    XrExtent2Df size{}; // of a quad, metres
};

struct Frame
{
    std::array<Layer, MAX_LAYERS> layers;
    std::uint32_t layerCount = 0;
    XrTime displayTime = 0;
};

/// Checks the layers, all before the first is used, and then fills the frame. Does not allocate.
void TakeLayers(const HandleTable& table, const XrFrameEndInfo& info, Frame& frame);

} // namespace qltxr
