#include <luhost/render/SceneGeometry.h>
#include <luhost/render/WeldedMesh.h>

#include <algorithm>
#include <cmath>

namespace luhost::render
{

namespace
{

constexpr std::uint32_t kNone = ~std::uint32_t{0};

/// Finds the vertex at a place. Cells are so small that few vertices fit into one, however a mesh crowds them, and so large
/// that most places lie in the middle of one.
class VertexTable
{
public:
    VertexTable(std::vector<dg::FVec3>& vertices, std::size_t expected) : m_vertices(vertices)
    {
        std::size_t size = 16;
        while (size < 2 * expected) {
            size *= 2;
        }
        m_slots.resize(size, kNone);
    }

    std::uint32_t FindOrAdd(const dg::FVec3& place)
    {
        const Cell first = CellOf(place, -kWeldDistance);
        const Cell last = CellOf(place, kWeldDistance);
        for (std::int64_t x = first[0]; x <= last[0]; ++x) {
            for (std::int64_t y = first[1]; y <= last[1]; ++y) {
                for (std::int64_t z = first[2]; z <= last[2]; ++z) {
                    if (const std::uint32_t found = FindIn({x, y, z}, place); found != kNone) {
                        return found;
                    }
                }
            }
        }
        return Add(place);
    }

private:
    using Cell = std::array<std::int64_t, 3>;
    static constexpr double kCellsPerUnit = 1.0 / (8.0 * kWeldDistance);

    static Cell CellOf(const dg::FVec3& place, double shift)
    {
        const auto cell = [shift](float value) {
            return static_cast<std::int64_t>(std::floor((static_cast<double>(value) + shift) * kCellsPerUnit));
        };
        return {cell(place.x), cell(place.y), cell(place.z)};
    }

    static bool IsSamePlace(const dg::FVec3& a, const dg::FVec3& b)
    {
        constexpr float kDistance = static_cast<float>(kWeldDistance);
        return std::fabs(a.x - b.x) <= kDistance && std::fabs(a.y - b.y) <= kDistance &&
               std::fabs(a.z - b.z) <= kDistance;
    }

    std::size_t SlotOf(const Cell& cell) const
    {
        std::uint64_t hash = 0;
        for (const std::int64_t index : cell) {
            hash = (hash ^ static_cast<std::uint64_t>(index)) * 0x9E3779B97F4A7C15U;
            hash ^= hash >> 29U;
        }
        return static_cast<std::size_t>(hash) & (m_slots.size() - 1);
    }

    std::uint32_t FindIn(const Cell& cell, const dg::FVec3& place) const
    {
        for (std::size_t slot = SlotOf(cell); m_slots[slot] != kNone; slot = (slot + 1) & (m_slots.size() - 1)) {
            if (IsSamePlace(m_vertices[m_slots[slot]], place)) {
                return m_slots[slot];
            }
        }
        return kNone;
    }

    std::uint32_t Add(const dg::FVec3& place)
    {
        std::size_t slot = SlotOf(CellOf(place, 0.0));
        while (m_slots[slot] != kNone) {
            slot = (slot + 1) & (m_slots.size() - 1);
        }
        m_slots[slot] = static_cast<std::uint32_t>(m_vertices.size());
        m_vertices.push_back(place);
        return m_slots[slot];
    }

    std::vector<dg::FVec3>& m_vertices;
    std::vector<std::uint32_t> m_slots;
};

/// Runs as they are used: in order, none over another, the first to begin wins.
std::vector<luk::Mesh::Part> SortedParts(const luk::Mesh& mesh, std::vector<std::size_t>& order)
{
    const auto& parts = mesh.GetParts();
    order.resize(parts.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i] = i;
    }
    std::stable_sort(order.begin(), order.end(), [&parts](std::size_t a, std::size_t b) {
        return parts[a].firstTriangle < parts[b].firstTriangle;
    });
    std::vector<luk::Mesh::Part> sorted;
    std::uint64_t end = 0;
    for (const std::size_t i : order) {
        const std::uint64_t first = std::max<std::uint64_t>(parts[i].firstTriangle, end);
        const std::uint64_t next = std::uint64_t{parts[i].firstTriangle} + parts[i].triangleCount;
        end = std::max(end, next);
        const std::uint64_t count = next > first ? next - first : 0;
        sorted.push_back({static_cast<std::uint32_t>(std::min<std::uint64_t>(first, kNone)),
                          static_cast<std::uint32_t>(count), parts[i].color});
    }
    return sorted;
}

class Welder
{
public:
    Welder(const luk::Mesh& mesh, const UnitFrame& frame, WeldedMesh& result)
        : m_mesh(mesh), m_frame(frame), m_result(result), m_table(result.positions, mesh.GetPositions().size()),
          m_welded(mesh.GetPositions().size(), kNone)
    {
    }

    void Weld()
    {
        m_result.triangles.reserve(m_mesh.GetTriangleCount());
        std::vector<std::size_t> order;
        const auto parts = SortedParts(m_mesh, order);
        std::size_t next = 0;
        for (std::size_t i = 0; i < parts.size(); ++i) {
            AddRun(next, parts[i].firstTriangle, WeldedMesh::kNoPart);
            next = std::max<std::size_t>(next, parts[i].firstTriangle);
            AddRun(next, next + parts[i].triangleCount, order[i]);
            next += parts[i].triangleCount;
        }
        AddRun(next, m_mesh.GetTriangleCount(), WeldedMesh::kNoPart);
        m_result.positions.push_back({});
        m_result.positions.shrink_to_fit();
    }

private:
    void AddRun(std::size_t first, std::size_t end, std::size_t part)
    {
        const std::size_t before = m_result.triangles.size();
        for (std::size_t i = first; i < std::min(end, m_mesh.GetTriangleCount()); ++i) {
            AddTriangle(i);
        }
        if (m_result.triangles.size() > before) {
            m_result.runs.push_back({static_cast<std::uint32_t>(before), part});
        }
    }

    void AddTriangle(std::size_t number)
    {
        WeldedMesh::Triangle triangle{};
        for (std::size_t corner = 0; corner < 3; ++corner) {
            triangle[corner] = WeldVertex(m_mesh.GetIndices()[3 * number + corner]);
            if (triangle[corner] == kNone) {
                return;
            }
        }
        if (triangle[0] != triangle[1] && triangle[1] != triangle[2] && triangle[2] != triangle[0]) {
            m_result.triangles.push_back(triangle);
        }
    }

    std::uint32_t WeldVertex(std::uint32_t index)
    {
        if (index >= m_welded.size()) {
            return kNone;
        }
        std::uint32_t& welded = m_welded[index];
        if (welded == kNone) {
            const dg::FVec3 place = ToFrame(m_mesh.GetPositions()[index]);
            const bool isInside =
                std::fabs(place.x) <= 1.0F && std::fabs(place.y) <= 1.0F && std::fabs(place.z) <= 1.0F;
            welded = isInside ? m_table.FindOrAdd(place) : kNone;
        }
        return welded;
    }

    /// What is too far away to be drawn, and what is no number, is not inside afterwards.
    dg::FVec3 ToFrame(const dg::FVec3& position) const
    {
        const auto convert = [this](float value, double center) {
            return static_cast<float>((static_cast<double>(value) - center) * m_frame.scale);
        };
        return {convert(position.x, m_frame.center.x), convert(position.y, m_frame.center.y),
                convert(position.z, m_frame.center.z)};
    }

    const luk::Mesh& m_mesh;
    const UnitFrame& m_frame;
    WeldedMesh& m_result;
    VertexTable m_table;
    std::vector<std::uint32_t> m_welded;
};

dg::DMat44 InverseOf(const UnitFrame& frame)
{
    const double unit = 1.0 / frame.scale;
    return dg::DMat44({unit, 0.0, 0.0, frame.center.x, //
                       0.0, unit, 0.0, frame.center.y, //
                       0.0, 0.0, unit, frame.center.z, //
                       0.0, 0.0, 0.0, 1.0});
}

} // namespace

WeldedMesh::WeldedMesh(const luk::Mesh& mesh)
{
    const UnitFrame frame = UnitFrame::Around(DrawableBox(mesh));
    toMesh = InverseOf(frame);
    Welder(mesh, frame, *this).Weld();
}

std::size_t WeldedMesh::PartOf(std::size_t triangle) const noexcept
{
    const auto after = std::upper_bound(runs.begin(), runs.end(), triangle,
                                        [](std::size_t value, const Run& run) { return value < run.firstTriangle; });
    return after == runs.begin() ? kNoPart : std::prev(after)->part;
}

} // namespace luhost::render
