#include "DirectModePipeline.h"

#include "Render/DirectModeMesh.h"

#include "DirectModeShaders.h"

#include <cfloat>
#include <cstring>

namespace qlt
{
namespace
{

/// The constants of the vertex shader, in its layout.
struct UniformBuffer
{
    float eyeToSrcOffset[2];
    float eyeToSrcScale[2];
};
static_assert(sizeof(UniformBuffer) == 16, "the shader's layout");

constexpr UniformBuffer EYE_HALVES[] = {{{0, 0}, {0.5f, 1}}, {{0.5f, 0}, {0.5f, 1}}};

constexpr D3D11_INPUT_ELEMENT_DESC Element(const char* semantic, UINT index, DXGI_FORMAT format,
                                           UINT offset)
{
    return {semantic, index, format, 0, offset, D3D11_INPUT_PER_VERTEX_DATA, 0};
}

constexpr D3D11_INPUT_ELEMENT_DESC VERTEX_LAYOUT[] = {
    Element("POSITION", 0, DXGI_FORMAT_R32G32B32_FLOAT, offsetof(DirectModeVertex, position)),
    Element("TEXCOORD", 0, DXGI_FORMAT_R32G32_FLOAT, offsetof(DirectModeVertex, red)),
    Element("TEXCOORD", 1, DXGI_FORMAT_R32G32_FLOAT, offsetof(DirectModeVertex, green)),
    Element("TEXCOORD", 2, DXGI_FORMAT_R32G32_FLOAT, offsetof(DirectModeVertex, blue)),
    Element("COLOR", 0, DXGI_FORMAT_R32_FLOAT, offsetof(DirectModeVertex, weight)),
};

} // namespace

bool DirectModePipeline::SetTarget(ID3D11Device& device, ID3D11Texture2D& target,
                                   DXGI_FORMAT format)
{
    D3D11_RENDER_TARGET_VIEW_DESC description{};
    description.Format = format;
    description.ViewDimension = D3D11_RTV_DIMENSION_TEXTURE2D;
    if (FAILED(
            device.CreateRenderTargetView(&target, &description, mTarget.ReleaseAndGetAddressOf())))
    {
        return false;
    }
    D3D11_TEXTURE2D_DESC size;
    target.GetDesc(&size);
    mViewport = {0, 0, static_cast<float>(size.Width), static_cast<float>(size.Height), 0, 1};
    return true;
}

bool DirectModePipeline::Make(ID3D11Device& device, ID3D11DeviceContext& context)
{
    return MakeMesh(device, Params::EYE_LEFT, mEyes[0]) &&
           MakeMesh(device, Params::EYE_RIGHT, mEyes[1]) && MakeConstants(device, context) &&
           MakeShaders(device) && MakeSampler(device);
}

void DirectModePipeline::Release()
{
    mInputLayout.Reset();
    for (ComPtr<ID3D11Buffer> Eye::*const buffer : {&Eye::vertices, &Eye::indices, &Eye::constants})
    {
        for (Eye& eye : mEyes)
        {
            (eye.*buffer).Reset();
        }
    }
    mTarget.Reset();
    mVertexShader.Reset();
    mPixelShader.Reset();
    mSampler.Reset();
}

/// Makes a buffer that never changes.
bool DirectModePipeline::MakeBuffer(ID3D11Device& device, UINT bind, const void* data,
                                    std::size_t size, ComPtr<ID3D11Buffer>& buffer)
{
    D3D11_BUFFER_DESC description{};
    description.ByteWidth = static_cast<UINT>(size);
    description.Usage = D3D11_USAGE_DEFAULT;
    description.BindFlags = bind;
    const D3D11_SUBRESOURCE_DATA contents = {data, 0, 0};
    return SUCCEEDED(device.CreateBuffer(&description, &contents, buffer.ReleaseAndGetAddressOf()));
}

bool DirectModePipeline::MakeMesh(ID3D11Device& device, Params::Eye which, Eye& eye)
{
    const DirectModeMesh mesh = BuildDirectModeMesh(which);
    if (!MakeBuffer(device, D3D11_BIND_VERTEX_BUFFER, mesh.vertices.data(),
                    mesh.vertices.size() * sizeof(DirectModeVertex), eye.vertices) ||
        !MakeBuffer(device, D3D11_BIND_INDEX_BUFFER, mesh.indices.data(),
                    mesh.indices.size() * sizeof(std::uint32_t), eye.indices))
    {
        return false;
    }
    eye.indexCount = static_cast<UINT>(mesh.indices.size());
    return true;
}

bool DirectModePipeline::MakeConstants(ID3D11Device& device, ID3D11DeviceContext& context)
{
    D3D11_BUFFER_DESC description{};
    description.ByteWidth = sizeof(UniformBuffer);
    description.Usage = D3D11_USAGE_DYNAMIC;
    description.BindFlags = D3D11_BIND_CONSTANT_BUFFER;
    description.CPUAccessFlags = D3D11_CPU_ACCESS_WRITE;
    for (Eye& eye : mEyes)
    {
        if (FAILED(
                device.CreateBuffer(&description, nullptr, eye.constants.ReleaseAndGetAddressOf())))
        {
            return false;
        }
    }
    for (std::size_t i = 0; i < 2; ++i)
    {
        D3D11_MAPPED_SUBRESOURCE mapped{};
        if (FAILED(context.Map(mEyes[i].constants.Get(), 0, D3D11_MAP_WRITE_DISCARD, 0, &mapped)))
        {
            return false;
        }
        std::memcpy(mapped.pData, &EYE_HALVES[i], sizeof(UniformBuffer));
        context.Unmap(mEyes[i].constants.Get(), 0);
    }
    return true;
}

bool DirectModePipeline::MakeShaders(ID3D11Device& device)
{
    const ShaderObject& vertex = DIRECT_MODE_VERTEX_SHADER;
    const ShaderObject& pixel = DIRECT_MODE_PIXEL_SHADER;
    return SUCCEEDED(device.CreateInputLayout(VERTEX_LAYOUT, ARRAYSIZE(VERTEX_LAYOUT), vertex.bytes,
                                              vertex.size,
                                              mInputLayout.ReleaseAndGetAddressOf())) &&
           SUCCEEDED(device.CreateVertexShader(vertex.bytes, vertex.size, nullptr,
                                               mVertexShader.ReleaseAndGetAddressOf())) &&
           SUCCEEDED(device.CreatePixelShader(pixel.bytes, pixel.size, nullptr,
                                              mPixelShader.ReleaseAndGetAddressOf()));
}

bool DirectModePipeline::MakeSampler(ID3D11Device& device)
{
    D3D11_SAMPLER_DESC description{};
    description.Filter = D3D11_FILTER_MIN_MAG_MIP_LINEAR;
    description.AddressU = D3D11_TEXTURE_ADDRESS_WRAP;
    description.AddressV = D3D11_TEXTURE_ADDRESS_WRAP;
    description.AddressW = D3D11_TEXTURE_ADDRESS_WRAP;
    description.MaxAnisotropy = 1;
    description.ComparisonFunc = D3D11_COMPARISON_ALWAYS;
    description.MaxLOD = FLT_MAX;
    return SUCCEEDED(device.CreateSamplerState(&description, mSampler.ReleaseAndGetAddressOf()));
}

void DirectModePipeline::Draw(ID3D11DeviceContext& context, ID3D11ShaderResourceView* image) const
{
    const UINT stride = sizeof(DirectModeVertex);
    const UINT offset = 0;
    // The two meshes cover the whole target, so it need not be cleared.
    for (const Eye& eye : mEyes)
    {
        context.IASetInputLayout(mInputLayout.Get());
        context.IASetVertexBuffers(0, 1, eye.vertices.GetAddressOf(), &stride, &offset);
        context.IASetIndexBuffer(eye.indices.Get(), DXGI_FORMAT_R32_UINT, 0);
        context.IASetPrimitiveTopology(D3D11_PRIMITIVE_TOPOLOGY_TRIANGLELIST);
        context.OMSetRenderTargets(1, mTarget.GetAddressOf(), nullptr);
        context.RSSetViewports(1, &mViewport);
        context.VSSetShader(mVertexShader.Get(), nullptr, 0);
        context.PSSetShader(mPixelShader.Get(), nullptr, 0);
        context.PSSetSamplers(0, 1, mSampler.GetAddressOf());
        context.PSSetShaderResources(0, 1, &image);
        context.VSSetConstantBuffers(0, 1, eye.constants.GetAddressOf());
        context.DrawIndexed(eye.indexCount, 0, 0);
    }
}

} // namespace qlt
