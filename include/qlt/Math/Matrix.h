// A 4 x 4 single-precision matrix: row-major storage (element (r, c) is entry 4r + c), column
// vectors multiplied on the right (a point p maps to M * p), so a translation stands in entries 3,
// 7, 11. Right-handed. A default matrix is all zero, not the identity. Any thread may use them.
#pragma once

#include <qlt/Export.h>
#include <qlt/Math/Quaternion.h>
#include <qlt/Math/Vector.h>

namespace qlt
{

class QLT_API Matrix
{
public:
    Matrix();

    /// The first of the sixteen entries, which follow each other in row-major order.
    QLT_INLINE const float& array() const { return mEntries[0]; }

    /// `row` in 0 .. 3. Asserts the range and writes all the same: keep it in range.
    void SetRow(int row, float a, float b, float c, float d);

    /// `col` in 0 .. 3. Asserts the range and writes all the same: keep it in range.
    void SetColumn(int col, float a, float b, float c, float d);
    void SetColumn(int col, const Vec3& v, float w);

    /// Sets the four diagonal entries and leaves the others.
    void SetDiagonal(float s);
    void SetDiagonal(float a, float b, float c, float d);

    void Transpose();

    static Matrix Identity();

    /// Scales x, y and z; entry 15 is 1.
    static Matrix ScaleMatrix(float s);
    static Matrix ScaleMatrix(float x, float y, float z);

    static Matrix TranslationMatrix(const Vec3& t);

    /// The rotation of a unit quaternion; `q` is used as it is, not normalised.
    static Matrix RotationMatrix(const Quaternion& q);

    /// The view from a head: T(-a) * R(q^-1) * T(-b), with the head's position `b` and orientation
    /// `q` and the offset `a` of an eye in head coordinates.
    static Matrix FirstPersonView(Vec3 a, const Vec3& b, const Quaternion& q);

    /// deliberate: the axes stand in the columns, so that the rotation part is camera to world
    /// while the translation is world to camera; transpose for the other arrangement.
    static Matrix LookAtView(const Vec3& eye, const Vec3& target, const Vec3& up);

    /// OpenGL's orthographic projection, depth in [-1, 1]. Asserts right > left, top > bottom,
    /// far > near. All zero, with an assertion, when one extent is not above FLT_EPSILON.
    static Matrix OrthogonalProjection(float left, float right, float bottom, float top,
                                       float nearZ, float farZ);

    /// OpenGL's perspective projection from a horizontal field of view in degrees and the aspect
    /// ratio width / height. No argument is checked: degenerate ones give infinities or NaN.
    static Matrix PerspectiveProjection(float fovDeg, float aspect, float nearZ, float farZ);

    friend QLT_API Matrix operator*(const Matrix& a, const Matrix& b);

private:
    float mEntries[16];
};

/// The matrix product; the sums over k run upwards.
QLT_API Matrix operator*(const Matrix& a, const Matrix& b);

} // namespace qlt
