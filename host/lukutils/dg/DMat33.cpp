#include "MatrixInversion.h"

#include <dg/DMat33.h>

namespace dg
{

DMat33::DMat33(const FMat33& matrix) noexcept
{
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        m_entries[i] = static_cast<double>(matrix.GetEntries()[i]);
    }
}

FMat33 DMat33::ToFMat33() const noexcept
{
    std::array<float, 9> rounded{};
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        rounded[i] = static_cast<float>(m_entries[i]);
    }
    return FMat33(rounded);
}

bool DMat33::Invert() noexcept { return MatrixInversion<3>::Invert(m_entries); }

DMat33 operator*(const DMat33& a, const DMat33& b) noexcept
{
    DMat33 product;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            double sum = 0.0;
            for (int k = 0; k < 3; ++k) {
                sum += a.Get(row, k) * b.Get(k, column);
            }
            product.Set(row, column, sum);
        }
    }
    return product;
}

DVec3 operator*(const DMat33& m, const DVec3& v) noexcept
{
    return {m.Get(0, 0) * v.x + m.Get(0, 1) * v.y + m.Get(0, 2) * v.z,
            m.Get(1, 0) * v.x + m.Get(1, 1) * v.y + m.Get(1, 2) * v.z,
            m.Get(2, 0) * v.x + m.Get(2, 1) * v.y + m.Get(2, 2) * v.z};
}

} // namespace dg
