#define QLT_EMIT_INLINE
#include <qlt/Math/Matrix.h>

#include <qlt/Math/MathUtil.h>

#include "Math/FloatMath.h"
#include "Runtime/Check.h"

#include <cfloat>
#include <cmath>
#include <utility>

#define QLT_SOURCE_FILE L"Math/Matrix"

namespace qlt
{

Matrix::Matrix()
    : mEntries{}
{
}

void Matrix::SetRow(int row, float a, float b, float c, float d)
{
    QLT_CHECK(row >= 0 && row < 4);
    float* entry = mEntries + 4 * row;
    entry[0] = a;
    entry[1] = b;
    entry[2] = c;
    entry[3] = d;
}

void Matrix::SetColumn(int col, float a, float b, float c, float d)
{
    QLT_CHECK(col >= 0 && col < 4);
    float* entry = mEntries + col;
    entry[0] = a;
    entry[4] = b;
    entry[8] = c;
    entry[12] = d;
}

void Matrix::SetColumn(int col, const Vec3& v, float w) { SetColumn(col, v.x(), v.y(), v.z(), w); }

void Matrix::SetDiagonal(float s) { SetDiagonal(s, s, s, s); }

void Matrix::SetDiagonal(float a, float b, float c, float d)
{
    mEntries[0] = a;
    mEntries[5] = b;
    mEntries[10] = c;
    mEntries[15] = d;
}

void Matrix::Transpose()
{
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < r; ++c)
        {
            std::swap(mEntries[4 * r + c], mEntries[4 * c + r]);
        }
    }
}

Matrix Matrix::Identity()
{
    static const Matrix identity = ScaleMatrix(1.0f);
    return identity;
}

Matrix Matrix::ScaleMatrix(float s) { return ScaleMatrix(s, s, s); }

Matrix Matrix::ScaleMatrix(float x, float y, float z)
{
    Matrix m;
    m.SetDiagonal(x, y, z, 1.0f);
    return m;
}

Matrix Matrix::TranslationMatrix(const Vec3& t)
{
    Matrix m = Identity();
    m.SetColumn(3, t, 1.0f);
    return m;
}

Matrix Matrix::RotationMatrix(const Quaternion& q)
{
    const float w = q.w();
    const float x = q.x();
    const float y = q.y();
    const float z = q.z();
    Matrix m;
    m.SetRow(0, 1.0f - 2.0f * (z * z + y * y), 2.0f * (y * x - z * w), 2.0f * (y * w + z * x),
             0.0f);
    m.SetRow(1, 2.0f * (z * w + y * x), 1.0f - 2.0f * (z * z + x * x), 2.0f * (z * y - x * w),
             0.0f);
    m.SetRow(2, 2.0f * (z * x - y * w), 2.0f * (z * y + x * w), 1.0f - 2.0f * (y * y + x * x),
             0.0f);
    m.SetRow(3, 0.0f, 0.0f, 0.0f, 1.0f);
    return m;
}

Matrix Matrix::FirstPersonView(Vec3 a, const Vec3& b, const Quaternion& q)
{
    return TranslationMatrix(-a) * RotationMatrix(q.Conjugate()) * TranslationMatrix(-b);
}

Matrix Matrix::LookAtView(const Vec3& eye, const Vec3& target, const Vec3& up)
{
    Vec3 f = eye - target;
    f.Normalize();
    Vec3 s = up.Cross(f);
    Vec3 u = f.Cross(s);
    s.Normalize();
    u.Normalize();
    Matrix m = Identity();
    m.SetColumn(0, s, 0.0f);
    m.SetColumn(1, u, 0.0f);
    m.SetColumn(2, f, 0.0f);
    return m * TranslationMatrix(-eye);
}

Matrix Matrix::OrthogonalProjection(float L, float r, float b, float t, float n, float f)
{
    QLT_CHECK(r > L && t > b && f > n);
    Matrix m;
    const float dX = r - L;
    const float dY = t - b;
    const float dZ = f - n;
    const bool hasExtent = (std::abs(dX) > FLT_EPSILON) && (std::abs(dY) > FLT_EPSILON) &&
                           (std::abs(dZ) > FLT_EPSILON);
    QLT_CHECK_TEXT(hasExtent, L"(std::abs(dX) > FLT_EPSILON) && (std::abs(dY) > FLT_EPSILON) && "
                              L"(std::abs(dZ) > FLT_EPSILON)");
    if (hasExtent)
    {
        m.SetDiagonal(2.0f / dX, 2.0f / dY, -2.0f / dZ, 1.0f);
        m.SetColumn(3, -(L + r) / dX, -(b + t) / dY, -(n + f) / dZ, 1.0f);
    }
    return m;
}

Matrix Matrix::PerspectiveProjection(float fovDeg, float aspect, float n, float f)
{
    const float right = Tan(MathUtil::Deg2Rad(fovDeg) * 0.5f) * n;
    const float top = right / aspect;
    const float left = -right;
    const float bottom = -top;
    Matrix m;
    m.SetRow(0, 2.0f * n / (right - left), 0.0f, (right + left) / (right - left), 0.0f);
    m.SetRow(1, 0.0f, 2.0f * n / (top - bottom), (top + bottom) / (top - bottom), 0.0f);
    m.SetRow(2, 0.0f, 0.0f, -(n + f) / (f - n), -(2.0f * f * n) / (f - n));
    m.SetRow(3, 0.0f, 0.0f, -1.0f, 0.0f);
    return m;
}

Matrix operator*(const Matrix& a, const Matrix& b)
{
    Matrix product;
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            float sum = a.mEntries[4 * r] * b.mEntries[c];
            for (int k = 1; k < 4; ++k)
            {
                sum += a.mEntries[4 * r + k] * b.mEntries[4 * k + c];
            }
            product.mEntries[4 * r + c] = sum;
        }
    }
    return product;
}

} // namespace qlt
