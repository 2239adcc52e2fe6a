#include <luhost/render/DrawingOutput.h>
#include <luhost/render/PreparedScene.h>
#include <luhost/render/Raster.h>
#include <luhost/render/SceneDrawing.h>
#include <luhost/render/ViewCameras.h>
#include <luk/ComponentNode.h>
#include <luk/ShapeScene.h>
#include <luk/Structure.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <cmath>
#include <embree3/rtcore.h>
#include <fstream>
#include <memory>
#include <numbers>
#include <string>
#include <thread>
#include <vector>

namespace
{

using namespace luhost::render;

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr unsigned kThreads = 2;
constexpr std::size_t kTrianglesOfPart = 5000;

/// A closed body with a wavy surface and ribs, another one for each number.
du::SmartPtr<luk::Mesh> MakePart(std::size_t number)
{
    constexpr std::uint32_t kSide = 50;
    std::vector<dg::FVec3> positions;
    std::vector<std::uint32_t> indices;
    const double waves = static_cast<double>(number % 7 + 2);
    for (std::uint32_t i = 0; i <= kSide; ++i) {
        for (std::uint32_t j = 0; j <= kSide; ++j) {
            const double latitude = std::numbers::pi * i / kSide;
            const double longitude = 2.0 * std::numbers::pi * j / kSide;
            const double radius =
                0.45 + 0.03 * std::sin(waves * longitude) * std::sin(latitude) + (i % 10 < 5 ? 0.03 : 0.0);
            positions.emplace_back(static_cast<float>(radius * std::sin(latitude) * std::cos(longitude)),
                                   static_cast<float>(radius * std::cos(latitude)),
                                   static_cast<float>(-radius * std::sin(latitude) * std::sin(longitude)));
            if (i < kSide && j < kSide) {
                const std::uint32_t corner = i * (kSide + 1) + j;
                const std::uint32_t below = corner + kSide + 1;
                indices.insert(indices.end(), {corner, below, corner + 1, corner + 1, below, below + 1});
            }
        }
    }
    const float hue = static_cast<float>(number % 10) / 10.0F;
    return du::MakeCounted<luk::Mesh>(
        std::move(positions), std::move(indices),
        std::vector<luk::Mesh::Part>{{0, kTrianglesOfPart, {0.4F + 0.5F * hue, 0.6F, 0.9F - 0.5F * hue, 1.0F}}});
}

/// As many different parts, side by side, as have so many triangles together.
du::SmartPtr<luk::ShapeScene> MakeProduct(std::size_t triangles)
{
    const auto structure = du::MakeCounted<luk::Structure>();
    structure->SetRoot(structure->CreateComponentNode(du::Symbol("Product")));
    const std::size_t count = triangles / kTrianglesOfPart;
    const auto columns = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(count) * 1.8)));
    for (std::size_t i = 0; i < count; ++i) {
        const auto node = structure->CreateComponentNode(du::Symbol(std::string("Part ").append(std::to_string(i))));
        node->SetShapeSource(luk::ShapeSource::CreateFromMesh(MakePart(i)));
        du::SmartPtr<luk::ComponentInstance> use;
        structure->GetRoot()->AddChild(node, du::Symbol(std::string("part-").append(std::to_string(i))), use);
        use->SetLocation({dg::FMat33::IDENTITY,
                          {static_cast<double>(i % columns), static_cast<double>(i / columns), 0.2 * (i % 3 == 0)}});
    }
    return du::MakeCounted<luk::ShapeScene>(du::MakeCounted<luk::Tree>(structure));
}

dg::Camera3D MakeCamera(const SceneGeometry& geometry)
{
    return MakeViewCamera(StandardView::Front, UpAxis::Y, geometry.box, kWidth, kHeight, 0.02);
}

std::unique_ptr<PreparedScene> Prepare(const luk::ShapeScene& scene)
{
    std::string error;
    return PreparedScene::Prepare(SceneGeometry::Collect(scene), {}, {kThreads, nullptr}, error);
}

double PeakMegabytes()
{
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word && word != "VmHWM:") {
    }
    double kilobytes = 0.0;
    status >> kilobytes;
    return kilobytes / 1024.0;
}

void AddSizes(benchmark::internal::Benchmark* run)
{
    run->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->UseRealTime();
    run->MeasureProcessCPUTime();
}

std::size_t Count(const benchmark::State& state) { return static_cast<std::size_t>(state.range(0)); }

bool Draw(const PreparedScene& scene, SceneDrawingOptions::Style style, Drawing& drawing)
{
    SceneDrawingOptions options;
    options.style = style;
    std::string error;
    return DrawScene(scene, MakeCamera(scene.geometry), options, {kThreads, nullptr}, drawing, error);
}

/// All of it: from the scene to the pixels with lines, without the writing of a file.
void DrawPicture(benchmark::State& state)
{
    const auto product = MakeProduct(Count(state));
    for (auto _ : state) {
        const auto scene = Prepare(*product);
        Drawing drawing;
        if (!scene || !Draw(*scene, SceneDrawingOptions::Style::Both, drawing)) {
            state.SkipWithError("there is no picture");
            break;
        }
        Raster pixels;
        std::string error;
        benchmark::DoNotOptimize(DrawPixels(drawing, 0, 0, pixels, error));
    }
    state.counters["peak_mb"] = PeakMegabytes();
}
BENCHMARK(DrawPicture)->Apply(AddSizes);

void PrepareAlone(benchmark::State& state)
{
    const auto product = MakeProduct(Count(state));
    for (auto _ : state) {
        benchmark::DoNotOptimize(Prepare(*product));
    }
}
BENCHMARK(PrepareAlone)->Apply(AddSizes);

template <SceneDrawingOptions::Style kStyle>
void DrawAlone(benchmark::State& state)
{
    const auto scene = Prepare(*MakeProduct(Count(state)));
    for (auto _ : state) {
        Drawing drawing;
        benchmark::DoNotOptimize(Draw(*scene, kStyle, drawing));
    }
}
BENCHMARK_TEMPLATE(DrawAlone, SceneDrawingOptions::Style::Shaded)->Apply(AddSizes);
BENCHMARK_TEMPLATE(DrawAlone, SceneDrawingOptions::Style::Lines)->Apply(AddSizes);

void WritePictureFile(benchmark::State& state)
{
    Drawing drawing;
    Draw(*Prepare(*MakeProduct(Count(state))), SceneDrawingOptions::Style::Both, drawing);
    std::string png;
    std::string error;
    for (auto _ : state) {
        benchmark::DoNotOptimize(WritePng(drawing, 0, 0, png, error));
    }
}
BENCHMARK(WritePictureFile)->Apply(AddSizes);

/// The same scene in embree alone.
class BareScene
{
public:
    BareScene(const SceneGeometry& geometry) : m_device(rtcNewDevice("threads=2")), m_scene(rtcNewScene(m_device))
    {
        for (const SceneShape& shape : geometry.shapes) {
            const luk::Mesh& mesh = *geometry.meshes[shape.mesh].mesh;
            RTCScene part = rtcNewScene(m_device);
            Attach(part, mesh);
            rtcCommitScene(part);
            RTCGeometry instance = rtcNewGeometry(m_device, RTC_GEOMETRY_TYPE_INSTANCE);
            rtcSetGeometryInstancedScene(instance, part);
            const dg::DPoint3D place = shape.transform.TransformPoint(dg::DPoint3D::ORIGIN);
            const float columns[12] = {1.0F,
                                       0.0F,
                                       0.0F,
                                       0.0F,
                                       1.0F,
                                       0.0F,
                                       0.0F,
                                       0.0F,
                                       1.0F,
                                       static_cast<float>(place.x),
                                       static_cast<float>(place.y),
                                       static_cast<float>(place.z)};
            rtcSetGeometryTransform(instance, 0, RTC_FORMAT_FLOAT3X4_COLUMN_MAJOR, columns);
            rtcCommitGeometry(instance);
            rtcAttachGeometry(m_scene, instance);
            rtcReleaseGeometry(instance);
            rtcReleaseScene(part);
        }
        rtcCommitScene(m_scene);
    }

    ~BareScene()
    {
        rtcReleaseScene(m_scene);
        rtcReleaseDevice(m_device);
    }
    BareScene(const BareScene&) = delete;
    BareScene& operator=(const BareScene&) = delete;

    /// Four rays a pixel from the front. @return how many met something
    std::size_t Cast(const dg::Camera3D& camera) const
    {
        std::atomic<int> nextRow = 0;
        std::atomic<std::size_t> hits = 0;
        const auto work = [&] {
            for (int row = nextRow.fetch_add(2); row < kHeight; row = nextRow.fetch_add(2)) {
                hits += CastRows(camera, row);
            }
        };
        std::thread other(work);
        work();
        other.join();
        return hits;
    }

private:
    void Attach(RTCScene scene, const luk::Mesh& mesh)
    {
        RTCGeometry geometry = rtcNewGeometry(m_device, RTC_GEOMETRY_TYPE_TRIANGLE);
        auto* const vertices = static_cast<float*>(rtcSetNewGeometryBuffer(
            geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, sizeof(dg::FVec3), mesh.GetPositions().size()));
        for (std::size_t i = 0; i < mesh.GetPositions().size(); ++i) {
            vertices[3 * i] = mesh.GetPositions()[i].x;
            vertices[3 * i + 1] = mesh.GetPositions()[i].y;
            vertices[3 * i + 2] = mesh.GetPositions()[i].z;
        }
        auto* const indices = static_cast<std::uint32_t*>(rtcSetNewGeometryBuffer(
            geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 3 * sizeof(std::uint32_t), mesh.GetTriangleCount()));
        std::copy(mesh.GetIndices().begin(), mesh.GetIndices().end(), indices);
        rtcCommitGeometry(geometry);
        rtcAttachGeometry(scene, geometry);
        rtcReleaseGeometry(geometry);
    }

    std::size_t CastRows(const dg::Camera3D& camera, int row) const
    {
        const double unitsPerPixel = camera.GetOrthographicWidth() / kWidth;
        const dg::DPoint3D eye = camera.GetLocation().GetPosition();
        std::size_t hits = 0;
        for (int column = 0; column < kWidth; column += 2) {
            RTCRayHit16 packet{};
            alignas(64) int valid[16];
            for (int lane = 0; lane < 16; ++lane) {
                valid[lane] = -1;
                const double x = column + lane / 4 % 2 + 0.25 + 0.5 * (lane % 2);
                const double y = row + lane / 8 + 0.25 + 0.5 * (lane / 2 % 2);
                packet.ray.org_x[lane] = static_cast<float>(eye.x + (x - 0.5 * kWidth) * unitsPerPixel);
                packet.ray.org_y[lane] = static_cast<float>(eye.y - (y - 0.5 * kHeight) * unitsPerPixel);
                packet.ray.org_z[lane] = static_cast<float>(eye.z);
                packet.ray.dir_z[lane] = -1.0F;
                packet.ray.tfar[lane] = 1e6F;
                packet.ray.mask[lane] = ~0U;
                packet.hit.geomID[lane] = RTC_INVALID_GEOMETRY_ID;
            }
            RTCIntersectContext context;
            rtcInitIntersectContext(&context);
            context.flags = RTC_INTERSECT_CONTEXT_FLAG_COHERENT;
            rtcIntersect16(valid, m_scene, &context, &packet);
            for (const unsigned id : packet.hit.geomID) {
                hits += id != RTC_INVALID_GEOMETRY_ID;
            }
        }
        return hits;
    }

    RTCDevice m_device;
    RTCScene m_scene;
};

void ReferenceBareBuild(benchmark::State& state)
{
    const SceneGeometry geometry = SceneGeometry::Collect(*MakeProduct(Count(state)));
    for (auto _ : state) {
        const BareScene bare(geometry);
    }
}
BENCHMARK(ReferenceBareBuild)->Apply(AddSizes);

void ReferenceBarePrimaryRays(benchmark::State& state)
{
    const SceneGeometry geometry = SceneGeometry::Collect(*MakeProduct(Count(state)));
    const BareScene bare(geometry);
    for (auto _ : state) {
        benchmark::DoNotOptimize(bare.Cast(MakeCamera(geometry)));
    }
}
BENCHMARK(ReferenceBarePrimaryRays)->Apply(AddSizes);

} // namespace
