#pragma once

#include <dg/Location.h>
#include <luhost/render/PreparedScene.h>
#include <luhost/render/SceneDrawing.h>
#include <luhost/render/ViewCameras.h>
#include <luk/Mesh.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace luk
{
class ShapeInstance;
class ShapeScene;
} // namespace luk

namespace test
{

using MeshPtr = du::SmartPtr<luk::Mesh>;

MeshPtr MakeMesh(std::vector<dg::FVec3> positions, std::vector<std::uint32_t> indices,
                 const dg::Color& color = {0.72F, 0.74F, 0.78F, 1.0F});
/// Around the origin, 12 triangles over 8 vertices; normals outwards, as with all the bodies here.
MeshPtr MakeBlock(float x, float y, float z, const dg::Color& color = {0.72F, 0.74F, 0.78F, 1.0F});
/// Every triangle with three vertices of its own, as files with normals have them.
MeshPtr Split(const luk::Mesh& mesh);
/// Over a grid that bends: place of (u, v), both from 0 to 1. Normals along du x dv.
MeshPtr MakeSurface(unsigned columns, unsigned rows, const std::function<dg::FVec3(float, float)>& placeOf,
                    const dg::Color& color = {0.72F, 0.74F, 0.78F, 1.0F});
MeshPtr MakeSphere(unsigned rows, float radius = 1.0F, const dg::Color& color = {0.72F, 0.74F, 0.78F, 1.0F});
/// Around the y axis, with lids.
MeshPtr MakeCylinder(unsigned sides, float radius, float height, const dg::Color& color = {0.72F, 0.74F, 0.78F, 1.0F});
MeshPtr MakeTorus(unsigned rows, float radius, float thickness, const dg::Color& color = {0.72F, 0.74F, 0.78F, 1.0F});

dg::Location At(double x, double y, double z);

/// One part of a scene.
struct Part {
    MeshPtr mesh = nullptr;
    dg::Location location = dg::Location::IDENTITY;
    std::function<void(luk::ShapeInstance&)> change = nullptr; ///< may be empty
    std::string id = {};                                       ///< "p0", "p1" and so on when it is empty
};

du::SmartPtr<luk::ShapeScene> MakeScene(const std::vector<Part>& parts);
std::unique_ptr<luhost::render::PreparedScene> Prepare(const std::vector<Part>& parts, unsigned threads = 2);

/// From one side, with a little room around.
dg::Camera3D CameraOf(const luhost::render::PreparedScene& scene, luhost::render::StandardView view, int width = 200,
                      int height = 200);
luhost::render::Drawing DrawPicture(const luhost::render::PreparedScene& scene, const dg::Camera3D& camera,
                                    luhost::render::SceneDrawingOptions::Style style, bool showsHiddenLines = false,
                                    unsigned threads = 2);

} // namespace test
