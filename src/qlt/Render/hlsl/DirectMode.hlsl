// The lens shaders of direct mode. They sample each colour of a pixel at the texture coordinates of
// the mesh, in the eye's half of the engine's image. The build compiles them into the library.

cbuffer uniformBuffer : register(b0)
{
    float2 EyeToSrcOffset; // of the eye's half of the image
    float2 EyeToSrcScale;
};

Texture2D<float4> shaderTexture : register(t0);
SamplerState sampleType : register(s0);

struct VertexInput
{
    float4 position : POSITION0;
    float2 red : TEXCOORD0;
    float2 green : TEXCOORD1;
    float2 blue : TEXCOORD2;
    float weight : COLOR0;
};

struct PixelInput
{
    float4 position : SV_POSITION;
    float2 red : TEXCOORD0;
    float2 green : TEXCOORD1;
    float2 blue : TEXCOORD2;
    float weight : COLOR0;
};

PixelInput VertexMain(VertexInput input)
{
    PixelInput output;
    output.position = float4(input.position.xyz, 1);
    output.red = input.red * EyeToSrcScale + EyeToSrcOffset;
    output.green = input.green * EyeToSrcScale + EyeToSrcOffset;
    output.blue = input.blue * EyeToSrcScale + EyeToSrcOffset;
    output.weight = input.weight;
    return output;
}

float4 PixelMain(PixelInput input) : SV_Target0
{
    return float4(shaderTexture.Sample(sampleType, input.red).r * input.weight,
                  shaderTexture.Sample(sampleType, input.green).g * input.weight,
                  shaderTexture.Sample(sampleType, input.blue).b * input.weight, 1);
}
