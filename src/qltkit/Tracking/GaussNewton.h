// Least squares with a few unknowns, by the method of Gauss and Newton.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace qltkit
{

template <std::size_t N>
using Matrix = std::array<std::array<double, N>, N>;

/// Solves a x = b by elimination. `a` must be symmetric and positive definite, so no pivot is
/// needed.
template <std::size_t N>
std::array<double, N> Solve(Matrix<N> a, std::array<double, N> b)
{
    for (std::size_t k = 0; k < N; ++k)
    {
        for (std::size_t i = k + 1; i < N; ++i)
        {
            const double factor = a[i][k] / a[k][k];
            for (std::size_t j = k; j < N; ++j)
            {
                a[i][j] -= factor * a[k][j];
            }
            b[i] -= factor * b[k];
        }
    }
    for (std::size_t i = N; i-- > 0;)
    {
        for (std::size_t j = i + 1; j < N; ++j)
        {
            b[i] -= a[i][j] * b[j];
        }
        b[i] /= a[i][i];
    }
    return b;
}

/// Finds the `x` that makes the sum of the squared residuals smallest, beginning at `x`.
/// `residuals(x)` returns a vector of the same length every time. Its values and the unknowns
/// should be of the order of one.
template <std::size_t N, typename Residuals>
std::array<double, N> LeastSquares(std::array<double, N> x, const Residuals& residuals)
{
    constexpr int ROUNDS = 8;
    constexpr double STEP = 1e-6;
    constexpr double DAMPING = 1e-9; // keeps an unknown that nothing depends on where it is
    for (int round = 0; round < ROUNDS; ++round)
    {
        const std::vector<double> now = residuals(x);
        std::array<std::vector<double>, N> slopes;
        for (std::size_t i = 0; i < N; ++i)
        {
            std::array<double, N> moved = x;
            moved[i] += STEP;
            slopes[i] = residuals(moved);
            for (std::size_t k = 0; k < now.size(); ++k)
            {
                slopes[i][k] = (slopes[i][k] - now[k]) / STEP;
            }
        }
        Matrix<N> normal{};
        std::array<double, N> right{};
        for (std::size_t i = 0; i < N; ++i)
        {
            normal[i][i] = DAMPING;
            for (std::size_t k = 0; k < now.size(); ++k)
            {
                right[i] -= slopes[i][k] * now[k];
                for (std::size_t j = 0; j < N; ++j)
                {
                    normal[i][j] += slopes[i][k] * slopes[j][k];
                }
            }
        }
        const std::array<double, N> change = Solve<N>(normal, right);
        for (std::size_t i = 0; i < N; ++i)
        {
            x[i] += change[i];
        }
    }
    return x;
}

} // namespace qltkit
