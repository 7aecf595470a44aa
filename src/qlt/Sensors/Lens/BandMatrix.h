// A square band matrix in double precision, and the solution of its linear systems. It stores only
// the band around the diagonal. One thread at a time may use an object.
#pragma once

#include <vector>

namespace qlt
{

class BandMatrix
{
public:
    /// A dim x dim zero matrix with `n_u` diagonals above the main one and `n_l` below it. Asserts
    /// "dim>0", "n_u >= 0" and "n_l >= 0"; a negative value counts as 0.
    BandMatrix(int dim, int n_u, int n_l);

    void resize(int dim, int n_u, int n_l);

    int dim() const;
    int num_upper() const;
    int num_lower() const;

    /// Element (i, j). Asserts that it exists and lies in the band; otherwise the result is a
    /// scratch value.
    double& operator()(int i, int j);
    double operator()(int i, int j) const;

    /// The reciprocal of the value that element (i, i) had before Decompose.
    double& SavedDiagonal(int i);

    /// Computes the LU decomposition in place, without pivoting.
    void Decompose();

    /// The solution for the right-hand side `b` of dim() values.
    std::vector<double> Solve(const std::vector<double>& b, bool isDecomposed = false);
    std::vector<double> SolveLower(const std::vector<double>& b) const;
    std::vector<double> SolveUpper(const std::vector<double>& b) const;

private:
    /// Asserts as operator() does. Null when the element does not exist.
    const double* Find(int i, int j) const;

    void ScaleRows();

    // Row k of m_upper (m_lower) holds the k-th diagonal above (below) the main one. The index in a
    // row is the row of the matrix. Row 0 of m_lower is no diagonal, so SavedDiagonal uses it.
    std::vector<std::vector<double>> m_upper;
    std::vector<std::vector<double>> m_lower;
    double mScratch = 0.0;
};

} // namespace qlt
