#include "Sensors/Lens/BandMatrix.h"

#include "Runtime/Check.h"

#include <algorithm>

#define QLT_SOURCE_FILE L"Sensors/Params"

namespace qlt
{
namespace
{

using Rows = std::vector<std::vector<double>>;

Rows MakeRows(int count, int length)
{
    const auto rows = static_cast<std::size_t>(std::max(count, 0)) + 1;
    return Rows(rows, std::vector<double>(static_cast<std::size_t>(std::max(length, 0)), 0.0));
}

} // namespace

BandMatrix::BandMatrix(int dim, int n_u, int n_l) { resize(dim, n_u, n_l); }

void BandMatrix::resize(int dim, int n_u, int n_l)
{
    QLT_CHECK_TEXT(dim > 0, L"dim>0");
    QLT_CHECK(n_u >= 0);
    QLT_CHECK(n_l >= 0);
    m_upper = MakeRows(n_u, dim);
    m_lower = MakeRows(n_l, dim);
}

int BandMatrix::dim() const { return m_upper.empty() ? 0 : static_cast<int>(m_upper[0].size()); }

int BandMatrix::num_upper() const { return static_cast<int>(m_upper.size()) - 1; }

int BandMatrix::num_lower() const { return static_cast<int>(m_lower.size()) - 1; }

const double* BandMatrix::Find(int i, int j) const
{
    const bool inside = (i >= 0) && (i < dim()) && (j >= 0) && (j < dim());
    QLT_CHECK_TEXT(inside, L"(i >= 0) && (i<dim()) && (j >= 0) && (j<dim())");
    const int k = j - i;
    const bool inBand = (-num_lower() <= k) && (k <= num_upper());
    QLT_CHECK_TEXT(inBand, L"(-num_lower() <= k) && (k <= num_upper())");
    if (!inside || !inBand)
    {
        return nullptr;
    }
    const Rows& rows = k >= 0 ? m_upper : m_lower;
    return &rows[static_cast<std::size_t>(std::abs(k))][static_cast<std::size_t>(i)];
}

double& BandMatrix::operator()(int i, int j)
{
    const double* element = Find(i, j);
    return element != nullptr ? const_cast<double&>(*element) : mScratch;
}

double BandMatrix::operator()(int i, int j) const
{
    const double* element = Find(i, j);
    return element != nullptr ? *element : 0.0;
}

double& BandMatrix::SavedDiagonal(int i)
{
    const bool inside = (i >= 0) && (i < dim());
    QLT_CHECK_TEXT(inside, L"(i >= 0) && (i<dim())");
    return inside ? m_lower[0][static_cast<std::size_t>(i)] : mScratch;
}

void BandMatrix::ScaleRows()
{
    const int n = dim();
    BandMatrix& a = *this;
    for (int i = 0; i < n; ++i)
    {
        QLT_CHECK_TEXT(a(i, i) != 0.0, L"this->operator()(i, i) != 0.0");
        SavedDiagonal(i) = 1.0 / a(i, i);
        const int last = std::min(n - 1, i + num_upper());
        for (int j = std::max(0, i - num_lower()); j <= last; ++j)
        {
            a(i, j) *= SavedDiagonal(i);
        }
        a(i, i) = 1.0; // the product may differ by a rounding error
    }
}

void BandMatrix::Decompose()
{
    ScaleRows();
    const int n = dim();
    BandMatrix& a = *this;
    for (int k = 0; k < n; ++k)
    {
        const int lastRow = std::min(n - 1, k + num_lower());
        const int lastColumn = std::min(n - 1, k + num_upper());
        for (int i = k + 1; i <= lastRow; ++i)
        {
            QLT_CHECK_TEXT(a(k, k) != 0.0, L"this->operator()(k, k) != 0.0");
            const double q = -a(i, k) / a(k, k);
            a(i, k) = -q;
            for (int j = k + 1; j <= lastColumn; ++j)
            {
                a(i, j) = a(i, j) + q * a(k, j);
            }
        }
    }
}

std::vector<double> BandMatrix::SolveLower(const std::vector<double>& b) const
{
    QLT_CHECK_TEXT(dim() == static_cast<int>(b.size()), L"this->dim() == (int)b.size()");
    const BandMatrix& a = *this;
    std::vector<double> x(b.size(), 0.0);
    for (int i = 0; i < std::min(dim(), static_cast<int>(b.size())); ++i)
    {
        const auto row = static_cast<std::size_t>(i);
        double sum = 0.0;
        for (int j = std::max(0, i - num_lower()); j < i; ++j)
        {
            sum += a(i, j) * x[static_cast<std::size_t>(j)];
        }
        // ScaleRows has scaled the rows, so scale the right-hand side, too.
        x[row] = b[row] * m_lower[0][row] - sum;
    }
    return x;
}

std::vector<double> BandMatrix::SolveUpper(const std::vector<double>& b) const
{
    QLT_CHECK_TEXT(dim() == static_cast<int>(b.size()), L"this->dim() == (int)b.size()");
    const BandMatrix& a = *this;
    const int n = std::min(dim(), static_cast<int>(b.size()));
    std::vector<double> x(b.size(), 0.0);
    for (int i = n - 1; i >= 0; --i)
    {
        const auto row = static_cast<std::size_t>(i);
        double sum = 0.0;
        for (int j = i + 1; j <= std::min(n - 1, i + num_upper()); ++j)
        {
            sum += a(i, j) * x[static_cast<std::size_t>(j)];
        }
        x[row] = (b[row] - sum) / a(i, i);
    }
    return x;
}

std::vector<double> BandMatrix::Solve(const std::vector<double>& b, bool isDecomposed)
{
    QLT_CHECK_TEXT(dim() == static_cast<int>(b.size()), L"this->dim() == (int)b.size()");
    if (!isDecomposed)
    {
        Decompose();
    }
    return SolveUpper(SolveLower(b));
}

} // namespace qlt
