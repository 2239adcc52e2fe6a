#include "Shapes.h"

#include <luk/ComponentNode.h>
#include <luk/Instance.h>
#include <luk/Shape.h>
#include <luk/ShapeScene.h>
#include <luk/Structure.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace test
{

namespace
{

constexpr float kTurn = 2.0F * std::numbers::pi_v<float>;

} // namespace

MeshPtr MakeMesh(std::vector<dg::FVec3> positions, std::vector<std::uint32_t> indices, const dg::Color& color)
{
    const auto count = static_cast<std::uint32_t>(indices.size() / 3);
    return du::MakeCounted<luk::Mesh>(std::move(positions), std::move(indices),
                                      std::vector<luk::Mesh::Part>{{0, count, color}});
}

MeshPtr MakeBlock(float x, float y, float z, const dg::Color& color)
{
    std::vector<dg::FVec3> positions;
    for (unsigned i = 0; i < 8; ++i) {
        positions.emplace_back((i & 1U) ? x / 2 : -x / 2, (i & 2U) ? y / 2 : -y / 2, (i & 4U) ? z / 2 : -z / 2);
    }
    return MakeMesh(positions, {0, 2, 1, 1, 2, 3, 4, 5, 6, 5, 7, 6, 0, 1, 4, 1, 5, 4,
                                2, 6, 3, 3, 6, 7, 0, 4, 2, 2, 4, 6, 1, 3, 5, 3, 7, 5},
                    color);
}

MeshPtr Split(const luk::Mesh& mesh)
{
    std::vector<dg::FVec3> positions;
    std::vector<std::uint32_t> indices;
    for (const std::uint32_t index : mesh.GetIndices()) {
        indices.push_back(static_cast<std::uint32_t>(positions.size()));
        positions.push_back(mesh.GetPositions()[index]);
    }
    return du::MakeCounted<luk::Mesh>(positions, indices, mesh.GetParts());
}

MeshPtr MakeSurface(unsigned columns, unsigned rows, const std::function<dg::FVec3(float, float)>& placeOf,
                    const dg::Color& color)
{
    std::vector<dg::FVec3> positions;
    std::vector<std::uint32_t> indices;
    for (unsigned row = 0; row <= rows; ++row) {
        for (unsigned column = 0; column <= columns; ++column) {
            positions.push_back(placeOf(static_cast<float>(column) / static_cast<float>(columns),
                                        static_cast<float>(row) / static_cast<float>(rows)));
            if (row < rows && column < columns) {
                const unsigned corner = row * (columns + 1) + column;
                const unsigned above = corner + columns + 1;
                indices.insert(indices.end(), {corner, corner + 1, above, corner + 1, above + 1, above});
            }
        }
    }
    return MakeMesh(positions, indices, color);
}

MeshPtr MakeSphere(unsigned rows, float radius, const dg::Color& color)
{
    return MakeSurface(
        2 * rows, rows,
        [radius](float u, float v) {
            const float ring = radius * std::sin(v * kTurn / 2);
            return dg::FVec3{ring * std::cos(u * kTurn), -radius * std::cos(v * kTurn / 2),
                             -ring * std::sin(u * kTurn)};
        },
        color);
}

MeshPtr MakeCylinder(unsigned sides, float radius, float height, const dg::Color& color)
{
    return MakeSurface(
        sides, 3,
        [radius, height](float u, float v) {
            const float ring = v > 0.1F && v < 0.9F ? radius : 0.0F;
            return dg::FVec3{ring * std::cos(u * kTurn), v < 0.5F ? -height / 2 : height / 2,
                             -ring * std::sin(u * kTurn)};
        },
        color);
}

MeshPtr MakeTorus(unsigned rows, float radius, float thickness, const dg::Color& color)
{
    return MakeSurface(
        2 * rows, rows,
        [radius, thickness](float u, float v) {
            const float ring = radius + thickness * std::cos(v * kTurn);
            return dg::FVec3{ring * std::cos(u * kTurn), thickness * std::sin(v * kTurn), -ring * std::sin(u * kTurn)};
        },
        color);
}

dg::Location At(double x, double y, double z) { return {dg::FMat33::IDENTITY, {x, y, z}}; }

du::SmartPtr<luk::ShapeScene> MakeScene(const std::vector<Part>& parts)
{
    const auto structure = du::MakeCounted<luk::Structure>();
    structure->SetRoot(structure->CreateComponentNode(du::Symbol("Product")));
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto node = structure->CreateComponentNode(du::Symbol(std::string("Part ").append(std::to_string(i))));
        node->SetShapeSource(parts[i].mesh ? luk::ShapeSource::CreateFromMesh(parts[i].mesh) : nullptr);
        du::SmartPtr<luk::ComponentInstance> use;
        const std::string id = parts[i].id.empty() ? std::string("p").append(std::to_string(i)) : parts[i].id;
        EXPECT_TRUE(structure->GetRoot()->AddChild(node, du::Symbol(id), use));
        use->SetLocation(parts[i].location);
    }
    auto scene = du::MakeCounted<luk::ShapeScene>(du::MakeCounted<luk::Tree>(structure));
    const auto children = scene->GetTree()->GetRoot()->GetChildren();
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (parts[i].change) {
            parts[i].change(*scene->GetShapeInstance(children[i]));
        }
    }
    return scene;
}

std::unique_ptr<luhost::render::PreparedScene> Prepare(const std::vector<Part>& parts, unsigned threads)
{
    using namespace luhost::render;
    std::string error;
    PreparedScene::Options options;
    options.isSameEverywhere = true;
    auto prepared =
        PreparedScene::Prepare(SceneGeometry::Collect(*MakeScene(parts)), options, {threads, nullptr}, error);
    EXPECT_TRUE(prepared) << error;
    return prepared;
}

dg::Camera3D CameraOf(const luhost::render::PreparedScene& scene, luhost::render::StandardView view, int width,
                      int height)
{
    return luhost::render::MakeViewCamera(view, luhost::render::UpAxis::Y, scene.geometry.box, width, height, 0.1);
}

luhost::render::Drawing DrawPicture(const luhost::render::PreparedScene& scene, const dg::Camera3D& camera,
                                    luhost::render::SceneDrawingOptions::Style style, bool showsHiddenLines,
                                    unsigned threads)
{
    luhost::render::SceneDrawingOptions options;
    options.style = style;
    options.showsHiddenLines = showsHiddenLines;
    luhost::render::Drawing drawing;
    std::string error;
    EXPECT_TRUE(luhost::render::DrawScene(scene, camera, options, {threads, nullptr}, drawing, error)) << error;
    return drawing;
}

} // namespace test
