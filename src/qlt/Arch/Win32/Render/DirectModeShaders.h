// The compiled shaders of direct mode. The build generates the definitions from
// hlsl/DirectMode.hlsl.
#pragma once

#include <cstddef>

namespace qlt
{

struct ShaderObject
{
    const unsigned char* bytes;
    std::size_t size;
};

extern const ShaderObject DIRECT_MODE_VERTEX_SHADER;
extern const ShaderObject DIRECT_MODE_PIXEL_SHADER;

} // namespace qlt
