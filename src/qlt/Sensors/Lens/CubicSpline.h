// A natural cubic spline through the points of a table, in double precision. Between two knots it
// is a cubic. Outside the table it is a straight line with the slope of that end. Several threads
// may evaluate a fitted spline at once.
#pragma once

#include <cstddef>
#include <vector>

namespace qlt
{

class CubicSpline
{
public:
    /// Fits the spline to the points (x[i], y[i]), of which there are at least two. Without `cubic`
    /// it is piecewise linear. Asserts that the lengths are equal and that x increases strictly;
    /// otherwise the values are unspecified.
    void SetPoints(const std::vector<double>& x, const std::vector<double>& y, bool cubic = true);

    double operator()(double x) const;

    /// The piece on [x_i, x_i+1] is f(x) = ((cubic h + quad) h + lin) h + y with h = x - x_i. The
    /// last piece is the straight line beyond the table. The row evaluation of the lens reads these
    /// pieces.
    std::size_t Knots() const { return m_x.size(); }
    const double* X() const { return m_x.data(); }
    const double* Y() const { return m_y.data(); }
    const double* Cubic() const { return m_cubic.data(); }
    const double* Quad() const { return m_quad.data(); }
    const double* Lin() const { return m_lin.data(); }

private:
    void FitCubic();
    void FitLinear();
    void FitRightEnd();

    std::vector<double> m_x;
    std::vector<double> m_y;
    std::vector<double> m_cubic;
    std::vector<double> m_quad;
    std::vector<double> m_lin;
};

} // namespace qlt
