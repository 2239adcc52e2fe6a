#include <luhost/render/CrackClosing.h>
#include <luhost/render/PreparedScene.h>

#include <new>
#include <numbers>
#include <utility>

namespace luhost::render
{

namespace
{

Outcome PrepareMeshes(PreparedScene& scene, double creaseAngle, const Workers& workers)
{
    scene.welded.resize(scene.geometry.meshes.size());
    scene.meshes.resize(scene.geometry.meshes.size());
    return RunParallel(scene.meshes.size(), workers, [&scene, creaseAngle](std::size_t i) {
        const luk::Mesh& mesh = *scene.geometry.meshes[i].mesh;
        scene.welded[i] = std::make_unique<WeldedMesh>(mesh);
        WeldedMesh& welded = *scene.welded[i];
        scene.meshes[i].edges = std::make_unique<MeshEdges>(welded, mesh, creaseAngle);
        if (CloseCracks(welded, *scene.meshes[i].edges)) {
            scene.meshes[i].edges = std::make_unique<MeshEdges>(welded, mesh, creaseAngle);
        }
        scene.meshes[i].normals = std::make_unique<CornerNormals>(welded, *scene.meshes[i].edges, creaseAngle);
    });
}

void PlaceShapes(PreparedScene& scene)
{
    const dg::DMat44 sceneToUnit = scene.geometry.frame.GetTransform();
    scene.shapes.reserve(scene.geometry.shapes.size());
    for (const SceneShape& shape : scene.geometry.shapes) {
        scene.shapes.push_back(
            {shape.mesh, sceneToUnit * shape.transform * scene.welded[shape.mesh]->toMesh, shape.isOpaque});
    }
}

} // namespace

std::unique_ptr<PreparedScene> PreparedScene::Prepare(SceneGeometry geometry, const Options& options,
                                                      const Workers& workers, std::string& error)
{
    try {
        auto scene = std::make_unique<PreparedScene>();
        scene->geometry = std::move(geometry);
        const double creaseAngle = options.creaseAngleDegrees * std::numbers::pi / 180.0;
        if (const Outcome outcome = PrepareMeshes(*scene, creaseAngle, workers); outcome != Outcome::Done) {
            error = ToText(outcome);
            return nullptr;
        }
        PlaceShapes(*scene);
        scene->rays =
            RayScene::Build(scene->welded, scene->shapes, options.limits, options.isSameEverywhere, workers, error);
        return scene->rays ? std::move(scene) : nullptr;
    } catch (const std::bad_alloc&) {
        error = ToText(Outcome::NoMemory);
        return nullptr;
    }
}

std::array<dg::DVec3, 3> PreparedScene::CornersOf(std::size_t shape, std::size_t triangle) const noexcept
{
    const RayScene::Shape& placed = shapes[shape];
    const WeldedMesh& mesh = *welded[placed.mesh];
    std::array<dg::DVec3, 3> corners;
    for (std::size_t corner = 0; corner < 3; ++corner) {
        const dg::FVec3& p = mesh.positions[mesh.triangles[triangle][corner]];
        corners[corner] = placed.toUnit.TransformPoint(
                              {static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)}) -
                          dg::DPoint3D::ORIGIN;
    }
    return corners;
}

} // namespace luhost::render
