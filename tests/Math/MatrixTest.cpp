#include <qlt/Math/Matrix.h>

#include "fakes/AssertionRecorder.h"
#include "fakes/FloatBits.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <type_traits>

using qlt::Matrix;
using qlt::Quaternion;
using qlt::Vec3;

namespace
{

using Sixteen = std::array<float, 16>;
using Texts = std::vector<std::string>;

constexpr float INF = std::numeric_limits<float>::infinity();

/// A matrix with the entries in reading order.
Matrix Of(const Sixteen& e)
{
    Matrix m;
    for (int row = 0; row < 4; ++row)
    {
        const float* entry = e.data() + 4 * row;
        m.SetRow(row, entry[0], entry[1], entry[2], entry[3]);
    }
    return m;
}

const Matrix COUNTING = Of({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});

} // namespace

TEST(MatrixTest, AMatrixIsSixteenFloats)
{
    static_assert(sizeof(Matrix) == 64 && std::is_trivially_copyable_v<Matrix>);
    static_assert(!std::is_polymorphic_v<Matrix>);
    static_assert(std::is_same_v<decltype(COUNTING.array()), const float&>);
    EXPECT_EQ(static_cast<const void*>(&COUNTING.array()), &COUNTING);
}

TEST(MatrixTest, TheDefaultIsZeroAndNotTheIdentity)
{
    EXPECT_EQ(Entries(Matrix()), Sixteen{});
    EXPECT_EQ(Entries(Matrix::Identity()),
              (Sixteen{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
}

TEST(MatrixTest, RowsAndColumnsAreWrittenInPlace)
{
    Matrix m = COUNTING;
    m.SetRow(1, -1.0f, -2.0f, -3.0f, -4.0f);
    EXPECT_EQ(Entries(m), (Sixteen{0, 1, 2, 3, -1, -2, -3, -4, 8, 9, 10, 11, 12, 13, 14, 15}));
    m = COUNTING;
    m.SetColumn(2, -1.0f, -2.0f, -3.0f, -4.0f);
    EXPECT_EQ(Entries(m), (Sixteen{0, 1, -1, 3, 4, 5, -2, 7, 8, 9, -3, 11, 12, 13, -4, 15}));
    m = COUNTING;
    m.SetColumn(3, Vec3(-1.0f, -2.0f, -3.0f), -4.0f);
    EXPECT_EQ(Entries(m), (Sixteen{0, 1, 2, -1, 4, 5, 6, -2, 8, 9, 10, -3, 12, 13, 14, -4}));
}

TEST(MatrixTest, SetDiagonalKeepsTheOtherEntries)
{
    Matrix m = COUNTING;
    m.SetDiagonal(2.0f);
    EXPECT_EQ(Entries(m), (Sixteen{2, 1, 2, 3, 4, 2, 6, 7, 8, 9, 2, 11, 12, 13, 14, 2}));
    m.SetDiagonal(-1.0f, -2.0f, -3.0f, -4.0f);
    EXPECT_EQ(Entries(m), (Sixteen{-1, 1, 2, 3, 4, -2, 6, 7, 8, 9, -3, 11, 12, 13, 14, -4}));
}

TEST(MatrixTest, TransposeSwapsRowsAndColumns)
{
    Matrix m = COUNTING;
    m.Transpose();
    EXPECT_EQ(Entries(m), (Sixteen{0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15}));
}

TEST(MatrixTest, ARowOrColumnOutOfRangeAssertsAndIsWrittenAllTheSame)
{
    AssertionRecorder recorder;
    Matrix neighbours[3];
    neighbours[1].SetRow(4, 1.0f, 2.0f, 3.0f, 4.0f);
    neighbours[1].SetRow(-1, 5.0f, 6.0f, 7.0f, 8.0f);
    EXPECT_EQ(recorder.TakeTexts(), Texts(2, "row >= 0 && row < 4|Math/Matrix"));
    EXPECT_EQ(Entries(neighbours[2]), (Sixteen{1, 2, 3, 4}));
    EXPECT_EQ(Entries(neighbours[0]), (Sixteen{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 5, 6, 7, 8}));
    neighbours[1].SetColumn(4, 1.0f, 2.0f, 3.0f, 9.0f);
    neighbours[1].SetColumn(-1, Vec3(10.0f, 1.0f, 2.0f), 3.0f);
    EXPECT_EQ(recorder.TakeTexts(), Texts(2, "col >= 0 && col < 4|Math/Matrix"));
    EXPECT_EQ(Entries(neighbours[2])[0], 9.0f);
    EXPECT_EQ(Entries(neighbours[0])[15], 10.0f);
}

TEST(MatrixTest, ScaleMatricesLeaveTheLastEntryOne)
{
    EXPECT_EQ(Entries(Matrix::ScaleMatrix(3.0f)),
              (Sixteen{3, 0, 0, 0, 0, 3, 0, 0, 0, 0, 3, 0, 0, 0, 0, 1}));
    EXPECT_EQ(Entries(Matrix::ScaleMatrix(2.0f, 3.0f, 4.0f)),
              (Sixteen{2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1}));
}

TEST(MatrixTest, TranslationStandsInTheLastColumnAndMovesColumnVectors)
{
    const Matrix translation = Matrix::TranslationMatrix(Vec3(1.0f, 2.0f, 3.0f));
    EXPECT_EQ(Entries(translation), (Sixteen{1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1}));
    Matrix origin;
    origin.SetColumn(0, Vec3(), 1.0f);
    EXPECT_EQ(Entries(translation * origin), (Sixteen{1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 1}));
}

TEST(MatrixTest, AProductCombinesRowsOfTheLeftWithColumnsOfTheRight)
{
    // By hand: row 1 of COUNTING is 4, 5, 6, 7, column 2 is 2, 6, 10, 14.
    const Sixteen square = Entries(COUNTING * COUNTING);
    EXPECT_EQ(square[6], 4.0f * 2 + 5.0f * 6 + 6.0f * 10 + 7.0f * 14);
    EXPECT_EQ(square[9], 8.0f * 1 + 9.0f * 5 + 10.0f * 9 + 11.0f * 13);
    EXPECT_EQ(Entries(COUNTING * Matrix::Identity()), Entries(COUNTING));
    EXPECT_EQ(Entries(Matrix::Identity() * COUNTING), Entries(COUNTING));
}

TEST(MatrixTest, AProductIsSummedUpwards)
{
    // 10^8 swallows every 1 that is added while it is there: only what comes later survives.
    Matrix ones;
    ones.SetColumn(0, 1.0f, 1.0f, 1.0f, 1.0f);
    const Matrix rows =
        Of({1, 1e8f, -1e8f, 1, 1e8f, -1e8f, 1, 1, 1, 1, 1e8f, -1e8f, 1e8f, 1, 1, -1e8f});
    EXPECT_EQ(Entries(rows * ones), (Sixteen{1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(MatrixTest, RotationMatrixOfTheIdentityIsTheIdentity)
{
    EXPECT_EQ(Entries(Matrix::RotationMatrix(Quaternion::Identity)), Entries(Matrix::Identity()));
}

TEST(MatrixTest, RotationMatrixOfAQuarterTurnAboutZTakesXToY)
{
    const Quaternion turn = Quaternion::RotationQuaternion(std::acos(0.0f), Vec3::Z_AXIS);
    const Sixteen entries = Entries(Matrix::RotationMatrix(turn));
    const Sixteen expected = {0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    for (std::size_t i = 0; i < 16; ++i)
    {
        EXPECT_NEAR(entries[i], expected[i], 2 * FLT_EPSILON) << i;
    }
}

TEST(MatrixTest, RotationMatrixTakesTheQuaternionAsItIs)
{
    // By hand from w, x, y, z = 1, 2, 3, 4: a rotation only for unit quaternions.
    EXPECT_EQ(Entries(Matrix::RotationMatrix(Quaternion(1.0f, 2.0f, 3.0f, 4.0f))),
              (Sixteen{-49, 4, 22, 0, 20, -39, 20, 0, 10, 28, -25, 0, 0, 0, 0, 1}));
}

TEST(MatrixTest, RotationMatrixDoublesTheRoundedSum)
{
    const float w = 0.6f;
    const float x = 0.1f;
    const float y = 0.1f;
    const float z = 0.6f;
    const Sixteen e = Entries(Matrix::RotationMatrix(Quaternion(w, x, y, z)));
    const float first = Minus(1.0f, Times(2.0f, Plus(Times(z, z), Times(y, y))));
    ASSERT_NE(Bits(first),
              Bits(Minus(Minus(1.0f, Times(2.0f, Times(z, z))), Times(2.0f, Times(y, y)))));
    EXPECT_EQ(Bits(e[0]), Bits(first));
    EXPECT_EQ(Bits(e[1]), Bits(Times(2.0f, Minus(Times(y, x), Times(z, w)))));
    EXPECT_EQ(Bits(e[6]), Bits(Times(2.0f, Minus(Times(z, y), Times(x, w)))));
    EXPECT_EQ(Bits(e[10]), Bits(Minus(1.0f, Times(2.0f, Plus(Times(y, y), Times(x, x))))));
}

TEST(MatrixTest, FirstPersonViewUndoesTheHeadAndThenTheEye)
{
    // The head at (0, 0, 5), a quarter turn to the left (about y), the eye 1 to its right: the eye
    // is at (0, 0, 4) and looks along -x, so the point (-2, 0, 4) is 2 before it.
    const Quaternion left = Quaternion::RotationQuaternion(std::acos(0.0f), Vec3::Y_AXIS);
    const Matrix view =
        Matrix::FirstPersonView(Vec3(1.0f, 0.0f, 0.0f), Vec3(0.0f, 0.0f, 5.0f), left);
    Matrix point;
    point.SetColumn(0, Vec3(-2.0f, 0.0f, 4.0f), 1.0f);
    const Sixteen seen = Entries(view * point);
    EXPECT_NEAR(seen[0], 0.0f, 1e-6f);
    EXPECT_NEAR(seen[4], 0.0f, 1e-6f);
    EXPECT_NEAR(seen[8], -2.0f, 1e-6f);
    EXPECT_EQ(seen[12], 1.0f);
}

TEST(MatrixTest, FirstPersonViewTakesTheInverseOfTheOrientation)
{
    // By hand: the inverse of (1, 1, 1, 1) is (1, -1, -1, -1) / 4, of which the rotation matrix has
    // the rows (0.75, 0.25, 0), (0, 0.75, 0.25) and (0.25, 0, 0.75).
    const Matrix view = Matrix::FirstPersonView(Vec3(1.0f, 2.0f, 3.0f), Vec3(4.0f, 8.0f, 12.0f),
                                                Quaternion(1.0f, 1.0f, 1.0f, 1.0f));
    EXPECT_EQ(Entries(view), (Sixteen{0.75f, 0.25f, 0, -6, 0, 0.75f, 0.25f, -11, 0.25f, 0, 0.75f,
                                      -13, 0, 0, 0, 1}));
}

TEST(MatrixTest, LookAtViewAlongMinusZIsAPureTranslation)
{
    EXPECT_EQ(Entries(Matrix::LookAtView(Vec3::Z_AXIS, Vec3(), Vec3::Y_AXIS)),
              (Sixteen{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, -1, 0, 0, 0, 1}));
}

TEST(MatrixTest, LookAtViewHasTheAxesInItsColumnsAndTheTranslationOfItsRows)
{
    // By hand: from (2, 0, 0) to the origin f = (1, 0, 0), s = up x f = (0, 0, -1), u = (0, 1, 0);
    // as columns they turn -eye = (-2, 0, 0) into (0, 0, 2).
    EXPECT_EQ(Entries(Matrix::LookAtView(Vec3(2.0f, 0.0f, 0.0f), Vec3(), Vec3(0.0f, 3.0f, 0.0f))),
              (Sixteen{0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 2, 0, 0, 0, 1}));
}

TEST(MatrixTest, LookAtViewTakesTheUpAxisFromTheSideAxisBeforeThatIsNormalised)
{
    const Vec3 eye(1.0f, 2.0f, 3.0f);
    const Vec3 target(0.3f, -0.4f, 0.2f);
    Vec3 f = eye - target;
    f.Normalize();
    Vec3 s = Vec3(0.1f, 1.0f, 0.2f).Cross(f);
    Vec3 u = f.Cross(s);
    s.Normalize();
    Vec3 other = f.Cross(s);
    u.Normalize();
    other.Normalize();
    ASSERT_NE(Bits(u), Bits(other));
    const Sixteen e = Entries(Matrix::LookAtView(eye, target, Vec3(0.1f, 1.0f, 0.2f)));
    EXPECT_EQ(Bits(Vec3(e[0], e[4], e[8])), Bits(s));
    EXPECT_EQ(Bits(Vec3(e[1], e[5], e[9])), Bits(u));
    EXPECT_EQ(Bits(Vec3(e[2], e[6], e[10])), Bits(f));
}

TEST(MatrixTest, LookAtViewWithoutADirectionReportsEachAxis)
{
    AssertionRecorder recorder;
    EXPECT_EQ(Entries(Matrix::LookAtView(Vec3(), Vec3(), Vec3::Y_AXIS))[15], 1.0f);
    EXPECT_EQ(recorder.TakeTexts(), Texts(3, "length > FLT_EPSILON|Math/Vector"));
}

TEST(MatrixTest, OrthogonalProjectionIsTheClassicOne)
{
    AssertionRecorder recorder;
    EXPECT_EQ(Entries(Matrix::OrthogonalProjection(0.0f, 2.0f, 0.0f, 2.0f, -1.0f, 1.0f)),
              (Sixteen{1, 0, 0, -1, 0, 1, 0, -1, 0, 0, -1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(Entries(Matrix::OrthogonalProjection(1.0f, 5.0f, -2.0f, 6.0f, 1.0f, 17.0f)),
              (Sixteen{0.5f, 0, 0, -1.5f, 0, 0.25f, 0, -0.5f, 0, 0, -0.125f, -1.125f, 0, 0, 0, 1}));
    EXPECT_EQ(recorder.TakeTexts(), Texts{});
}

TEST(MatrixTest, OrthogonalProjectionOfSwappedSidesAssertsAndIsComputed)
{
    AssertionRecorder recorder;
    const Matrix m = Matrix::OrthogonalProjection(2.0f, 0.0f, 0.0f, 2.0f, -1.0f, 1.0f);
    EXPECT_EQ(Entries(m), (Sixteen{-1, 0, 0, 1, 0, 1, 0, -1, 0, 0, -1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(recorder.TakeTexts(), Texts{"r > L && t > b && f > n|Math/Matrix"});
}

TEST(MatrixTest, OrthogonalProjectionWithoutExtentIsZero)
{
    AssertionRecorder recorder;
    const std::string ordered = "r > L && t > b && f > n|Math/Matrix";
    const std::string extent = "(std::abs(dX) > FLT_EPSILON) && (std::abs(dY) > FLT_EPSILON) && "
                               "(std::abs(dZ) > FLT_EPSILON)|Math/Matrix";
    EXPECT_EQ(Entries(Matrix::OrthogonalProjection(-1.0f, 1.0f, -1.0f, 1.0f, 1.0f, 1.0f)),
              Sixteen{});
    EXPECT_EQ(recorder.TakeTexts(), (Texts{ordered, extent}));
    EXPECT_EQ(Entries(Matrix::OrthogonalProjection(0.0f, FLT_EPSILON, 0.0f, 1.0f, 0.0f, 1.0f)),
              Sixteen{});
    EXPECT_EQ(recorder.TakeTexts(), Texts{extent});
    EXPECT_EQ(Entries(Matrix::OrthogonalProjection(0.0f, 1.0f, 0.0f, std::nanf(""), 0.0f, 1.0f)),
              Sixteen{});
    EXPECT_EQ(recorder.TakeTexts(), (Texts{ordered, extent}));
}

TEST(MatrixTest, PerspectiveProjectionHasAHorizontalFieldOfView)
{
    EXPECT_EQ(Entries(Matrix::PerspectiveProjection(90.0f, 2.0f, 1.0f, 3.0f)),
              (Sixteen{1, 0, 0, 0, 0, 2, 0, 0, 0, 0, -2, -3, 0, 0, -1, 0}));
}

TEST(MatrixTest, PerspectiveProjectionTakesTheDoubleTangentRoundedOnce)
{
    // The tangents of 29 and 37 degrees by 64-bit mathematics; tanf of some systems is one bit off.
    for (const auto& [fovDeg, tangent] : {std::pair(58.0f, 0x3F0DE733U), {74.0f, 0x3F40E8EAU}})
    {
        const float right = Times(FromBits(tangent), 0.1f);
        const float top = Over(right, 1.6f);
        const Sixteen e = Entries(Matrix::PerspectiveProjection(fovDeg, 1.6f, 0.1f, 50.0f));
        EXPECT_EQ(Bits(e[0]), Bits(Over(Times(2.0f, 0.1f), Plus(right, right))));
        EXPECT_EQ(Bits(e[5]), Bits(Over(Times(2.0f, 0.1f), Plus(top, top))));
    }
}

TEST(MatrixTest, PerspectiveProjectionChecksNothing)
{
    AssertionRecorder recorder;
    EXPECT_EQ(Entries(Matrix::PerspectiveProjection(90.0f, 1.0f, 1.0f, 1.0f))[10], -INF);
    EXPECT_TRUE(std::isnan(Entries(Matrix::PerspectiveProjection(90.0f, 1.0f, 0.0f, 1.0f))[0]));
    EXPECT_EQ(Entries(Matrix::PerspectiveProjection(90.0f, 0.0f, 1.0f, 2.0f))[5], 0.0f);
    EXPECT_TRUE(recorder.Take().empty());
}
