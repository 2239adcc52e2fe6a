#include <du/SystemPath.h>
#include <luhost/ProductMeshReader.h>
#include <luhost/ProductModel.h>

#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <type_traits>
#include <utility>
#include <vector>

namespace luhost
{

namespace
{

static_assert(std::endian::native == std::endian::little, "meshes are copied as they lie in memory");
static_assert(sizeof(dg::FVec3) == 12 && std::is_trivially_copyable_v<dg::FVec3>);
static_assert(sizeof(luk::Mesh::Part) == 24 && std::is_trivially_copyable_v<luk::Mesh::Part>);

constexpr std::string_view kMagic = "ply\nformat binary_little_endian 1.0\n";
constexpr std::string_view kVertex = "element vertex ";
constexpr std::string_view kFace = "\nproperty float x\nproperty float y\nproperty float z\nelement face ";
constexpr std::string_view kPart = "\nproperty list uchar uint vertex_indices\nelement part ";
constexpr std::string_view kEnd = "\nproperty uint first_triangle\nproperty uint triangle_count\nproperty float red\n"
                                  "property float green\nproperty float blue\nproperty float alpha\nend_header\n";
constexpr std::size_t kFaceBytes = 13;

template <class T>
void AppendAll(std::string& out, const std::vector<T>& items)
{
    const std::size_t before = out.size();
    out.resize(before + items.size() * sizeof(T));
    if (!items.empty()) {
        std::memcpy(out.data() + before, items.data(), items.size() * sizeof(T));
    }
}

/// Eats the bytes of a file from their front.
class Scanner
{
public:
    explicit Scanner(std::string_view bytes) noexcept : m_rest(bytes) {}

    bool Take(std::string_view text) noexcept
    {
        const bool isThere = m_rest.starts_with(text);
        m_rest.remove_prefix(isThere ? text.size() : 0);
        return isThere;
    }

    bool TakeCount(std::uint32_t& count) noexcept
    {
        const auto [end, status] = std::from_chars(m_rest.data(), m_rest.data() + m_rest.size(), count);
        m_rest.remove_prefix(static_cast<std::size_t>(end - m_rest.data()));
        return status == std::errc();
    }

    /// What the counts of the header promise has been compared with GetSize before.
    template <class T>
    std::vector<T> TakeAll(std::size_t count)
    {
        std::vector<T> items(count);
        if (count != 0) {
            std::memcpy(items.data(), m_rest.data(), count * sizeof(T));
        }
        m_rest.remove_prefix(count * sizeof(T));
        return items;
    }

    bool TakeTriangles(std::vector<std::uint32_t>& indices)
    {
        for (std::size_t i = 0; i < indices.size(); i += 3) {
            if (m_rest.front() != 3) {
                return false;
            }
            std::memcpy(&indices[i], m_rest.data() + 1, kFaceBytes - 1);
            m_rest.remove_prefix(kFaceBytes);
        }
        return true;
    }

    std::size_t GetSize() const noexcept { return m_rest.size(); }

private:
    std::string_view m_rest;
};

} // namespace

std::string MeshToPly(const luk::Mesh& mesh)
{
    const std::size_t triangles = mesh.GetTriangleCount();
    std::string out;
    out.reserve(400 + mesh.GetPositions().size() * sizeof(dg::FVec3) + triangles * kFaceBytes);
    out.append(kMagic).append(kVertex).append(std::to_string(mesh.GetPositions().size()));
    out.append(kFace).append(std::to_string(triangles));
    out.append(kPart).append(std::to_string(mesh.GetParts().size())).append(kEnd);
    AppendAll(out, mesh.GetPositions());
    const std::size_t before = out.size();
    out.resize(before + triangles * kFaceBytes);
    char* face = out.data() + before;
    for (std::size_t i = 0; i < triangles; ++i, face += kFaceBytes) {
        *face = 3;
        std::memcpy(face + 1, &mesh.GetIndices()[3 * i], kFaceBytes - 1);
    }
    AppendAll(out, mesh.GetParts());
    return out;
}

du::SmartPtr<luk::Mesh> MeshFromPly(std::string_view bytes, std::string& problem)
{
    Scanner scanner(bytes);
    std::uint32_t vertices = 0;
    std::uint32_t triangles = 0;
    std::uint32_t parts = 0;
    if (!scanner.Take(kMagic) || !scanner.Take(kVertex) || !scanner.TakeCount(vertices) || !scanner.Take(kFace) ||
        !scanner.TakeCount(triangles) || !scanner.Take(kPart) || !scanner.TakeCount(parts) || !scanner.Take(kEnd)) {
        problem = "it is no mesh as documents keep them";
        return {};
    }
    const std::uint64_t promised = std::uint64_t{vertices} * sizeof(dg::FVec3) + std::uint64_t{triangles} * kFaceBytes +
                                   std::uint64_t{parts} * sizeof(luk::Mesh::Part);
    if (promised != scanner.GetSize()) {
        problem = "its mesh has " + std::to_string(scanner.GetSize()) + " bytes where its head promises " +
                  std::to_string(promised);
        return {};
    }
    auto positions = scanner.TakeAll<dg::FVec3>(vertices);
    std::vector<std::uint32_t> indices(std::size_t{3} * triangles);
    if (!scanner.TakeTriangles(indices)) {
        problem = "a face of its mesh is no triangle";
        return {};
    }
    auto mesh =
        du::MakeCounted<luk::Mesh>(std::move(positions), std::move(indices), scanner.TakeAll<luk::Mesh::Part>(parts));
    return CheckProductMesh(*mesh, problem) ? mesh : nullptr;
}

ProductMeshReader::ProductMeshReader() = default;

ProductMeshReader::~ProductMeshReader() = default;

du::SmartPtr<luk::Mesh> ProductMeshReader::Read(const std::string& path, std::string& problem) const
{
    std::ifstream file(du::SystemPath(path), std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    file.seekg(0);
    std::string bytes(kMagic.size(), '\0');
    // Nothing but the front is read of a file of another kind.
    if (!file.read(bytes.data(), static_cast<std::streamsize>(bytes.size())) || bytes != kMagic) {
        problem = "it is no mesh as documents keep them";
        return {};
    }
    bytes.resize(static_cast<std::size_t>(size));
    file.read(bytes.data() + kMagic.size(), static_cast<std::streamsize>(bytes.size() - kMagic.size()));
    bytes.resize(kMagic.size() + static_cast<std::size_t>(file.gcount()));
    return MeshFromPly(bytes, problem);
}

} // namespace luhost
