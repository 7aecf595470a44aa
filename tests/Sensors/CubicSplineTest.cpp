// The spline, and the band solver under it.
#include "Sensors/CubicSpline.h"

#include "Sensors/BandMatrix.h"

#include "fakes/AssertionRecorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

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

TEST(BandMatrixTest, SolvesWhatItStandsFor)
{
    std::mt19937 random(3);
    const auto uniform = [&random] { return static_cast<double>(random()) / 4294967296.0 - 0.5; };
    using Row = std::array<int, 3>;
    for (const auto& [dim, upper, lower] :
         {Row{1, 0, 0}, {2, 1, 1}, {20, 1, 1}, {9, 3, 1}, {9, 1, 3}, {5, 4, 4}})
    {
        BandMatrix a(dim, upper, lower);
        Doubles b(static_cast<std::size_t>(dim), 0.0);
        Doubles x = b;
        std::generate(x.begin(), x.end(), uniform);
        for (int i = 0; i < dim; ++i)
        {
            for (int j = std::max(0, i - lower); j <= std::min(dim - 1, i + upper); ++j)
            {
                a(i, j) = i == j ? 5.0 + uniform() : uniform(); // needs no pivoting
                b[static_cast<std::size_t>(i)] += a(i, j) * x[static_cast<std::size_t>(j)];
            }
        }
        const double diagonal = a(0, 0);
        for (const bool isDecomposed : {false, true})
        {
            const Doubles solved = a.Solve(b, isDecomposed);
            for (std::size_t i = 0; i < x.size(); ++i)
            {
                EXPECT_NEAR(solved[i], x[i], 1e-14);
            }
        }
        EXPECT_EQ(a.SavedDiagonal(0), 1.0 / diagonal);
        EXPECT_EQ(a(0, 0), 1.0);
    }
}

TEST(BandMatrixTest, BrokenPreconditionsAreReportedAndSurvived)
{
    AssertionRecorder assertions;
    BandMatrix a(0, -1, -1);
    EXPECT_EQ(assertions.TakeTexts(), (Reports{"dim>0|Sensors/Params", "n_u >= 0|Sensors/Params",
                                               "n_l >= 0|Sensors/Params"}));
    a.resize(3, 1, 1);
    EXPECT_TRUE(a.dim() == 3 && a.num_upper() == 1 && a.num_lower() == 1);
    const std::string inside = "(i >= 0) && (i<dim()) && (j >= 0) && (j<dim())|Sensors/Params";
    const std::string inBand = "(-num_lower() <= k) && (k <= num_upper())|Sensors/Params";
    a(0, 3) = a(-1, -1) = a(2, 0) = 1.0; // from the right
    EXPECT_EQ(assertions.TakeTexts(), (Reports{inBand, inside, inside, inBand}));
    a.SavedDiagonal(3) = 1.0;
    EXPECT_EQ(assertions.TakeTexts(), Reports{"(i >= 0) && (i<dim())|Sensors/Params"});
    a.Solve({1.0}, true);
    const std::string dimension = "this->dim() == (int)b.size()|Sensors/Params";
    const Reports reports = assertions.TakeTexts();
    EXPECT_EQ(std::count(reports.begin(), reports.end(), dimension), 3); // Solve and both its steps
    BandMatrix zero(2, 0, 0);
    zero.Decompose();
    EXPECT_EQ(assertions.TakeTexts(), Reports(2, "this->operator()(i, i) != 0.0|Sensors/Params"));
}

TEST(CubicSplineTest, BendsAsASmallSystemSolvedByHand)
{
    const CubicSpline spline = Through({0, 1, 2}, {0, 1, 0});
    const std::pair<double, double> points[] = {
        {0.5, 0.6875}, {1.5, 0.6875}, {0, 0}, {1, 1},
        {2, 0},        {-2, -3},      {4, -3}}; // straight outside
    for (const auto& [x, y] : points)
    {
        EXPECT_NEAR(spline(x), y, 2e-15) << x;
    }
}

TEST(CubicSplineTest, ALineStaysALine)
{
    for (const bool cubic : {true, false})
    {
        const CubicSpline line = Through({-1, 0, 2, 3}, {-2, 0, 4, 6}, cubic);
        for (const double x : {-10.0, -1.0, -0.5, 0.0, 1.0, 2.75, 3.0, 50.0})
        {
            EXPECT_NEAR(line(x), 2 * x, 1e-13);
        }
    }
    EXPECT_DOUBLE_EQ(Through({0, 1, 2}, {0, 1, 0}, false)(1.75), 0.25);
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
