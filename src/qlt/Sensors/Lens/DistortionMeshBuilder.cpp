#include <qlt/Sensors/DistortionMeshBuilder.h>

#include "Runtime/Check.h"
#include "Sensors/Lens/DistortionRow.h"
#include "Sensors/Lens/LensSplines.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#define QLT_SOURCE_FILE L"Sensors/DistortionMeshBuilder"

namespace qlt
{
namespace
{

/// The lines of a grid of `resolution` cells, from -1 to 1. Rounding may move the last one.
std::vector<float> GridLines(int resolution)
{
    const float step = 2.0f / static_cast<float>(resolution);
    std::vector<float> lines;
    for (int i = 0; i <= resolution; ++i)
    {
        lines.push_back(static_cast<float>(i) * step - 1.0f);
    }
    return lines;
}

/// `count` as an int. For a valid grid, a count that does not fit throws. For an invalid grid, such
/// a count becomes 0, because the resolution has already been reported.
int Count(std::int64_t count, bool isGrid)
{
    if (isGrid && count > INT32_MAX)
    {
        throw std::bad_array_new_length();
    }
    return count > 0 && count <= INT32_MAX ? static_cast<int>(count) : 0;
}

/// The header in front of every array. It points to the same array of the previous build, because
/// an engine may still draw from it. Its alignment is that of memory from operator new.
struct alignas(16) ArrayHeader
{
    ArrayHeader* earlier;
};

ArrayHeader* HeaderOf(void* array)
{
    return array != nullptr ? static_cast<ArrayHeader*>(array) - 1 : nullptr;
}

/// Makes `fresh` the current array, which then owns the earlier ones.
template <typename Array>
void Replace(Array& current, Array& fresh)
{
    HeaderOf(fresh.get())->earlier = HeaderOf(current.release());
    current = std::move(fresh);
}

} // namespace

DistortionMeshBuilder::DistortionMeshBuilder(int resX, int resY, Params::Eye eye, bool triangleList)
    : mTriangleList(triangleList)
    , mEye(eye)
    , mResX(resX)
    , mResY(resY)
    , mNumVertices(0)
    , mNumIndices(0)
{
    QLT_CHECK(mResX > 0);
    QLT_CHECK(mResY > 0);
}

DistortionMeshBuilder::~DistortionMeshBuilder()
{
    QLT_CHECK((mNumVertices && mPosition && mTextureR && mTextureG && mTextureB && mIndices) ||
              (!mNumVertices && !mPosition && !mTextureR && !mTextureG && !mTextureB && !mIndices));
}

void DistortionMeshBuilder::MeshArrayDeleter::operator()(void* array) const
{
    for (ArrayHeader* header = HeaderOf(array); header != nullptr;)
    {
        ArrayHeader* const earlier = header->earlier;
        ::operator delete(header);
        header = earlier;
    }
}

void DistortionMeshBuilder::BuildMesh()
{
    const std::int64_t x = mResX;
    const std::int64_t y = mResY;
    const bool isGrid = x > 0 && y > 0;
    const int vertices = Count((x + 1) * (y + 1), isGrid);
    if (vertices == 0)
    {
        return;
    }
    const int indices = Count(mTriangleList ? 6 * x * y : 2 * y * (x + 2) - 2, isGrid);
    MeshArray<Vec3> position = MakeArray<Vec3>(vertices);
    MeshArray<Vec2> textureR = MakeArray<Vec2>(vertices);
    MeshArray<Vec2> textureG = MakeArray<Vec2>(vertices);
    MeshArray<Vec2> textureB = MakeArray<Vec2>(vertices);
    MeshArray<int> index = MakeArray<int>(indices);
    FillVertices(position.get(), textureR.get(), textureG.get(), textureB.get());
    if (isGrid)
    {
        mTriangleList ? FillTriangleList(index.get()) : FillTriangleStrip(index.get());
    }
    // From here on nothing can fail, so the destructor finds all arrays or none.
    Replace(mPosition, position);
    Replace(mTextureR, textureR);
    Replace(mTextureG, textureG);
    Replace(mTextureB, textureB);
    Replace(mIndices, index);
    mNumVertices = vertices;
    mNumIndices = indices;
}

/// Zero the array only for a non-positive resolution, which leaves elements unwritten. A valid mesh
/// writes every element before it reads it, and zeroing would make a large build take one and a
/// half times as long.
template <typename Element>
DistortionMeshBuilder::MeshArray<Element> DistortionMeshBuilder::MakeArray(int count) const
{
    const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(Element);
    auto* const header = new (::operator new(sizeof(ArrayHeader) + bytes)) ArrayHeader{nullptr};
    void* const array = header + 1;
    if (mResX <= 0 || mResY <= 0)
    {
        std::memset(array, 0, bytes);
    }
    return MeshArray<Element>(static_cast<Element*>(array));
}

void DistortionMeshBuilder::FillVertices(Vec3* position, Vec2* red, Vec2* green, Vec2* blue) const
{
    const std::vector<float> xs = GridLines(mResX);
    const std::vector<float> ys = GridLines(mResY);
    DistortionRow row(HeadsetLens(), mEye, xs);
    const auto fill = [&](std::size_t j)
    {
        row.MoveTo(ys[j]);
        const std::size_t v = j * xs.size();
        row.GetPosition(xs, ys[j], position + v);
        row.GetTextures(red + v, green + v, blue + v);
    };
    // Mirrored rows share radii and scales, so fill them in pairs.
    for (std::size_t low = 0, end = ys.size(); low < end; ++low)
    {
        fill(low);
        if (low < --end)
        {
            fill(end);
        }
    }
}

//  v+W --- v+W+1      two triangles, v v+W v+1 and v+W v+1 v+W+1
//   |  \\     |
//   v --- v+1
void DistortionMeshBuilder::FillTriangleList(int* index) const
{
    const int width = mResX + 1;
    const int* const first = index;
    for (int v = 0; v < mResX; ++v)
    {
        for (const int corner : {v, v + width, v + 1, v + width, v + 1, v + width + 1})
        {
            *index++ = corner;
        }
    }
    // The indices of a row are those of the row below, plus one row of vertices.
    const std::ptrdiff_t row = index - first;
    for (int j = 1; j < mResY; ++j, index += row)
    {
        std::transform(index - row, index, index, [width](int below) { return below + width; });
    }
}

// Each pair of rows makes a strip from left to right: bottom, top, bottom, top. The last index of a
// strip and the first index of the next one are repeated, so that triangles without area join the
// strips.
void DistortionMeshBuilder::FillTriangleStrip(int* index) const
{
    const int width = mResX + 1;
    for (int j = 0; j < mResY; ++j)
    {
        const int first = width * j;
        if (j > 0)
        {
            *index++ = first;
        }
        for (int v = first; v < first + width; ++v)
        {
            *index++ = v;
            *index++ = v + width;
        }
        if (j < mResY - 1)
        {
            *index++ = first + mResX + width;
        }
    }
}

int DistortionMeshBuilder::GetNumVertices() const { return mNumVertices; }

int DistortionMeshBuilder::GetNumIndices() const { return mNumIndices; }

const Vec3* DistortionMeshBuilder::GetPosition() const { return mPosition.get(); }

const Vec2* DistortionMeshBuilder::GetTextureR() const { return mTextureR.get(); }

const Vec2* DistortionMeshBuilder::GetTextureG() const { return mTextureG.get(); }

const Vec2* DistortionMeshBuilder::GetTextureB() const { return mTextureB.get(); }

const int* DistortionMeshBuilder::GetIndices() const { return mIndices.get(); }

} // namespace qlt
