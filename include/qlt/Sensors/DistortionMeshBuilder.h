// The lens pre-distortion of one eye as a vertex grid: an engine draws it over the eye's viewport
// and samples the rendered eye image at each channel's texture coordinates. To be drawn without
// back-face culling: the two triangles of a cell have opposite orientations.
//
// The builder owns the arrays. One thread at a time; builders of the two eyes may run in parallel.
#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Vector.h>
#include <qlt/Sensors/Params.h>

#include <memory>

namespace qlt
{

class QLT_API DistortionMeshBuilder
{
public:
    /// A grid of resX x resY cells, as a triangle list or as one strip with degenerate joins.
    /// Asserts positive resolutions.
    DistortionMeshBuilder(int resX, int resY, Params::Eye eye, bool triangleList);

    /// Asserts that the arrays are either all there or none.
    ~DistortionMeshBuilder();
    DistortionMeshBuilder(const DistortionMeshBuilder&) = delete;
    DistortionMeshBuilder& operator=(const DistortionMeshBuilder&) = delete;

    /// Makes fresh arrays from the tables of the headset and the shared constants as they are now.
    /// The arrays of earlier calls stay valid and unchanged until the end of the builder, so that
    /// an engine may go on drawing from them. Counts that a non-positive resolution makes negative
    /// are 0, and without vertices there are no arrays. Asserts a valid eye, once a call.
    /// std::bad_array_new_length for a grid with more vertices or indices than an int can count;
    /// the builder is then as it was before, as after std::bad_alloc.
    void BuildMesh();

    /// Those of the last BuildMesh; zero until the first.
    int GetNumVertices() const;
    int GetNumIndices() const;

    /// GetNumVertices() positions (x, y, depth) in the eye's viewport, x and y in [-1, 1], x right,
    /// y up, rows upwards; the depth is 0 inside the lens and -1.1 outside. The pointer is that of
    /// the last BuildMesh, null until the first, and valid until the end of the builder. So are the
    /// others.
    const Vec3* GetPosition() const;

    /// GetNumVertices() texture coordinates (u, v) in [0, 1] for each colour channel.
    const Vec2* GetTextureR() const;
    const Vec2* GetTextureG() const;
    const Vec2* GetTextureB() const;

    /// GetNumIndices() vertex indices.
    const int* GetIndices() const;

private:
    struct QLT_LOCAL MeshArrayDeleter
    {
        void operator()(void* array) const;
    };
    template <typename Element>
    using MeshArray = std::unique_ptr<Element[], MeshArrayDeleter>;

    template <typename Element>
    MeshArray<Element> MakeArray(int count) const;
    void FillVertices(Vec3* position, Vec2* red, Vec2* green, Vec2* blue) const;
    void FillTriangleList(int* index) const;
    void FillTriangleStrip(int* index) const;

    bool mTriangleList;
    Params::Eye mEye;
    int mResX;
    int mResY;
    int mNumVertices;
    int mNumIndices;
    MeshArray<Vec3> mPosition;
    MeshArray<Vec2> mTextureR;
    MeshArray<Vec2> mTextureG;
    MeshArray<Vec2> mTextureB;
    MeshArray<int> mIndices;
};

} // namespace qlt
