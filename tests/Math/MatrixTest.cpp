#include <qlt/Math/Matrix.h>

#include "fakes/AssertionRecorder.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace
{

using qlt::Matrix;
using qlt::Quaternion;
using qlt::Vec3;
using Entries = std::array<float, 16>;
using Reports = std::vector<std::string>;

const float ROUNDING = 1e-6f;

Entries All(const Matrix& m)
{
    Entries entries;
    std::copy_n(&m.array(), 16, entries.begin());
    return entries;
}

void ExpectNear(const Matrix& m, const Entries& expected)
{
    const Entries entries = All(m);
    for (std::size_t i = 0; i < 16; ++i)
    {
        EXPECT_NEAR(entries[i], expected[i], ROUNDING) << "entry " << i;
    }
}

/// 1 to 16 in storage order.
Matrix Counting()
{
    Matrix m;
    m.SetRow(0, 1, 2, 3, 4);
    m.SetRow(1, 5, 6, 7, 8);
    m.SetRow(2, 9, 10, 11, 12);
    m.SetRow(3, 13, 14, 15, 16);
    return m;
}

} // namespace

TEST(MatrixTest, IsSixteenFloatsRowByRowAndZeroByDefault)
{
    static_assert(sizeof(Matrix) == 64);
    EXPECT_EQ(All(Matrix()), Entries{});
    EXPECT_EQ(All(Counting()), (Entries{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}));
    EXPECT_EQ(All(Matrix::Identity()), (Entries{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
}

TEST(MatrixTest, PartsAreSetAndTheOthersStay)
{
    Matrix m = Counting();
    m.SetDiagonal(-1);
    EXPECT_EQ(All(m), (Entries{-1, 2, 3, 4, 5, -1, 7, 8, 9, 10, -1, 12, 13, 14, 15, -1}));
    m.SetDiagonal(1, 6, 11, 16);
    m.SetColumn(2, 0.5f, 0.25f, 0.125f, 0);
    EXPECT_EQ(All(m), (Entries{1, 2, 0.5f, 4, 5, 6, 0.25f, 8, 9, 10, 0.125f, 12, 13, 14, 0, 16}));
    m.SetColumn(0, Vec3(7, 7, 7), 8);
    EXPECT_EQ(All(m), (Entries{7, 2, 0.5f, 4, 7, 6, 0.25f, 8, 7, 10, 0.125f, 12, 8, 14, 0, 16}));
    m = Counting();
    m.Transpose();
    EXPECT_EQ(All(m), (Entries{1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 4, 8, 12, 16}));
}

TEST(MatrixTest, BuildersPutTheirValuesWhereColumnVectorsWantThem)
{
    EXPECT_EQ(All(Matrix::ScaleMatrix(3)),
              (Entries{3, 0, 0, 0, 0, 3, 0, 0, 0, 0, 3, 0, 0, 0, 0, 1}));
    EXPECT_EQ(All(Matrix::ScaleMatrix(2, 3, 4)),
              (Entries{2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1}));
    EXPECT_EQ(All(Matrix::TranslationMatrix(Vec3(1, 2, 3))),
              (Entries{1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1}));
}

// Rows of the first by columns of the second.
TEST(MatrixTest, ProductsAreTheOrdinaryOnes)
{
    EXPECT_EQ(All(Counting() * Counting()), (Entries{90, 100, 110, 120, 202, 228, 254, 280, 314,
                                                     356, 398, 440, 426, 484, 542, 600}));
    EXPECT_EQ(All(Counting() * Matrix::Identity()), All(Counting()));
}

// The sum over k runs upwards: 1e8 - 1e8 + 1 is 1, in the other order it is 0.
TEST(MatrixTest, ProductsSumUpwards)
{
    Matrix a;
    a.SetRow(0, 1e8f, -1e8f, 1, 0);
    Matrix b;
    b.SetColumn(0, 1, 1, 1, 1);
    EXPECT_EQ((a * b).array(), 1.0f);
}

TEST(MatrixTest, RotationsAreRightHanded)
{
    EXPECT_EQ(All(Matrix::RotationMatrix(Quaternion::Identity)), All(Matrix::Identity()));
    const float quarter = 1.57079633f;
    ExpectNear(Matrix::RotationMatrix(Quaternion::RotationQuaternion(quarter, Vec3::Z_AXIS)),
               {0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    ExpectNear(Matrix::RotationMatrix(Quaternion::RotationQuaternion(quarter, Vec3::X_AXIS)),
               {1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1});
    // By hand for (1, 2, 3, 4), which is not normalised.
    EXPECT_EQ(All(Matrix::RotationMatrix(Quaternion(1, 2, 3, 4))),
              (Entries{-49, 4, 22, 0, 20, -39, 20, 0, 10, 28, -25, 0, 0, 0, 0, 1}));
}

// The head at b = (1, 2, 3), turned a quarter to the left: what lies a metre to its left, at -x,
// is straight ahead of it; the eye is 0.25 to the right.
TEST(MatrixTest, TheFirstPersonViewUndoesTheHeadAndThenTheEye)
{
    const Quaternion left = Quaternion::RotationQuaternion(1.57079633f, Vec3::Y_AXIS);
    const Matrix view = Matrix::FirstPersonView(Vec3(0.25f, 0, 0), Vec3(1, 2, 3), left);
    const Matrix seen = view * Matrix::TranslationMatrix(Vec3(0, 2, 3));
    const float* entries = &seen.array();
    EXPECT_NEAR(entries[3], -0.25f, ROUNDING);
    EXPECT_NEAR(entries[7], 0.0f, ROUNDING);
    EXPECT_NEAR(entries[11], -1.0f, ROUNDING);
}

TEST(MatrixTest, TheLookAtViewHasItsAxesInTheColumns)
{
    ExpectNear(Matrix::LookAtView(Vec3(0, 0, 1), Vec3(), Vec3(0, 1, 0)),
               {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -1, 0, 0, 0, 1});
    // From (2, 0, 0): f = x, s = y x x = -z, u = x x -z = y; the translation is -2 f.
    ExpectNear(Matrix::LookAtView(Vec3(2, 0, 0), Vec3(), Vec3(0, 1, 0)),
               {0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 2, 0, 0, 0, 1});
}

TEST(MatrixTest, TheOrthogonalProjectionIsOpenGls)
{
    EXPECT_EQ(All(Matrix::OrthogonalProjection(0, 2, 0, 4, -1, 1)),
              (Entries{1, 0, 0, -1, 0, 0.5f, 0, -1, 0, 0, -1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(All(Matrix::OrthogonalProjection(1, 3, 2, 6, 1, 5)),
              (Entries{1, 0, 0, -2, 0, 0.5f, 0, -2, 0, 0, -0.5f, -1.5f, 0, 0, 0, 1}));
}

TEST(MatrixTest, AnOrthogonalProjectionWithoutExtentIsZero)
{
    AssertionRecorder assertions;
    EXPECT_EQ(All(Matrix::OrthogonalProjection(-1, 1, -1, 1, 1, 1)), Entries{});
    EXPECT_EQ(assertions.TakeTexts(),
              (Reports{"r > L && t > b && f > n|Math/Matrix",
                       "(std::abs(dX) > FLT_EPSILON) && (std::abs(dY) > FLT_EPSILON) && "
                       "(std::abs(dZ) > FLT_EPSILON)|Math/Matrix"}));
    // Turned round it has an extent: reported once and computed.
    EXPECT_EQ(Matrix::OrthogonalProjection(1, -1, -1, 1, 1, 2).array(), -1.0f);
    EXPECT_EQ(assertions.TakeTexts(), Reports{"r > L && t > b && f > n|Math/Matrix"});
}

TEST(MatrixTest, ThePerspectiveProjectionHasAHorizontalFieldOfView)
{
    ExpectNear(Matrix::PerspectiveProjection(90, 2, 1, 3),
               {1, 0, 0, 0, 0, 2, 0, 0, 0, 0, -2, -3, 0, 0, -1, 0});
    EXPECT_TRUE(std::isinf(All(Matrix::PerspectiveProjection(90, 1, 1, 1))[10]));
}

TEST(MatrixTest, RowsAndColumnsOutsideAreReported)
{
    AssertionRecorder assertions;
    // A second matrix behind the first takes the write that goes past its end.
    Matrix two[2];
    two[0].SetRow(4, 1, 2, 3, 4);
    two[0].SetColumn(-1 + 5, 9, 0, 0, 0);
    EXPECT_EQ(assertions.TakeTexts(),
              (Reports{"row >= 0 && row < 4|Math/Matrix", "col >= 0 && col < 4|Math/Matrix"}));
}
