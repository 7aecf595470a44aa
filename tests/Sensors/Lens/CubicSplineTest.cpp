// Tests of the spline and of the band solver that it uses.
#include "Sensors/Lens/CubicSpline.h"

#include "Sensors/Lens/BandMatrix.h"

#include "fakes/AssertionRecorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace
{

using qlt::BandMatrix;
using qlt::CubicSpline;
using Doubles = std::vector<double>;
using Reports = std::vector<std::string>;

CubicSpline Through(const Doubles& x, const Doubles& y, bool cubic = true)
{
    CubicSpline spline;
    spline.SetPoints(x, y, cubic);
    return spline;
}

} // namespace

TEST(BandMatrixTest, BrokenPreconditionsAreReportedAndSurvived)
{
    AssertionRecorder assertions;
    BandMatrix a(0, -1, -1);
    EXPECT_EQ(assertions.TakeTexts(), (Reports{"dim>0|Sensors/Params", "n_u >= 0|Sensors/Params",
                                               "n_l >= 0|Sensors/Params"}));
    EXPECT_EQ(a.dim(), 0);
    a.resize(3, 1, 1);
    EXPECT_EQ(a.dim(), 3);
    EXPECT_EQ(a.num_upper(), 1);
    EXPECT_EQ(a.num_lower(), 1);
    const std::string inside = "(i >= 0) && (i<dim()) && (j >= 0) && (j<dim())|Sensors/Params";
    const std::string inBand = "(-num_lower() <= k) && (k <= num_upper())|Sensors/Params";
    EXPECT_EQ(a(2, 0), 0.0);
    EXPECT_EQ(assertions.TakeTexts(), Reports{inBand});
    a(2, 0) = 1.0;
    EXPECT_EQ(std::as_const(a)(2, 0), 0.0);
    EXPECT_EQ(assertions.TakeTexts(), Reports(2, inBand));
    a(-1, -1) = 1.0;
    EXPECT_EQ(assertions.TakeTexts(), Reports{inside});
    a(0, 3) = 1.0;
    EXPECT_EQ(assertions.TakeTexts(), (Reports{inside, inBand}));
    a.SavedDiagonal(3) = 1.0;
    EXPECT_EQ(assertions.TakeTexts(), Reports{"(i >= 0) && (i<dim())|Sensors/Params"});
    a.Solve({1.0}, true);
    const std::string dimension = "this->dim() == (int)b.size()|Sensors/Params";
    const Reports reports = assertions.TakeTexts();
    EXPECT_EQ(std::count(reports.begin(), reports.end(), dimension), 3); // Solve and its two steps
    BandMatrix zero(2, 0, 0);
    zero.Decompose();
    EXPECT_EQ(assertions.TakeTexts(), Reports(2, "this->operator()(i, i) != 0.0|Sensors/Params"));
}

// DistortionFunctionTest.EqualsThePlainModelToTheLastBit compares the cubic spline.
TEST(CubicSplineTest, WithoutTheCubicItIsLinearInsideAndOutsideTheTable)
{
    const CubicSpline spline = Through({0, 1, 2}, {0, 1, 0}, false);
    for (const auto& [x, y] : {std::pair(0.5, 0.5), {1.75, 0.25}, {-2.0, -2.0}, {4.0, -2.0}})
    {
        EXPECT_DOUBLE_EQ(spline(x), y);
    }
}

TEST(CubicSplineTest, BrokenPreconditionsAreReportedAndSurvived)
{
    AssertionRecorder assertions;
    Through({0, 1, 1, 2}, {0, 1, 2, 3});
    EXPECT_EQ(assertions.TakeTexts()[0], "m_x[i]<m_x[i + 1]|Sensors/Params");
    Through({0, 1}, {0, 1, 2})(0.5);
    EXPECT_EQ(assertions.TakeTexts(), Reports{"x.size() == y.size()|Sensors/Params"});
    for (const Doubles& few : {Doubles{}, Doubles{1.0}})
    {
        const CubicSpline spline = Through(few, few);
        EXPECT_FALSE(assertions.Take().empty());
        spline(0.5);
    }
    CubicSpline()(0.5);
}
