#include "Api/ExtensionList.h"

#include "State/Extensions.h"

#define XR_USE_GRAPHICS_API_OPENGL
#define XR_USE_TIMESPEC
#include <ctime>
#include <openxr/openxr_platform.h>

#include <algorithm>

namespace qltxr
{

const std::vector<OfferedExtension>& OfferedExtensions()
{
    static const std::vector<OfferedExtension> OFFERED = {
        {XR_KHR_OPENGL_ENABLE_EXTENSION_NAME, XR_KHR_opengl_enable_SPEC_VERSION},
        {XR_KHR_CONVERT_TIMESPEC_TIME_EXTENSION_NAME, XR_KHR_convert_timespec_time_SPEC_VERSION},
        {XR_KHR_VISIBILITY_MASK_EXTENSION_NAME, XR_KHR_visibility_mask_SPEC_VERSION},
        {XR_KHR_COMPOSITION_LAYER_DEPTH_EXTENSION_NAME,
         XR_KHR_composition_layer_depth_SPEC_VERSION},
        {XR_MND_HEADLESS_EXTENSION_NAME, XR_MND_headless_SPEC_VERSION},
        {LOCAL_FLOOR_NAME, LOCAL_FLOOR_VERSION},
    };
    return OFFERED;
}

bool IsOffered(std::string_view name)
{
    const auto& offered = OfferedExtensions();
    return std::any_of(offered.begin(), offered.end(),
                       [name](const OfferedExtension& one) { return name == one.name; });
}

} // namespace qltxr
