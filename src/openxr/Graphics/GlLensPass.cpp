#include "Graphics/GlLensPass.h"

#include <cstddef>

namespace qltxr
{

namespace
{

constexpr const char* VERTEX_SHADER = R"(
in vec2 position;
in vec2 tangentRed;
in vec2 tangentGreen;
in vec2 tangentBlue;
in vec2 inLens;

// These map tangents to the layer's picture, for the times at which the panel shows its first row
// and its last row.
uniform mat3 pictureAtStart;
uniform mat3 pictureAtEnd;

// The coordinates are homogeneous, because they are linear over a triangle only before the
// division.
out vec3 pictureRed;
out vec3 pictureGreen;
out vec3 pictureBlue;
out vec2 place;

vec3 Picture(mat3 picture, vec2 tangent)
{
    return picture * vec3(tangent, -1.0);
}

void main()
{
    float late = 0.5 - 0.5 * position.y; // the panel shows its rows from the top
    mat3 picture = pictureAtStart + late * (pictureAtEnd - pictureAtStart);
    pictureRed = Picture(picture, tangentRed);
    pictureGreen = Picture(picture, tangentGreen);
    pictureBlue = Picture(picture, tangentBlue);
    place = inLens;
    gl_Position = vec4(position, 0.0, 1.0);
}
)";

constexpr const char* FRAGMENT_SHADER = R"(
in vec3 pictureRed;
in vec3 pictureGreen;
in vec3 pictureBlue;
in vec2 place;

#ifdef IS_ARRAY
uniform sampler2DArray image;
uniform float arrayIndex;
#else
uniform sampler2D image;
#endif
uniform vec4 rect;   // corner and size of the picture in the image
uniform vec4 inside; // the corners of the area in which samples touch no neighbouring picture
uniform vec2 alpha;  // 1 when the layer has alpha; 1 when its colours are premultiplied

layout(location = 0, index = 0) out vec4 color;
// The share of the background that each colour hides.
layout(location = 0, index = 1) out vec4 cover;

vec4 Sample(vec3 picture, out float covered)
{
    vec2 uv = picture.xy / picture.z;
    bool inPicture = picture.z > 0.0 && all(greaterThanEqual(uv, vec2(0.0))) &&
                     all(lessThanEqual(uv, vec2(1.0)));
    vec2 at = clamp(rect.xy + uv * rect.zw, inside.xy, inside.zw);
#ifdef IS_ARRAY
    vec4 texel = texture(image, vec3(at, arrayIndex));
#else
    vec4 texel = texture(image, at);
#endif
    texel.a = mix(1.0, texel.a, alpha.x);
    texel.rgb *= mix(texel.a, 1.0, alpha.y);
    covered = inPicture ? texel.a : 0.0;
    return inPicture ? texel : vec4(0.0);
}

void main()
{
    vec3 covered;
    vec3 light = vec3(Sample(pictureRed, covered.r).r, Sample(pictureGreen, covered.g).g,
                      Sample(pictureBlue, covered.b).b);
    float radius = length(place);
    float pixel = length(vec2(dFdx(radius), dFdy(radius)));
    float lens = clamp((1.0 - radius) / pixel + 0.5, 0.0, 1.0);
    color = vec4(light * lens, 1.0);
    cover = vec4(covered * lens, 1.0);
}
)";

constexpr const char* ATTRIBUTES[] = {"position", "tangentRed", "tangentGreen", "tangentBlue",
                                      "inLens"};
constexpr GLuint ATTRIBUTE_COUNT = 5;

const void* OffsetOf(GLuint attribute)
{
    constexpr std::size_t OFFSETS[] = {offsetof(LensVertex, position), offsetof(LensVertex, red),
                                       offsetof(LensVertex, green), offsetof(LensVertex, blue),
                                       offsetof(LensVertex, inLens)};
    return reinterpret_cast<const void*>(OFFSETS[attribute]);
}

GLuint MakeSampler(const GlFunctions& gl, GLint minFilter)
{
    GLuint sampler = 0;
    gl.GenSamplers(1, &sampler);
    gl.SamplerParameteri(sampler, GL_TEXTURE_MIN_FILTER, minFilter);
    gl.SamplerParameteri(sampler, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl.SamplerParameteri(sampler, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl.SamplerParameteri(sampler, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    return sampler;
}

} // namespace

GlLensPass::Program::Program(const GlFunctions& gl, const char* define)
    : program(gl, VERTEX_SHADER, FRAGMENT_SHADER, define, ATTRIBUTES, ATTRIBUTE_COUNT)
    , pictureAtStart(program.Uniform("pictureAtStart"))
    , pictureAtEnd(program.Uniform("pictureAtEnd"))
    , rect(program.Uniform("rect"))
    , inside(program.Uniform("inside"))
    , arrayIndex(program.Uniform("arrayIndex"))
    , alpha(program.Uniform("alpha"))
{
}

GlLensPass::GlLensPass(const GlFunctions& gl)
    : mGl(gl)
    , mPlain(gl, "")
    , mArray(gl, "#define IS_ARRAY\n")
    , mMeshes{Upload(qlt::Params::EYE_LEFT), Upload(qlt::Params::EYE_RIGHT)}
    , mSampler(MakeSampler(gl, GL_LINEAR))
    , mMipSampler(MakeSampler(gl, GL_LINEAR_MIPMAP_LINEAR))
{
}

GlLensPass::~GlLensPass()
{
    for (const Mesh& mesh : mMeshes)
    {
        mGl.DeleteVertexArrays(1, &mesh.vertexArray);
        mGl.DeleteBuffers(1, &mesh.vertices);
        mGl.DeleteBuffers(1, &mesh.indices);
    }
    mGl.DeleteSamplers(1, &mSampler);
    mGl.DeleteSamplers(1, &mMipSampler);
}

GlLensPass::Mesh GlLensPass::Upload(qlt::Params::Eye eye) const
{
    const LensMesh lens = BuildLensMesh(eye);
    const auto bytes = [](const auto& list)
    { return static_cast<GLsizeiptr>(list.size() * sizeof(list[0])); };
    Mesh mesh;
    mesh.indexCount = static_cast<GLsizei>(lens.indices.size());
    mGl.GenVertexArrays(1, &mesh.vertexArray);
    mGl.BindVertexArray(mesh.vertexArray);
    mGl.GenBuffers(1, &mesh.vertices);
    mGl.BindBuffer(GL_ARRAY_BUFFER, mesh.vertices);
    mGl.BufferData(GL_ARRAY_BUFFER, bytes(lens.vertices), lens.vertices.data(), GL_STATIC_DRAW);
    mGl.GenBuffers(1, &mesh.indices);
    mGl.BindBuffer(GL_ELEMENT_ARRAY_BUFFER, mesh.indices);
    mGl.BufferData(GL_ELEMENT_ARRAY_BUFFER, bytes(lens.indices), lens.indices.data(),
                   GL_STATIC_DRAW);
    for (GLuint i = 0; i < ATTRIBUTE_COUNT; ++i)
    {
        mGl.EnableVertexAttribArray(i);
        mGl.VertexAttribPointer(i, 2, GL_FLOAT, GL_FALSE, sizeof(LensVertex), OffsetOf(i));
    }
    mGl.BindVertexArray(0);
    return mesh;
}

// Each colour comes from its own place in the image, so each colour has its own alpha.
void GlLensPass::Draw(const Composition& composition, std::uint32_t width,
                      std::uint32_t height) const
{
    mGl.Enable(GL_BLEND);
    mGl.BlendFunc(GL_ONE, GL_ONE_MINUS_SRC1_COLOR);
    mGl.ActiveTexture(GL_TEXTURE0);
    const auto half = static_cast<GLint>(width / 2);
    for (std::uint32_t eye = 0; eye < VIEW_COUNT; ++eye)
    {
        mGl.Viewport(static_cast<GLint>(eye) * half, 0, half, static_cast<GLsizei>(height));
        mGl.BindVertexArray(mMeshes[eye].vertexArray);
        for (std::uint32_t i = 0; i < composition.frame->layerCount; ++i)
        {
            DrawLayer(composition.frame->layers[i], eye, composition);
        }
    }
    mGl.BindVertexArray(0);
    mGl.BindSampler(0, 0);
}

void GlLensPass::DrawLayer(const Layer& layer, std::uint32_t eye,
                           const Composition& composition) const
{
    Homography start{};
    Homography end{};
    if (!PictureOf(layer, eye, composition.scanStart, start) ||
        !PictureOf(layer, eye, composition.scanEnd, end))
    {
        return;
    }
    const SubImage& source = layer.views[layer.isQuad ? 0 : eye].source;
    const Program& program =
        static_cast<const GlImages&>(*source.images).IsArray() ? mArray : mPlain;
    program.program.Use();
    BindSource(program, source);
    mGl.UniformMatrix3fv(program.pictureAtStart, 1, GL_TRUE, start.data());
    mGl.UniformMatrix3fv(program.pictureAtEnd, 1, GL_TRUE, end.data());
    mGl.Uniform2f(program.alpha, layer.hasAlpha ? 1.0f : 0.0f, layer.isPremultiplied ? 1.0f : 0.0f);
    mGl.DrawElements(GL_TRIANGLES, mMeshes[eye].indexCount, GL_UNSIGNED_INT, nullptr);
}

void GlLensPass::BindSource(const Program& program, const SubImage& source) const
{
    const auto& images = static_cast<const GlImages&>(*source.images);
    const GLenum target = images.IsArray() ? GL_TEXTURE_2D_ARRAY : GL_TEXTURE_2D;
    mGl.BindTexture(target, images.Texture(source.image));
    mGl.BindSampler(0, images.HasMips() ? mMipSampler : mSampler);
    const float pixelX = 1.0f / static_cast<float>(source.width);
    const float pixelY = 1.0f / static_cast<float>(source.height);
    const float x = static_cast<float>(source.rect.offset.x) * pixelX;
    const float y = static_cast<float>(source.rect.offset.y) * pixelY;
    const float width = static_cast<float>(source.rect.extent.width) * pixelX;
    const float height = static_cast<float>(source.rect.extent.height) * pixelY;
    mGl.Uniform4f(program.rect, x, y, width, height);
    mGl.Uniform4f(program.inside, x + 0.5f * pixelX, y + 0.5f * pixelY, x + width - 0.5f * pixelX,
                  y + height - 0.5f * pixelY);
    mGl.Uniform1f(program.arrayIndex, static_cast<float>(source.arrayIndex));
}

} // namespace qltxr
