#include <luhost/render/SceneGeometry.h>
#include <luk/ComponentNode.h>
#include <luk/Instance.h>
#include <luk/Shape.h>
#include <luk/ShapeScene.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <unordered_map>

namespace luhost::render
{

namespace
{

constexpr float kOpaque = 0.999F;

bool IsDrawable(const dg::FVec3& position) noexcept
{
    const auto near = [](float value) { return std::fabs(static_cast<double>(value)) <= kFarthestCoordinate; };
    return near(position.x) && near(position.y) && near(position.z);
}

dg::DPoint3D ToPoint(const dg::FVec3& position) noexcept
{
    return {static_cast<double>(position.x), static_cast<double>(position.y), static_cast<double>(position.z)};
}

SceneMesh MakeMesh(const du::SmartPtr<luk::Mesh>& mesh)
{
    const auto& parts = mesh->GetParts();
    return {mesh, DrawableBox(*mesh), std::all_of(parts.begin(), parts.end(), [](const luk::Mesh::Part& part) {
                return part.color.alpha >= kOpaque;
            })};
}

dg::DBox Transformed(const dg::DBox& box, const dg::DMat44& transform) noexcept
{
    dg::DBox result;
    for (unsigned corner = 0; corner < 8; ++corner) {
        result.Enclose(transform.TransformPoint({(corner & 1U) ? box.GetMax().x : box.GetMin().x,
                                                 (corner & 2U) ? box.GetMax().y : box.GetMin().y,
                                                 (corner & 4U) ? box.GetMax().z : box.GetMin().z}));
    }
    return result;
}

bool IsFlattening(const dg::DMat44& transform) noexcept
{
    constexpr double kSmallestVolume = 1e-9; // of a box whose sides have length 1
    const auto column = [&transform](int i) {
        return dg::DVec3{transform.Get(0, i), transform.Get(1, i), transform.Get(2, i)}.Normalized();
    };
    return !(std::fabs(column(0).Cross(column(1)).Dot(column(2))) > kSmallestVolume);
}

/// Why nothing can be drawn there; empty when it can.
std::string_view FindProblem(const luk::ShapeInstance& instance, const SceneShape& shape)
{
    const auto& entries = shape.transform.GetEntries();
    if (!instance.GetLocation().HasPosition()) {
        return "it has no position";
    }
    if (!std::all_of(entries.begin(), entries.end(), [](double entry) { return std::isfinite(entry); })) {
        return "its placement is not a number";
    }
    if (IsFlattening(shape.transform)) {
        return "its placement flattens it";
    }
    const auto isNear = [](const dg::DPoint3D& corner) {
        return std::max({std::fabs(corner.x), std::fabs(corner.y), std::fabs(corner.z)}) <= kFarthestCoordinate;
    };
    return isNear(shape.box.GetMin()) && isNear(shape.box.GetMax()) ? "" : "it is too far away";
}

/// Most symbols have marked what they show as their own. Of a host that has no such symbols the id says it.
bool IsSymbol(const luk::ShapeInstance& instance)
{
    const std::string_view path = instance.GetInstance()->GetIdPath().GetText();
    const std::string_view prefix = luk::Instance::s_content_symbolPrefix.GetText();
    return instance.IsOfSymbol() || (path.size() > prefix.size() && path.substr(1, prefix.size()) == prefix);
}

class Collector
{
public:
    Collector(const luk::ShapeScene& scene, SceneGeometry& geometry) : m_scene(scene), m_geometry(geometry) {}

    void Collect()
    {
        std::vector<du::SmartPtr<luk::Instance>> open;
        if (m_scene.GetTree() && m_scene.GetTree()->GetRoot()) {
            open.push_back(m_scene.GetTree()->GetRoot());
        }
        while (!open.empty()) {
            const du::SmartPtr<luk::Instance> instance = open.back();
            open.pop_back();
            if (const auto shapeInstance = m_scene.GetShapeInstance(instance)) {
                Add(*shapeInstance);
            }
            const auto children = instance->GetChildren();
            open.insert(open.end(), children.rbegin(), children.rend());
        }
    }

private:
    void Add(const luk::ShapeInstance& instance)
    {
        if (!instance.GetShape() || !instance.IsVisible()) {
            return;
        }
        if (!instance.GetShape()->IsLoaded()) {
            Report(instance, "its shape is not loaded");
            return;
        }
        SceneShape shape;
        shape.mesh = FindMesh(instance.GetShape()->GetMesh());
        if (m_geometry.meshes[shape.mesh].box.IsEmpty()) {
            return;
        }
        TakeLook(instance, shape);
        TakePlace(instance, shape);
        if (const std::string_view problem = FindProblem(instance, shape); !problem.empty()) {
            Report(instance, problem);
        } else if (shape.opacity > 0.0F) {
            m_geometry.box.Enclose(shape.box);
            m_geometry.shapes.push_back(std::move(shape));
        }
    }

    void TakeLook(const luk::ShapeInstance& instance, SceneShape& shape) const
    {
        shape.opacity = instance.GetVisibilityFraction();
        shape.replacesOpacity = instance.HasTransparencyOverride();
        if (shape.replacesOpacity) {
            shape.opacity *= 1.0F - instance.GetTransparencyOverride();
        }
        const auto& appearance = instance.GetAppearanceOverride();
        shape.appearance = appearance && appearance->GetMaterial() ? appearance : nullptr;
        const bool isOpaque = shape.replacesOpacity ? true
                              : shape.appearance    ? shape.appearance->GetMaterial()->GetDiffuse().alpha >= kOpaque
                                                    : m_geometry.meshes[shape.mesh].isOpaque;
        shape.isOpaque = isOpaque && shape.opacity >= kOpaque;
    }

    void TakePlace(const luk::ShapeInstance& instance, SceneShape& shape) const
    {
        shape.transform = instance.GetLocation().GetXform();
        shape.box = Transformed(m_geometry.meshes[shape.mesh].box, shape.transform);
        shape.idPath = instance.GetInstance()->GetIdPath();
        shape.kind = IsSymbol(instance) ? SceneShape::Kind::Symbol : SceneShape::Kind::Product;
        if (const auto node = instance.GetInstance()->GetNode()) {
            shape.name = node->GetName();
        }
    }

    std::size_t FindMesh(const du::SmartPtr<luk::Mesh>& mesh)
    {
        const auto [found, isNew] = m_meshes.try_emplace(mesh.get(), m_geometry.meshes.size());
        if (isNew) {
            m_geometry.meshes.push_back(MakeMesh(mesh));
        }
        return found->second;
    }

    void Report(const luk::ShapeInstance& instance, std::string_view problem)
    {
        m_geometry.problems.push_back(
            std::string(instance.GetInstance()->GetIdPath().GetText()).append(": ").append(problem));
    }

    const luk::ShapeScene& m_scene;
    SceneGeometry& m_geometry;
    std::unordered_map<const luk::Mesh*, std::size_t> m_meshes;
};

} // namespace

UnitFrame UnitFrame::Around(const dg::DBox& box) noexcept
{
    if (box.IsEmpty()) {
        return {};
    }
    const dg::DVec3 size = box.GetSize();
    const double halfSide = 0.5 * std::max({size.x, size.y, size.z});
    if (!(halfSide > 0.0)) {
        return {box.GetCenter(), 1.0};
    }
    int exponent = 0;
    std::frexp(halfSide, &exponent);
    return {box.GetCenter(), std::ldexp(1.0, -exponent)};
}

dg::DMat44 UnitFrame::GetTransform() const noexcept
{
    dg::DMat44 transform;
    const dg::DVec3 shift = (center - dg::DPoint3D::ORIGIN) * -scale;
    for (int axis = 0; axis < 3; ++axis) {
        transform.Set(axis, axis, scale);
        transform.Set(axis, 3, shift.Get(axis));
    }
    return transform;
}

dg::DBox DrawableBox(const luk::Mesh& mesh) noexcept
{
    dg::DBox box;
    for (const std::uint32_t index : mesh.GetIndices()) {
        if (index < mesh.GetPositions().size() && IsDrawable(mesh.GetPositions()[index])) {
            box.Enclose(ToPoint(mesh.GetPositions()[index]));
        }
    }
    return box;
}

SceneGeometry SceneGeometry::Collect(const luk::ShapeScene& scene)
{
    SceneGeometry geometry;
    Collector(scene, geometry).Collect();
    geometry.frame = UnitFrame::Around(geometry.box);
    return geometry;
}

SceneGeometry SceneGeometry::Of(const du::SmartPtr<luk::Mesh>& mesh)
{
    SceneGeometry geometry;
    geometry.meshes.push_back(MakeMesh(mesh));
    geometry.box = geometry.meshes.front().box;
    if (!geometry.box.IsEmpty()) {
        SceneShape& shape = geometry.shapes.emplace_back();
        shape.box = geometry.box;
        shape.isOpaque = geometry.meshes.front().isOpaque;
    }
    geometry.frame = UnitFrame::Around(geometry.box);
    return geometry;
}

Surface SceneGeometry::SurfaceOf(const SceneShape& shape, std::size_t part) const noexcept
{
    Surface surface;
    if (shape.appearance) {
        const lug::Material& material = *shape.appearance->GetMaterial();
        surface = {material.GetDiffuse(), material.GetEmissive(), material.GetSpecular(), material.GetShininess()};
    } else {
        const auto& parts = meshes[shape.mesh].mesh->GetParts();
        surface.color = part < parts.size() ? parts[part].color : luk::Mesh::Part().color;
    }
    surface.color.alpha = shape.replacesOpacity ? shape.opacity : surface.color.alpha * shape.opacity;
    return surface;
}

} // namespace luhost::render
