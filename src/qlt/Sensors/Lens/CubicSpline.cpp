#include "Sensors/Lens/CubicSpline.h"

#include "Runtime/Check.h"
#include "Sensors/Lens/BandMatrix.h"

#include <algorithm>

#define QLT_SOURCE_FILE L"Sensors/Params"

namespace qlt
{

void CubicSpline::SetPoints(const std::vector<double>& x, const std::vector<double>& y, bool cubic)
{
    QLT_CHECK(x.size() == y.size());
    const std::size_t n = std::min(x.size(), y.size());
    m_x.assign(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(n));
    m_y.assign(y.begin(), y.begin() + static_cast<std::ptrdiff_t>(n));
    for (std::size_t i = 0; i + 1 < n; ++i)
    {
        QLT_CHECK_TEXT(m_x[i] < m_x[i + 1], L"m_x[i]<m_x[i + 1]");
    }
    m_cubic.assign(n, 0.0);
    m_quad.assign(n, 0.0);
    m_lin.assign(n, 0.0);
    if (cubic)
    {
        FitCubic();
    }
    else
    {
        FitLinear();
    }
    FitRightEnd();
}

void CubicSpline::FitCubic()
{
    const int n = static_cast<int>(m_x.size());
    const double* x = m_x.data();
    const double* y = m_y.data();
    BandMatrix a(n, 1, 1);
    std::vector<double> rhs(m_x.size(), 0.0);
    for (int i = 1; i < n - 1; ++i)
    {
        a(i, i - 1) = (x[i] - x[i - 1]) / 3.0;
        a(i, i) = (x[i + 1] - x[i - 1]) * (2.0 / 3.0);
        a(i, i + 1) = (x[i + 1] - x[i]) / 3.0;
        rhs[static_cast<std::size_t>(i)] =
            (y[i + 1] - y[i]) / (x[i + 1] - x[i]) - (y[i] - y[i - 1]) / (x[i] - x[i - 1]);
    }
    // A natural spline has no curvature at its ends.
    a(0, 0) = 2.0;
    a(0, 1) = 0.0;
    a(n - 1, n - 1) = 2.0;
    a(n - 1, n - 2) = 0.0;
    m_quad = a.Solve(rhs);
    for (std::size_t i = 0; i + 1 < m_x.size(); ++i)
    {
        const double h = x[i + 1] - x[i];
        m_cubic[i] = (m_quad[i + 1] - m_quad[i]) / 3.0 / h;
        m_lin[i] = (y[i + 1] - y[i]) / h - (2.0 * m_quad[i] + m_quad[i + 1]) / 3.0 * h;
    }
}

void CubicSpline::FitLinear()
{
    for (std::size_t i = 0; i + 1 < m_x.size(); ++i)
    {
        m_lin[i] = (m_y[i + 1] - m_y[i]) / (m_x[i + 1] - m_x[i]);
    }
}

/// Beyond the last knot the spline continues with the slope at that knot.
void CubicSpline::FitRightEnd()
{
    const std::size_t n = m_x.size();
    if (n < 2)
    {
        return;
    }
    const double h = m_x[n - 1] - m_x[n - 2];
    m_cubic[n - 1] = 0.0;
    m_lin[n - 1] = 3.0 * m_cubic[n - 2] * h * h + 2.0 * m_quad[n - 2] * h + m_lin[n - 2];
}

double CubicSpline::operator()(double x) const
{
    if (m_x.empty())
    {
        return 0.0;
    }
    const auto notLess = std::lower_bound(m_x.begin(), m_x.end(), x) - m_x.begin();
    const auto i = static_cast<std::size_t>(std::max<std::ptrdiff_t>(notLess - 1, 0));
    const double h = x - m_x[i];
    if (x < m_x.front() || x > m_x.back())
    {
        return (m_quad[i] * h + m_lin[i]) * h + m_y[i];
    }
    return ((m_cubic[i] * h + m_quad[i]) * h + m_lin[i]) * h + m_y[i];
}

} // namespace qlt
