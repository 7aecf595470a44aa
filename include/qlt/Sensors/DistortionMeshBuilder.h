#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Vector.h>
#include <qlt/Sensors/Params.h>

#include <memory>

namespace qlt
{

/// The lens pre-distortion of one eye as a grid of vertices. An engine draws the grid over the
/// eye's viewport and samples the rendered eye image at the texture coordinates of each colour
/// channel. Draw it without back-face culling, because the two triangles of a cell have opposite
/// orientations.
///
///     qlt::DistortionMeshBuilder mesh(32, 32, qlt::Params::EYE_LEFT, true);
///     mesh.BuildMesh();
///     Upload(mesh.GetPosition(), mesh.GetTextureR(), mesh.GetTextureG(), mesh.GetTextureB(),
///            mesh.GetNumVertices());
///     UploadIndices(mesh.GetIndices(), mesh.GetNumIndices());
///
/// The builder owns the arrays. One thread at a time may use a builder; the builders of both eyes
/// may run in parallel.
class QLT_API DistortionMeshBuilder
{
public:
    /// A grid of `resX` by `resY` cells, drawn as a triangle list or as one strip with degenerate
    /// joins. A resolution below 1 is reported as an assertion.
    DistortionMeshBuilder(int resX, int resY, Params::Eye eye, bool triangleList);

    /// Releases the arrays of every build. It asserts that all five arrays exist or none.
    ~DistortionMeshBuilder();
    DistortionMeshBuilder(const DistortionMeshBuilder&) = delete;
    DistortionMeshBuilder& operator=(const DistortionMeshBuilder&) = delete;

    /// Builds the mesh in fresh arrays, from the tables of the headset and the current shared
    /// constants. The arrays of earlier calls stay valid and unchanged until the builder is
    /// destroyed, because an engine may still draw from them. A non-positive resolution may give a
    /// negative count, which becomes 0. Without vertices there are no arrays. An invalid eye is
    /// reported as one assertion per call. Throws std::bad_array_new_length when an int cannot
    /// count the vertices or the indices, and std::bad_alloc without memory; both leave the builder
    /// as it was.
    void BuildMesh();

    /// The number of vertices of the last BuildMesh; 0 before the first one.
    int GetNumVertices() const;

    /// The number of indices of the last BuildMesh; 0 before the first one.
    int GetNumIndices() const;

    /// GetNumVertices() positions (x, y, depth) in the eye's viewport: x (right) and y (up) in
    /// [-1, 1], row after row upwards; the depth is 0 inside the lens and -1.1 outside. This
    /// pointer and the following ones belong to the last BuildMesh, are null before the first one,
    /// and stay valid until the builder is destroyed.
    const Vec3* GetPosition() const;

    /// GetNumVertices() texture coordinates (u, v) in [0, 1] for the red channel.
    const Vec2* GetTextureR() const;

    /// GetNumVertices() texture coordinates (u, v) in [0, 1] for the green channel.
    const Vec2* GetTextureG() const;

    /// GetNumVertices() texture coordinates (u, v) in [0, 1] for the blue channel.
    const Vec2* GetTextureB() const;

    /// GetNumIndices() indices of vertices: three for each triangle of a list, or one strip.
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
