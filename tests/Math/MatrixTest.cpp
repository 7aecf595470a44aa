#include <qlt/Math/Matrix.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/FloatBits.h"

#include <gtest/gtest.h>

#include <type_traits>

using qlt::Matrix;
using qlt::Quaternion;
using qlt::Vec3;
using Sixteen = std::array<float, 16>;
using Texts = std::vector<std::string>;

namespace
{

/// The entries in reading order.
Matrix Of(const Sixteen& entries)
{
    Matrix m;
    std::memcpy(static_cast<void*>(&m), entries.data(), sizeof m);
    return m;
}

const Matrix COUNTING = Of({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});

} // namespace

TEST(MatrixTest, TheDefaultIsZeroAndNotTheIdentity)
{
    static_assert(sizeof(Matrix) == 64 && std::is_trivially_copyable_v<Matrix>);
    static_assert(std::is_same_v<decltype(COUNTING.array()), const float&>);
    EXPECT_EQ(Entries(Matrix()), Sixteen{});
    EXPECT_EQ(Entries(Matrix::Identity()), Entries(Matrix::ScaleMatrix(1)));
    EXPECT_EQ(Entries(Matrix::ScaleMatrix(2, 3, 4)),
              (Sixteen{2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1}));
}

TEST(MatrixTest, RowsAndColumnsAreWrittenInPlaceEvenOutOfRange)
{
    Matrix m = COUNTING;
    m.SetRow(1, -1, -2, -3, -4);
    EXPECT_EQ(Entries(m), (Sixteen{0, 1, 2, 3, -1, -2, -3, -4, 8, 9, 10, 11, 12, 13, 14, 15}));
    m.SetColumn(2, -1, -2, -3, -4);
    EXPECT_EQ(Entries(m), (Sixteen{0, 1, -1, 3, -1, -2, -2, -4, 8, 9, -3, 11, 12, 13, -4, 15}));
    m = COUNTING;
    m.SetDiagonal(-1, -2, -3, -4);
    m.Transpose();
    EXPECT_EQ(Entries(m), (Sixteen{-1, 4, 8, 12, 1, -2, 9, 13, 2, 6, -3, 14, 3, 7, 11, -4}));
    m.SetDiagonal(2);
    EXPECT_EQ(Entries(m), (Sixteen{2, 4, 8, 12, 1, 2, 9, 13, 2, 6, 2, 14, 3, 7, 11, 2}));
    AssertionRecorder recorder;
    Matrix neighbours[3];
    neighbours[1].SetRow(4, 1, 2, 3, 4);
    neighbours[1].SetRow(-1, 5, 6, 7, 8);
    EXPECT_EQ(recorder.TakeTexts(), Texts(2, "row >= 0 && row < 4|Math/Matrix"));
    neighbours[1].SetColumn(4, 0, 0, 0, 9);
    neighbours[1].SetColumn(-1, Vec3(10, 0, 0), 0);
    EXPECT_EQ(recorder.TakeTexts(), Texts(2, "col >= 0 && col < 4|Math/Matrix"));
    EXPECT_EQ(Entries(neighbours[2]), (Sixteen{9, 2, 3, 4}));
    EXPECT_EQ(Entries(neighbours[0]), (Sixteen{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 5, 6, 7, 10}));
}

TEST(MatrixTest, AProductCombinesRowsWithColumnsAndIsSummedUpwards)
{
    // Calculated by hand: row 1 of COUNTING is 4, 5, 6, 7, and column 2 is 2, 6, 10, 14.
    EXPECT_EQ(Entries(COUNTING * COUNTING)[6], 4.0f * 2 + 5 * 6 + 6 * 10 + 7 * 14);
    EXPECT_EQ(Entries(COUNTING * Matrix::Identity()), Entries(COUNTING));
    // A 1 that is added to 10^8 is lost. Only the terms that are added after 10^8 has cancelled
    // remain.
    Matrix ones;
    ones.SetColumn(0, 1, 1, 1, 1);
    const Matrix rows =
        Of({1, 1e8f, -1e8f, 1, 1e8f, -1e8f, 1, 1, 1, 1, 1e8f, -1e8f, 1e8f, 1, 1, -1e8f});
    EXPECT_EQ(Entries(rows * ones), (Sixteen{1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(MatrixTest, ARotationUsesTheQuaternionAndAViewUsesItsInverse)
{
    // Calculated by hand from w, x, y, z = 1, 2, 3, 4. The result is a rotation only for unit
    // quaternions.
    EXPECT_EQ(Entries(Matrix::RotationMatrix(Quaternion(1, 2, 3, 4))),
              (Sixteen{-49, 4, 22, 0, 20, -39, 20, 0, 10, 28, -25, 0, 0, 0, 0, 1}));
    // Calculated with each step rounded to a float. With squares that are doubled one by one, the
    // last digits would be B7.
    const Matrix rough = Matrix::RotationMatrix(Quaternion(0.6f, 0.1f, 0.1f, 0.6f));
    EXPECT_EQ(Bits(rough.array()), 0x3E851EB8U);
    // Calculated by hand: the inverse of (1, 1, 1, 1) is (1, -1, -1, -1) / 4. Its rotation matrix
    // has the rows (0.75, 0.25, 0), (0, 0.75, 0.25) and (0.25, 0, 0.75).
    EXPECT_EQ(
        Entries(Matrix::FirstPersonView(Vec3(1, 2, 3), Vec3(4, 8, 12), {1, 1, 1, 1})),
        (Sixteen{0.75f, 0.25f, 0, -6, 0, 0.75f, 0.25f, -11, 0.25f, 0, 0.75f, -13, 0, 0, 0, 1}));
}

TEST(MatrixTest, LookAtViewHasTheAxesInItsColumnsAndTheTranslationOfItsRows)
{
    // Calculated by hand: from (2, 0, 0) to the origin the axes are f = (1, 0, 0), s = up x f = (0,
    // 0, -1) and u = (0, 1, 0). As columns they turn -eye = (-2, 0, 0) into (0, 0, 2).
    EXPECT_EQ(Entries(Matrix::LookAtView(Vec3(2, 0, 0), Vec3(), Vec3(0, 3, 0))),
              (Sixteen{0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 2, 0, 0, 0, 1}));
    // The up axis, calculated step by step. From a side axis that is already normalised, the last
    // digits would be 49 and 4A.
    const Sixteen e =
        Entries(Matrix::LookAtView(Vec3(1, 2, 3), Vec3(0.3f, -0.4f, 0.2f), Vec3(0.1f, 1, 0.2f)));
    EXPECT_EQ(Bits(Vec3(e[1], e[5], e[9])),
              (std::array<std::uint32_t, 3>{0xBDA3F55B, 0x3F444147, 0xBF231849}));
    AssertionRecorder recorder;
    EXPECT_EQ(Entries(Matrix::LookAtView(Vec3(), Vec3(), Vec3::Y_AXIS))[15], 1.0f);
    EXPECT_EQ(recorder.TakeTexts(), Texts(3, "length > FLT_EPSILON|Math/Vector"));
}

TEST(MatrixTest, OrthogonalProjectionReportsSwappedSidesAndIsZeroWithoutExtent)
{
    AssertionRecorder recorder;
    EXPECT_EQ(Entries(Matrix::OrthogonalProjection(1, 5, -2, 6, 1, 17)),
              (Sixteen{0.5f, 0, 0, -1.5f, 0, 0.25f, 0, -0.5f, 0, 0, -0.125f, -1.125f, 0, 0, 0, 1}));
    EXPECT_EQ(recorder.Take(), Texts{});
    EXPECT_EQ(Entries(Matrix::OrthogonalProjection(2, 0, 0, 2, -1, 1)),
              (Sixteen{-1, 0, 0, 1, 0, 1, 0, -1, 0, 0, -1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(Entries(Matrix::OrthogonalProjection(0, 1, 0, 1, 1, 1)), Sixteen{});
    EXPECT_EQ(Entries(Matrix::OrthogonalProjection(0, FLT_EPSILON, 0, 1, 0, 1)), Sixteen{});
    EXPECT_EQ(Entries(Matrix::OrthogonalProjection(0, 1, 0, NAN, 0, 1)), Sixteen{});
    const std::string ordered = "r > L && t > b && f > n|Math/Matrix";
    const std::string extent = "(std::abs(dX) > FLT_EPSILON) && (std::abs(dY) > FLT_EPSILON) && "
                               "(std::abs(dZ) > FLT_EPSILON)|Math/Matrix";
    EXPECT_EQ(recorder.TakeTexts(), (Texts{ordered, ordered, extent, extent, ordered, extent}));
}

TEST(MatrixTest, PerspectiveProjectionHasAHorizontalFieldOfViewAndChecksNothing)
{
    AssertionRecorder recorder;
    EXPECT_EQ(Entries(Matrix::PerspectiveProjection(90, 2, 1, 3)),
              (Sixteen{1, 0, 0, 0, 0, 2, 0, 0, 0, 0, -2, -3, 0, 0, -1, 0}));
    EXPECT_TRUE(std::isinf(Entries(Matrix::PerspectiveProjection(90, 1, 1, 1))[10]));
    EXPECT_TRUE(std::isnan(Matrix::PerspectiveProjection(90, 1, 0, 1).array()));
    EXPECT_EQ(recorder.Take(), Texts{});
    // Calculated with the double tangents of 29 and 37 degrees, because tanf of some systems is one
    // bit off.
    const Sixteen narrow = Entries(Matrix::PerspectiveProjection(58, 1.6f, 0.1f, 50));
    EXPECT_EQ(Bits(narrow[0]), 0x3FE6EB09U);
    EXPECT_EQ(Bits(narrow[5]), 0x4038BC07U);
    EXPECT_EQ(Bits(Matrix::PerspectiveProjection(74, 1.6f, 0.1f, 50).array()), 0x3FA9DC9BU);
}
