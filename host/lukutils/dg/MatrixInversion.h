#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace dg
{

/// Inverts a square matrix of N rows for DMat33 and DMat44; not part of the interface.
///
/// Rows and columns are first scaled by powers of two, which is exact, so that what counts as singular does not depend
/// on units: a symbol a micrometre wide and one a kilometre wide both invert.
template <std::size_t N>
class MatrixInversion
{
public:
    using Matrix = std::array<double, N * N>;

    /// @return false, and the matrix as it was, when it is singular or not finite
    static bool Invert(Matrix& matrix) noexcept
    {
        MatrixInversion work(matrix);
        if (!work.ScaleColumns() || !work.ScaleRows() || !work.Eliminate()) {
            return false;
        }
        return work.TakeResult(matrix);
    }

private:
    /// Pivots of a scaled matrix below this are rounding of a matrix that has no inverse.
    static constexpr double kSmallestPivot = 1e-14;

    explicit MatrixInversion(const Matrix& matrix) noexcept : m_left(matrix)
    {
        for (std::size_t i = 0; i < N; ++i) {
            m_right[i * N + i] = 1.0;
        }
    }

    static bool IsUsable(double magnitude) noexcept { return std::isfinite(magnitude) && magnitude > 0.0; }

    bool ScaleColumns() noexcept
    {
        for (std::size_t column = 0; column < N; ++column) {
            double largest = 0.0;
            for (std::size_t row = 0; row < N; ++row) {
                largest = Larger(largest, std::fabs(m_left[row * N + column]));
            }
            if (!IsUsable(largest)) {
                return false;
            }
            m_columnExponents[column] = std::ilogb(largest);
            for (std::size_t row = 0; row < N; ++row) {
                double& entry = m_left[row * N + column];
                entry = std::ldexp(entry, -m_columnExponents[column]);
            }
        }
        return true;
    }

    bool ScaleRows() noexcept
    {
        for (std::size_t row = 0; row < N; ++row) {
            double largest = 0.0;
            for (std::size_t column = 0; column < N; ++column) {
                largest = Larger(largest, std::fabs(m_left[row * N + column]));
            }
            if (!IsUsable(largest)) {
                return false;
            }
            const int exponent = std::ilogb(largest);
            for (std::size_t column = 0; column < N; ++column) {
                double& entry = m_left[row * N + column];
                entry = std::ldexp(entry, -exponent);
            }
            m_right[row * N + row] = std::ldexp(1.0, -exponent);
        }
        return true;
    }

    /// Gauss-Jordan with the largest pivot of each column.
    bool Eliminate() noexcept
    {
        for (std::size_t column = 0; column < N; ++column) {
            const std::size_t pivotRow = FindPivot(column);
            const double pivot = m_left[pivotRow * N + column];
            if (!(std::fabs(pivot) > kSmallestPivot)) {
                return false;
            }
            SwapRows(pivotRow, column);
            for (std::size_t k = 0; k < N; ++k) {
                m_left[column * N + k] /= pivot;
                m_right[column * N + k] /= pivot;
            }
            for (std::size_t row = 0; row < N; ++row) {
                if (row != column) {
                    Subtract(row, column, m_left[row * N + column]);
                }
            }
        }
        return true;
    }

    std::size_t FindPivot(std::size_t column) const noexcept
    {
        std::size_t best = column;
        for (std::size_t row = column + 1; row < N; ++row) {
            if (std::fabs(m_left[row * N + column]) > std::fabs(m_left[best * N + column])) {
                best = row;
            }
        }
        return best;
    }

    void SwapRows(std::size_t a, std::size_t b) noexcept
    {
        for (std::size_t k = 0; a != b && k < N; ++k) {
            std::swap(m_left[a * N + k], m_left[b * N + k]);
            std::swap(m_right[a * N + k], m_right[b * N + k]);
        }
    }

    void Subtract(std::size_t row, std::size_t source, double factor) noexcept
    {
        for (std::size_t k = 0; factor != 0.0 && k < N; ++k) {
            m_left[row * N + k] -= factor * m_left[source * N + k];
            m_right[row * N + k] -= factor * m_right[source * N + k];
        }
    }

    bool TakeResult(Matrix& matrix) noexcept
    {
        for (std::size_t row = 0; row < N; ++row) {
            for (std::size_t column = 0; column < N; ++column) {
                double& entry = m_right[row * N + column];
                // Adding zero turns the -0 of an elimination into the 0 that everybody expects to see.
                entry = std::ldexp(entry, -m_columnExponents[row]) + 0.0;
                if (!std::isfinite(entry)) {
                    return false;
                }
            }
        }
        matrix = m_right;
        return true;
    }

    /// The larger of two magnitudes; unlike std::max it keeps a NaN once it has met one.
    static double Larger(double a, double b) noexcept { return a != a || a > b ? a : b; }

    Matrix m_left;
    Matrix m_right{};
    std::array<int, N> m_columnExponents{};
};

} // namespace dg
