#pragma once

#include <dg/Color.h>
#include <dg/FBox.h>
#include <dg/FVec3.h>
#include <du/RefCounted.h>

#include <cstdint>
#include <vector>

namespace luk
{

/// Triangles of a shape, in its own frame and in units of the product.
///
/// Ownership: counted and immutable once it is handed on; shapes share it.
///
/// Threads: made on any thread, read on any thread.
class LUHOST_API Mesh : public du::RefCounted
{
public:
    /// A run of triangles of one colour.
    struct Part {
        std::uint32_t firstTriangle = 0;
        std::uint32_t triangleCount = 0;
        dg::Color color{0.7F, 0.7F, 0.7F, 1.0F};
    };

    /// @param indices three for each triangle, each below the number of positions
    Mesh(std::vector<dg::FVec3> positions, std::vector<std::uint32_t> indices, std::vector<Part> parts);
    ~Mesh() override;

    const std::vector<dg::FVec3>& GetPositions() const noexcept { return m_positions; }
    const std::vector<std::uint32_t>& GetIndices() const noexcept { return m_indices; }
    const std::vector<Part>& GetParts() const noexcept { return m_parts; }
    std::size_t GetTriangleCount() const noexcept { return m_indices.size() / 3; }
    const dg::FBox& GetBox() const noexcept { return m_box; }

private:
    std::vector<dg::FVec3> m_positions;
    std::vector<std::uint32_t> m_indices;
    std::vector<Part> m_parts;
    dg::FBox m_box;
};

} // namespace luk
