#include "State/Layers.h"

#include "State/Structures.h"

namespace qltxr
{

namespace
{

constexpr XrCompositionLayerFlags LAYER_FLAGS =
    XR_COMPOSITION_LAYER_CORRECT_CHROMATIC_ABERRATION_BIT |
    XR_COMPOSITION_LAYER_BLEND_TEXTURE_SOURCE_ALPHA_BIT |
    XR_COMPOSITION_LAYER_UNPREMULTIPLIED_ALPHA_BIT;

void RequireSubImage(const HandleTable& table, const XrSwapchainSubImage& image)
{
    const Swapchain& swapchain = Resolve<Swapchain>(table, image.swapchain);
    Require(swapchain.images.Newest() != SwapchainImages::NONE, XR_ERROR_LAYER_INVALID);
    const XrRect2Di& rect = image.imageRect;
    const auto fits = [](std::int32_t offset, std::int32_t extent, std::uint32_t size)
    { return offset >= 0 && extent > 0 && std::int64_t{offset} + extent <= size; };
    Require(fits(rect.offset.x, rect.extent.width, swapchain.info.width) &&
                fits(rect.offset.y, rect.extent.height, swapchain.info.height),
            XR_ERROR_SWAPCHAIN_RECT_INVALID);
    Require(image.imageArrayIndex < swapchain.info.arraySize, XR_ERROR_VALIDATION_FAILURE);
}

void RequireDepth(const HandleTable& table, const void* chain)
{
    const auto* depth = FindInChain<XrCompositionLayerDepthInfoKHR>(
        chain, XR_TYPE_COMPOSITION_LAYER_DEPTH_INFO_KHR);
    if (depth == nullptr)
    {
        return;
    }
    RequireSubImage(table, depth->subImage);
    Require(depth->minDepth >= 0.0f && depth->minDepth <= depth->maxDepth &&
                depth->maxDepth <= 1.0f,
            XR_ERROR_VALIDATION_FAILURE);
}

void RequireProjection(const HandleTable& table, const XrCompositionLayerProjection& layer,
                       bool hasDepth)
{
    Require(layer.viewCount == VIEW_COUNT && layer.views != nullptr, XR_ERROR_VALIDATION_FAILURE);
    for (std::uint32_t i = 0; i < VIEW_COUNT; ++i)
    {
        const XrCompositionLayerProjectionView& view = layer.views[i];
        RequireType(&view, XR_TYPE_COMPOSITION_LAYER_PROJECTION_VIEW);
        RequirePose(view.pose);
        RequireSubImage(table, view.subImage);
        if (hasDepth) // without the extension the structure counts as unknown
        {
            RequireDepth(table, view.next);
        }
    }
}

void RequireQuad(const HandleTable& table, const XrCompositionLayerQuad& layer)
{
    Require(layer.eyeVisibility >= XR_EYE_VISIBILITY_BOTH &&
                layer.eyeVisibility <= XR_EYE_VISIBILITY_RIGHT && layer.size.width >= 0.0f &&
                layer.size.height >= 0.0f,
            XR_ERROR_VALIDATION_FAILURE);
    RequirePose(layer.pose);
    RequireSubImage(table, layer.subImage);
}

void RequireLayer(const HandleTable& table, const XrCompositionLayerBaseHeader* layer,
                  bool hasDepth)
{
    const bool isQuad = layer != nullptr && layer->type == XR_TYPE_COMPOSITION_LAYER_QUAD;
    Require(isQuad || (layer != nullptr && layer->type == XR_TYPE_COMPOSITION_LAYER_PROJECTION),
            XR_ERROR_LAYER_INVALID);
    Resolve<Space>(table, layer->space);
    Require((layer->layerFlags & ~LAYER_FLAGS) == 0, XR_ERROR_VALIDATION_FAILURE);
    isQuad ? RequireQuad(table, *reinterpret_cast<const XrCompositionLayerQuad*>(layer))
           : RequireProjection(table, *reinterpret_cast<const XrCompositionLayerProjection*>(layer),
                               hasDepth);
}

void Take(const HandleTable& table, const XrSwapchainSubImage& image, SubImage& taken)
{
    const Swapchain& swapchain = Resolve<Swapchain>(table, image.swapchain);
    taken.images = swapchain.imageSet;
    taken.image = swapchain.images.Newest();
    taken.arrayIndex = image.imageArrayIndex;
    taken.rect = image.imageRect;
    taken.width = swapchain.info.width;
    taken.height = swapchain.info.height;
}

void Take(const HandleTable& table, const XrCompositionLayerProjection& layer, Layer& taken)
{
    taken.isQuad = false;
    taken.eyes = XR_EYE_VISIBILITY_BOTH;
    for (std::uint32_t i = 0; i < VIEW_COUNT; ++i)
    {
        Take(table, layer.views[i].subImage, taken.views[i].source);
        taken.views[i].pose = FromPose(layer.views[i].pose);
        taken.views[i].fov = layer.views[i].fov;
    }
}

void Take(const HandleTable& table, const XrCompositionLayerQuad& layer, Layer& taken)
{
    taken.isQuad = true;
    taken.eyes = layer.eyeVisibility;
    taken.size = layer.size;
    Take(table, layer.subImage, taken.views[0].source);
    taken.views[0].pose = FromPose(layer.pose);
    taken.views[1].source.images.reset();
}

void Take(const HandleTable& table, const XrCompositionLayerBaseHeader& layer, Layer& taken)
{
    taken.hasAlpha = (layer.layerFlags & XR_COMPOSITION_LAYER_BLEND_TEXTURE_SOURCE_ALPHA_BIT) != 0;
    taken.isPremultiplied =
        (layer.layerFlags & XR_COMPOSITION_LAYER_UNPREMULTIPLIED_ALPHA_BIT) == 0;
    taken.space = Resolve<Space>(table, layer.space).origin;
    layer.type == XR_TYPE_COMPOSITION_LAYER_QUAD
        ? Take(table, reinterpret_cast<const XrCompositionLayerQuad&>(layer), taken)
        : Take(table, reinterpret_cast<const XrCompositionLayerProjection&>(layer), taken);
}

} // namespace

void TakeLayers(const HandleTable& table, const EnabledExtensions& extensions,
                const XrFrameEndInfo& info, Frame& frame)
{
    const bool hasDepth = extensions.Has(XR_KHR_COMPOSITION_LAYER_DEPTH_EXTENSION_NAME);
    Require(info.layerCount <= MAX_LAYERS, XR_ERROR_LAYER_LIMIT_EXCEEDED);
    Require(info.layerCount == 0 || info.layers != nullptr, XR_ERROR_VALIDATION_FAILURE);
    for (std::uint32_t i = 0; i < info.layerCount; ++i)
    {
        RequireLayer(table, info.layers[i], hasDepth);
    }
    for (std::uint32_t i = 0; i < info.layerCount; ++i)
    {
        Take(table, *info.layers[i], frame.layers[i]);
    }
    for (std::uint32_t i = info.layerCount; i < frame.layerCount; ++i)
    {
        frame.layers[i].views = {}; // releases their images
    }
    frame.layerCount = info.layerCount;
    frame.displayTime = info.displayTime;
}

} // namespace qltxr
