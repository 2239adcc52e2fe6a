#include "ImportProcess.h"
#include "ProductStream.h"

#include <dg/FormatNumber.h>
#include <du/FileSystem.h>
#include <luhost/io/ProductImport.h>

#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>
#include <vector>

namespace luhost::io
{

namespace
{

bool Fail(std::string& problem, std::string reason)
{
    problem = std::move(reason);
    return false;
}

bool CheckFile(const std::string& path, const ImportLimits& limits, std::string& problem)
{
    namespace fs = std::filesystem;
    const fs::path file(std::u8string(path.begin(), path.end()));
    std::error_code error;
    if (!fs::exists(file, error)) {
        return Fail(problem, "there is no such file");
    }
    if (!du::FileSystem::FileReadable(path)) {
        return Fail(problem, "it is no file that can be read");
    }
    const std::uintmax_t size = fs::file_size(file, error);
    if (error || size == 0) {
        return Fail(problem, "it is empty");
    }
    return size <= limits.maximumFileBytes ||
           Fail(problem, "it is larger than " + std::to_string(limits.maximumFileBytes >> 20) + " MB");
}

/// Every part of a product where it stands, as one mesh.
class Flattening
{
public:
    explicit Flattening(const ProductModel& model) : m_components(model.components) {}

    /// Of all that is there once it is flattened.
    std::uint64_t CountTriangles() const
    {
        constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max() / 4;
        std::vector<std::uint64_t> counts(m_components.size());
        for (std::size_t i = 0; i < counts.size(); ++i) {
            counts[i] = m_components[i].mesh ? m_components[i].mesh->GetTriangleCount() : 0;
            for (const ProductModel::Use& use : m_components[i].uses) {
                counts[i] = std::min(counts[i] + counts[use.component], kMost);
            }
        }
        return counts.back();
    }

    du::SmartPtr<luk::Mesh> Run()
    {
        std::vector<std::pair<std::size_t, dg::Location>> due{{m_components.size() - 1, dg::Location::IDENTITY}};
        while (!due.empty()) {
            const auto [index, place] = due.back();
            due.pop_back();
            const ProductModel::Component& component = m_components[index];
            if (component.mesh) {
                Append(*component.mesh, place);
            }
            for (auto use = component.uses.rbegin(); use != component.uses.rend(); ++use) {
                due.emplace_back(use->component, place * use->location);
            }
        }
        return du::MakeCounted<luk::Mesh>(std::move(m_positions), std::move(m_indices), std::move(m_parts));
    }

private:
    void Append(const luk::Mesh& mesh, const dg::Location& place)
    {
        const auto firstVertex = static_cast<std::uint32_t>(m_positions.size());
        const auto firstTriangle = static_cast<std::uint32_t>(m_indices.size() / 3);
        const bool isMirror = place.GetMat().GetDeterminant() < 0.0;
        for (const dg::FVec3& at : mesh.GetPositions()) {
            const dg::DVec3 turned = place.GetMat() * dg::DVec3(at.x, at.y, at.z);
            const dg::DPoint3D& origin = place.GetPosition();
            m_positions.emplace_back(static_cast<float>(turned.x + origin.x), static_cast<float>(turned.y + origin.y),
                                     static_cast<float>(turned.z + origin.z));
        }
        const std::vector<std::uint32_t>& indices = mesh.GetIndices();
        for (std::size_t i = 0; i < indices.size(); i += 3) {
            // What is mirrored turns its triangles over, so that they still face outwards.
            for (const std::size_t corner : {i, isMirror ? i + 2 : i + 1, isMirror ? i + 1 : i + 2}) {
                m_indices.push_back(firstVertex + indices[corner]);
            }
        }
        for (luk::Mesh::Part part : mesh.GetParts()) {
            part.firstTriangle += firstTriangle;
            m_parts.push_back(part);
        }
    }

    const std::vector<ProductModel::Component>& m_components;
    std::vector<dg::FVec3> m_positions;
    std::vector<std::uint32_t> m_indices;
    std::vector<luk::Mesh::Part> m_parts;
};

} // namespace

ModelReader::ModelReader(std::string program, const ImportLimits& limits)
    : m_program(std::move(program)), m_limits(limits)
{
}

ModelReader::~ModelReader() = default;

bool ModelReader::ReadProduct(const std::string& path, double millimetresPerUnit, ProductModel& model,
                              std::string& problem) const
{
    model.components.clear();
    if (!CheckFile(path, m_limits, problem)) {
        return false;
    }
    std::string unit;
    dg::AppendShortest(unit, millimetresPerUnit);
    constexpr unsigned int kClockFactor = 3;
    std::string output;
    return ImportProcess::Run(m_program,
                              {path, unit, std::to_string(m_limits.seconds), std::to_string(m_limits.memoryBytes),
                               std::to_string(m_limits.maximumFileBytes), std::to_string(m_limits.maximumTriangles),
                               std::to_string(m_limits.maximumUses)},
                              {kClockFactor * m_limits.seconds, m_limits.memoryBytes}, output, problem) &&
           ProductStream::Read(output, model, problem);
}

du::SmartPtr<luk::Mesh> ModelReader::Read(const std::string& path, std::string& problem) const
{
    ProductModel model;
    if (!ReadProduct(path, 0.0, model, problem)) {
        return {};
    }
    Flattening flattening(model);
    if (flattening.CountTriangles() > m_limits.maximumTriangles) {
        problem = "it has more than " + std::to_string(m_limits.maximumTriangles) + " triangles";
        return {};
    }
    du::SmartPtr<luk::Mesh> mesh = flattening.Run();
    return CheckProductMesh(*mesh, problem) ? mesh : nullptr;
}

} // namespace luhost::io
