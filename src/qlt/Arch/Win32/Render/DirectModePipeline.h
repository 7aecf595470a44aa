// The Direct3D 11 objects of the direct-mode renderer.
#pragma once

#include <qlt/Sensors/Params.h>

#include <cstddef>
#include <windows.h>

#include <d3d11.h>
#include <wrl/client.h>

namespace qlt
{

class DirectModePipeline
{
public:
    /// SetTarget makes the view of `target` in `format`, and Make makes all other objects. Both
    /// replace existing objects. They return false when a step fails.
    bool SetTarget(ID3D11Device& device, ID3D11Texture2D& target, DXGI_FORMAT format);
    bool Make(ID3D11Device& device, ID3D11DeviceContext& context);

    void Release();

    /// Draws both eyes of a side-by-side image.
    void Draw(ID3D11DeviceContext& context, ID3D11ShaderResourceView* image) const;

private:
    template <typename Interface>
    using ComPtr = Microsoft::WRL::ComPtr<Interface>;

    /// The objects with which one eye is drawn.
    struct Eye
    {
        ComPtr<ID3D11Buffer> vertices;
        ComPtr<ID3D11Buffer> indices;
        UINT indexCount = 0;
        ComPtr<ID3D11Buffer> constants;
    };

    static bool MakeBuffer(ID3D11Device& device, UINT bind, const void* data, std::size_t size,
                           ComPtr<ID3D11Buffer>& buffer);
    static bool MakeMesh(ID3D11Device& device, Params::Eye which, Eye& eye);
    bool MakeConstants(ID3D11Device& device, ID3D11DeviceContext& context);
    bool MakeShaders(ID3D11Device& device);
    bool MakeSampler(ID3D11Device& device);

    ComPtr<ID3D11InputLayout> mInputLayout;
    Eye mEyes[2];
    ComPtr<ID3D11RenderTargetView> mTarget;
    D3D11_VIEWPORT mViewport{}; // the whole target
    ComPtr<ID3D11VertexShader> mVertexShader;
    ComPtr<ID3D11PixelShader> mPixelShader;
    ComPtr<ID3D11SamplerState> mSampler;
};

} // namespace qlt
