// A natural cubic spline through a table, in double precision: between two knots a cubic, outside
// the table the straight line that goes on with the end slope. A fitted spline may be evaluated
// from several threads.
#pragma once

#include <cstddef>
#include <vector>

namespace qlt
{

class CubicSpline
{
public:
    /// Fits the spline through the points (x[i], y[i]), at least two; piecewise linear when not
    /// `cubic`. Asserts equal lengths and strictly increasing x; with a broken precondition the
    /// values are unspecified.
    void SetPoints(const std::vector<double>& x, const std::vector<double>& y, bool cubic = true);

    double operator()(double x) const;

    /// The piece on [x_i, x_i+1] as f(x) = ((cubic h + quad) h + lin) h + y with h = x - x_i; the
    /// last one is the straight line beyond the table. Read by the row evaluation of the lens.
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
