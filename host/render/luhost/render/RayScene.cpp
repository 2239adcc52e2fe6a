#include <luhost/render/RayScene.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <embree3/rtcore.h>
#include <limits>

namespace luhost::render
{

namespace
{

struct Releaser {
    void operator()(RTCDevice device) const noexcept { rtcReleaseDevice(device); }
    void operator()(RTCScene scene) const noexcept { rtcReleaseScene(scene); }
    void operator()(RTCGeometry geometry) const noexcept { rtcReleaseGeometry(geometry); }
};
template <class T>
using Owned = std::unique_ptr<std::remove_pointer_t<T>, Releaser>;

constexpr RTCSceneFlags kSceneFlags = RTC_SCENE_FLAG_ROBUST;

/// Single precision cannot invert a smaller one.
constexpr double kSmallestShape = 1.0e-9;

RTCIntersectContext MakeContext(RTCIntersectContextFlags flags) noexcept
{
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    context.flags = flags;
    return context;
}

/// Where single precision ends: from farther away nothing is met, and embree refuses such rays by ending the program.
constexpr float kFarthestOrigin = 1.0e15F;

/// Whether a ray is one: each of its numbers is a number, and none too large.
bool IsCastable(const RayPacket& rays, unsigned lane) noexcept
{
    const auto isWithin = [lane](const RayPacket::Lanes& lanes, float most) { return std::fabs(lanes[lane]) <= most; };
    constexpr float kLongest = 2.0F;
    return isWithin(rays.originX, kFarthestOrigin) && isWithin(rays.originY, kFarthestOrigin) &&
           isWithin(rays.originZ, kFarthestOrigin) && isWithin(rays.directionX, kLongest) &&
           isWithin(rays.directionY, kLongest) && isWithin(rays.directionZ, kLongest) && rays.nearest[lane] >= 0.0F &&
           rays.farthest[lane] >= 0.0F;
}

void TakeRays(const RayPacket& rays, RTCRay16& taken, std::array<int, RayPacket::kWidth>& valid) noexcept
{
    const auto copy = [](const RayPacket::Lanes& from, float* to) { std::copy(from.begin(), from.end(), to); };
    copy(rays.originX, taken.org_x);
    copy(rays.originY, taken.org_y);
    copy(rays.originZ, taken.org_z);
    copy(rays.directionX, taken.dir_x);
    copy(rays.directionY, taken.dir_y);
    copy(rays.directionZ, taken.dir_z);
    copy(rays.nearest, taken.tnear);
    copy(rays.farthest, taken.tfar);
    for (unsigned lane = 0; lane < RayPacket::kWidth; ++lane) {
        taken.time[lane] = 0.0F;
        taken.mask[lane] = ~0U;
        taken.id[lane] = lane;
        taken.flags[lane] = 0;
        valid[lane] = lane < rays.count && IsCastable(rays, lane) ? -1 : 0;
        if (valid[lane] == 0) {
            // Processors without packets of this width go by the numbers of a lane alone: nothing is on the way of this ray.
            taken.org_x[lane] = taken.org_y[lane] = taken.org_z[lane] = 0.0F;
            taken.dir_x[lane] = taken.dir_y[lane] = 0.0F;
            taken.dir_z[lane] = 1.0F;
            taken.tnear[lane] = 0.0F;
            taken.tfar[lane] = -std::numeric_limits<float>::infinity();
        }
    }
}

void IntersectIn(RTCScene scene, RTCIntersectContextFlags flags, const RayPacket& rays, HitPacket& hits) noexcept
{
    RTCRayHit16 packet;
    alignas(64) std::array<int, RayPacket::kWidth> valid;
    TakeRays(rays, packet.ray, valid);
    std::fill(std::begin(packet.hit.geomID), std::end(packet.hit.geomID), RTC_INVALID_GEOMETRY_ID);
    std::fill(std::begin(packet.hit.instID[0]), std::end(packet.hit.instID[0]), RTC_INVALID_GEOMETRY_ID);
    RTCIntersectContext context = MakeContext(flags);
    rtcIntersect16(valid.data(), scene, &context, &packet);
    for (unsigned lane = 0; lane < RayPacket::kWidth; ++lane) {
        hits.distance[lane] = packet.ray.tfar[lane];
        hits.u[lane] = packet.hit.u[lane];
        hits.v[lane] = packet.hit.v[lane];
        hits.triangle[lane] = packet.hit.primID[lane];
        hits.shape[lane] = packet.hit.geomID[lane] == RTC_INVALID_GEOMETRY_ID || lane >= rays.count
                               ? HitPacket::kNothing
                               : packet.hit.instID[0][lane];
    }
}

bool IsLargeEnough(const dg::DMat44& toUnit) noexcept
{
    for (int column = 0; column < 3; ++column) {
        const dg::DVec3 axis{toUnit.Get(0, column), toUnit.Get(1, column), toUnit.Get(2, column)};
        if (!(axis.Length() > kSmallestShape)) {
            return false;
        }
    }
    return true;
}

} // namespace

class RayScene::Device
{
public:
    bool Open(const Limits& limits, bool isSameEverywhere, const Workers& workers)
    {
        std::string config = "threads=" + std::to_string(workers.GetThreadCount());
        if (isSameEverywhere) {
            // What later processors add joins multiplications and additions, which rounds otherwise.
            config += ",max_isa=sse4.2";
        }
        m_bytesLeft = static_cast<std::ptrdiff_t>(
            std::min<std::size_t>(limits.bytes, std::numeric_limits<std::ptrdiff_t>::max()));
        m_stop = workers.stop;
        m_device.reset(rtcNewDevice(config.c_str()));
        if (m_device) {
            rtcSetDeviceMemoryMonitorFunction(m_device.get(), MayAllocate, this);
        }
        return m_device != nullptr;
    }

    bool AddMeshes(const std::vector<std::unique_ptr<WeldedMesh>>& meshes, const Workers& workers)
    {
        m_meshes.resize(meshes.size());
        const Outcome outcome = RunParallel(meshes.size(), workers, [&](std::size_t i) {
            if (m_error == RTC_ERROR_NONE) {
                m_meshes[i] = MakeScene();
                AddTriangles(m_meshes[i].get(), *meshes[i]);
                rtcCommitScene(m_meshes[i].get());
                TakeError();
            }
        });
        if (outcome != Outcome::Done) {
            m_error = outcome == Outcome::Stopped ? RTC_ERROR_CANCELLED : RTC_ERROR_OUT_OF_MEMORY;
        }
        return m_error == RTC_ERROR_NONE;
    }

    bool AddShapes(const std::vector<Shape>& shapes)
    {
        m_all = AddInstances(shapes, false);
        const bool isAllOpaque = std::all_of(shapes.begin(), shapes.end(), [](const Shape& s) { return s.isOpaque; });
        if (!isAllOpaque) {
            m_opaque = AddInstances(shapes, true);
        }
        TakeError();
        return m_error == RTC_ERROR_NONE;
    }

    /// Why something failed.
    std::string GetProblem() const
    {
        switch (m_error) {
        case RTC_ERROR_OUT_OF_MEMORY:
            return "the scene needs too much memory";
        case RTC_ERROR_CANCELLED:
            return "stopped";
        default:
            return "rays cannot be cast on this machine";
        }
    }

    RTCScene GetAll() const noexcept { return m_all.get(); }
    RTCScene GetOpaque() const noexcept { return m_opaque ? m_opaque.get() : m_all.get(); }

private:
    static bool MayAllocate(void* self, ssize_t bytes, bool) noexcept
    {
        auto& left = static_cast<Device*>(self)->m_bytesLeft;
        return left.fetch_sub(bytes, std::memory_order_relaxed) >= bytes;
    }

    static bool MayGoOn(void* self, double) noexcept
    {
        const std::atomic<bool>* const stop = static_cast<Device*>(self)->m_stop;
        return !stop || !stop->load(std::memory_order_relaxed);
    }

    /// Each thread has its own.
    void TakeError() noexcept
    {
        if (const RTCError error = rtcGetDeviceError(m_device.get()); error != RTC_ERROR_NONE) {
            m_error = error;
        }
    }

    Owned<RTCScene> MakeScene()
    {
        Owned<RTCScene> scene(rtcNewScene(m_device.get()));
        rtcSetSceneFlags(scene.get(), kSceneFlags);
        rtcSetSceneProgressMonitorFunction(scene.get(), MayGoOn, this);
        return scene;
    }

    void AddTriangles(RTCScene scene, const WeldedMesh& mesh)
    {
        if (mesh.triangles.empty()) {
            return;
        }
        const Owned<RTCGeometry> geometry(rtcNewGeometry(m_device.get(), RTC_GEOMETRY_TYPE_TRIANGLE));
        rtcSetSharedGeometryBuffer(geometry.get(), RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, mesh.positions.data(),
                                   0, sizeof(dg::FVec3), mesh.GetVertexCount());
        rtcSetSharedGeometryBuffer(geometry.get(), RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, mesh.triangles.data(), 0,
                                   sizeof(WeldedMesh::Triangle), mesh.triangles.size());
        rtcCommitGeometry(geometry.get());
        rtcAttachGeometry(scene, geometry.get());
    }

    Owned<RTCScene> AddInstances(const std::vector<Shape>& shapes, bool onlyOpaque)
    {
        Owned<RTCScene> scene = MakeScene();
        for (std::size_t i = 0; i < shapes.size(); ++i) {
            if ((shapes[i].isOpaque || !onlyOpaque) && IsLargeEnough(shapes[i].toUnit)) {
                AddInstance(scene.get(), shapes[i], static_cast<unsigned>(i));
            }
        }
        rtcCommitScene(scene.get());
        return scene;
    }

    void AddInstance(RTCScene scene, const Shape& shape, unsigned number)
    {
        const Owned<RTCGeometry> instance(rtcNewGeometry(m_device.get(), RTC_GEOMETRY_TYPE_INSTANCE));
        std::array<float, 12> rows;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            rows[i] = static_cast<float>(shape.toUnit.GetEntries()[i]);
        }
        rtcSetGeometryInstancedScene(instance.get(), m_meshes[shape.mesh].get());
        rtcSetGeometryTransform(instance.get(), 0, RTC_FORMAT_FLOAT3X4_ROW_MAJOR, rows.data());
        rtcCommitGeometry(instance.get());
        rtcAttachGeometryByID(scene, instance.get(), number);
    }

    std::atomic<std::ptrdiff_t> m_bytesLeft = 0;
    const std::atomic<bool>* m_stop = nullptr;
    std::atomic<RTCError> m_error = RTC_ERROR_NONE;
    Owned<RTCDevice> m_device;
    std::vector<Owned<RTCScene>> m_meshes;
    Owned<RTCScene> m_all;
    Owned<RTCScene> m_opaque;
};

RayScene::RayScene() : m_device(std::make_unique<Device>()) {}
RayScene::~RayScene() = default;

std::unique_ptr<RayScene> RayScene::Build(const std::vector<std::unique_ptr<WeldedMesh>>& meshes,
                                          const std::vector<Shape>& shapes, const Limits& limits, bool isSameEverywhere,
                                          const Workers& workers, std::string& error)
{
    std::size_t triangles = 0;
    for (const auto& mesh : meshes) {
        triangles += mesh->triangles.size();
    }
    if (shapes.size() > limits.shapes || triangles > limits.triangles) {
        error = "the scene has too many parts or triangles";
        return nullptr;
    }
    std::unique_ptr<RayScene> scene(new RayScene);
    Device& device = *scene->m_device;
    if (!device.Open(limits, isSameEverywhere, workers) || !device.AddMeshes(meshes, workers) ||
        !device.AddShapes(shapes)) {
        error = device.GetProblem();
        return nullptr;
    }
    return scene;
}

void RayScene::Intersect(const RayPacket& rays, HitPacket& hits) const noexcept
{
    const bool isWhole = rays.count == RayPacket::kWidth;
    IntersectIn(m_device->GetAll(),
                isWhole ? RTC_INTERSECT_CONTEXT_FLAG_COHERENT : RTC_INTERSECT_CONTEXT_FLAG_INCOHERENT, rays, hits);
}

void RayScene::IntersectOpaque(const RayPacket& rays, HitPacket& hits) const noexcept
{
    IntersectIn(m_device->GetOpaque(), RTC_INTERSECT_CONTEXT_FLAG_INCOHERENT, rays, hits);
}

std::uint32_t RayScene::FindOccluded(const RayPacket& rays) const noexcept
{
    RTCRay16 packet;
    alignas(64) std::array<int, RayPacket::kWidth> valid;
    TakeRays(rays, packet, valid);
    // Packets taken as coherent may never come back from embree when it only asks whether they are stopped.
    RTCIntersectContext context = MakeContext(RTC_INTERSECT_CONTEXT_FLAG_INCOHERENT);
    rtcOccluded16(valid.data(), m_device->GetOpaque(), &context, &packet);
    std::uint32_t occluded = 0;
    for (unsigned lane = 0; lane < rays.count; ++lane) {
        occluded |= valid[lane] != 0 && packet.tfar[lane] < 0.0F ? 1U << lane : 0U;
    }
    return occluded;
}

} // namespace luhost::render
