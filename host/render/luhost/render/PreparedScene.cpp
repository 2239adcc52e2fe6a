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
        const WeldedMesh& welded = *scene.welded[i];
        scene.meshes[i].edges = std::make_unique<MeshEdges>(welded, mesh, creaseAngle);
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
        scene->rays = RayScene::Build(scene->welded, scene->shapes, options.limits, workers, error);
        return scene->rays ? std::move(scene) : nullptr;
    } catch (const std::bad_alloc&) {
        error = ToText(Outcome::NoMemory);
        return nullptr;
    }
}

} // namespace luhost::render
