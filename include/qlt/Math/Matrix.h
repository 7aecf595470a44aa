#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Quaternion.h>
#include <qlt/Math/Vector.h>

namespace qlt
{

/// A 4 x 4 matrix in single precision. Storage is row-major: element (r, c) is entry 4r + c.
/// Vectors are columns that stand on the right: a point p maps to M * p, so a translation is in the
/// entries 3, 7 and 11. Coordinates are right-handed. A default matrix is all zero and not the
/// identity.
///
///     const qlt::Matrix view = qlt::Matrix::FirstPersonView(eyeOffset, position, orientation);
///     const qlt::Matrix projection = qlt::Matrix::PerspectiveProjection(
///         qlt::Params::EYE_FOV_DEG, qlt::Params::EYE_ASPECT_RATIO, 0.1f, 100.0f);
///     glUniformMatrix4fv(location, 1, GL_TRUE, &(projection * view).array());
///
/// No operation throws. Different threads may use different matrices.
class QLT_API Matrix
{
public:
    /// All entries are zero.
    Matrix();

    /// The first of the sixteen entries, which lie in memory in row-major order.
    QLT_INLINE const float& array() const { return mEntries[0]; }

    /// Writes a row. A `row` outside 0 .. 3 is reported as an assertion and then written all the
    /// same, so never pass one.
    void SetRow(int row, float a, float b, float c, float d);

    /// Writes a column. A `col` outside 0 .. 3 is reported as an assertion and then written all the
    /// same, so never pass one.
    void SetColumn(int col, float a, float b, float c, float d);

    /// Writes the components of `v` and then `w` into a column, as the other SetColumn does.
    void SetColumn(int col, const Vec3& v, float w);

    /// Writes `s` into the four entries of the diagonal and leaves the others.
    void SetDiagonal(float s);

    /// Writes the four entries of the diagonal, from the first row to the last, and leaves the
    /// others.
    void SetDiagonal(float a, float b, float c, float d);

    /// Exchanges rows and columns in place.
    void Transpose();

    /// The matrix that changes nothing.
    static Matrix Identity();

    /// Scales x, y and z by `s`. Entry 15 is 1.
    static Matrix ScaleMatrix(float s);

    /// Scales each axis by its own factor. Entry 15 is 1.
    static Matrix ScaleMatrix(float x, float y, float z);

    /// Moves a point by `t`.
    static Matrix TranslationMatrix(const Vec3& t);

    /// The rotation of a unit quaternion. `q` is not normalised.
    static Matrix RotationMatrix(const Quaternion& q);

    /// The view of an eye: T(-a) * R(q^-1) * T(-b). `b` is the position of the head, `q` its
    /// orientation, and `a` the offset of the eye in head coordinates.
    static Matrix FirstPersonView(Vec3 a, const Vec3& b, const Quaternion& q);

    /// The view from `eye` to `target`. deliberate: the axes are in the columns, so the rotation
    /// part goes from camera to world while the translation goes from world to camera. Engines
    /// that want the axes in the rows transpose the matrix.
    static Matrix LookAtView(const Vec3& eye, const Vec3& target, const Vec3& up);

    /// OpenGL's orthographic projection with depths in [-1, 1]. It asserts right > left, top >
    /// bottom and far > near. An extent that is not above FLT_EPSILON is reported as an assertion
    /// and gives a matrix of zeros.
    static Matrix OrthogonalProjection(float left, float right, float bottom, float top,
                                       float nearZ, float farZ);

    /// OpenGL's perspective projection. `fovDeg` is the horizontal field of view in degrees,
    /// `aspect` the ratio of width to height. No argument is checked; degenerate ones give
    /// infinities or NaN.
    static Matrix PerspectiveProjection(float fovDeg, float aspect, float nearZ, float farZ);

    friend QLT_API Matrix operator*(const Matrix& a, const Matrix& b);

private:
    float mEntries[16];
};

/// The product of two matrices. The sums over k run upwards.
QLT_API Matrix operator*(const Matrix& a, const Matrix& b);

} // namespace qlt
