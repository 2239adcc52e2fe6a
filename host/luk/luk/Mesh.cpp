#include <luk/Mesh.h>

#include <utility>

namespace luk
{

Mesh::Mesh(std::vector<dg::FVec3> positions, std::vector<std::uint32_t> indices, std::vector<Part> parts)
    : m_positions(std::move(positions)), m_indices(std::move(indices)), m_parts(std::move(parts))
{
    for (const dg::FVec3& position : m_positions) {
        m_box.Enclose(position);
    }
}

Mesh::~Mesh() = default;

} // namespace luk
