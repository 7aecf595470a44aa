// A square matrix of which only a band around the diagonal is stored, and the linear systems that
// it stands for. In double precision; not shared between threads.
#pragma once

#include <vector>

namespace qlt
{

class BandMatrix
{
public:
    /// A dim x dim zero matrix with `upper` diagonals above the main one and `lower` below. Asserts
    /// "dim>0", "n_u >= 0", "n_l >= 0"; what is negative counts as 0.
    BandMatrix(int dim, int n_u, int n_l);

    void resize(int dim, int n_u, int n_l);

    int dim() const;
    int num_upper() const;
    int num_lower() const;

    /// Element (i, j). Asserts that it exists and lies in the band; one that does not is a scratch
    /// value.
    double& operator()(int i, int j);
    double operator()(int i, int j) const;

    /// The reciprocal of element (i, i) as it was before Decompose.
    double& SavedDiagonal(int i);

    /// LU decomposition in place, without pivoting.
    void Decompose();

    /// The solution for the right-hand side `b` of dim() values.
    std::vector<double> Solve(const std::vector<double>& b, bool isDecomposed = false);
    std::vector<double> SolveLower(const std::vector<double>& b) const;
    std::vector<double> SolveUpper(const std::vector<double>& b) const;

private:
    /// Asserts as operator() does; null for an element that does not exist.
    const double* Find(int i, int j) const;

    void ScaleRows();

    // Row k holds the k-th diagonal above (below) the main one, indexed by the row of the matrix.
    // Row 0 of m_lower is no diagonal: Decompose keeps SavedDiagonal there.
    std::vector<std::vector<double>> m_upper;
    std::vector<std::vector<double>> m_lower;
    double mScratch = 0.0;
};

} // namespace qlt
