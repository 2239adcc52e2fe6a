#pragma once

#include <dg/DMat44.h>
#include <dg/DVec3.h>
#include <luhost/render/WeldedMesh.h>
#include <luhost/render/Workers.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace luhost::render
{

/// Rays that go through a scene together: the faster, the more alike they are. In the unit frame.
struct RayPacket {
    static constexpr unsigned kWidth = 16;
    using Lanes = std::array<float, kWidth>;

    /// @param direction of length 1
    void Set(unsigned lane, const dg::DVec3& origin, const dg::DVec3& direction, double farthestHit) noexcept
    {
        originX[lane] = static_cast<float>(origin.x);
        originY[lane] = static_cast<float>(origin.y);
        originZ[lane] = static_cast<float>(origin.z);
        directionX[lane] = static_cast<float>(direction.x);
        directionY[lane] = static_cast<float>(direction.y);
        directionZ[lane] = static_cast<float>(direction.z);
        nearest[lane] = 0.0F;
        farthest[lane] = static_cast<float>(farthestHit);
    }

    /// A ray of another packet, or of this one.
    void Take(unsigned lane, const RayPacket& other, unsigned otherLane) noexcept
    {
        for (const auto part :
             {&RayPacket::originX, &RayPacket::originY, &RayPacket::originZ, &RayPacket::directionX,
              &RayPacket::directionY, &RayPacket::directionZ, &RayPacket::nearest, &RayPacket::farthest}) {
            (this->*part)[lane] = (other.*part)[otherLane];
        }
    }

    alignas(64) Lanes originX;
    alignas(64) Lanes originY;
    alignas(64) Lanes originZ;
    alignas(64) Lanes directionX; ///< of length 1
    alignas(64) Lanes directionY;
    alignas(64) Lanes directionZ;
    alignas(64) Lanes nearest; ///< how far from the origin a hit is at least
    alignas(64) Lanes farthest;
    unsigned count = 0; ///< of the lanes, the first ones are rays
};

/// The nearest hit of each ray.
struct HitPacket {
    static constexpr std::uint32_t kNothing = ~std::uint32_t{0};

    void Take(unsigned lane, const HitPacket& other, unsigned otherLane) noexcept
    {
        distance[lane] = other.distance[otherLane];
        u[lane] = other.u[otherLane];
        v[lane] = other.v[otherLane];
        triangle[lane] = other.triangle[otherLane];
        shape[lane] = other.shape[otherLane];
    }

    alignas(64) RayPacket::Lanes distance;
    alignas(64) RayPacket::Lanes u; ///< weight of the second corner
    alignas(64) RayPacket::Lanes v; ///< weight of the third corner
    alignas(64) std::array<std::uint32_t, RayPacket::kWidth> triangle;
    alignas(64) std::array<std::uint32_t, RayPacket::kWidth> shape; ///< kNothing for a miss
};

/// What rays meet: welded meshes, each with one search tree however many shapes show it.
///
/// Ownership: refers to the meshes, which outlive it.
///
/// Threads: built by several, asked by any.
///
/// Errors: building answers null with the reason: too many shapes or triangles, too little memory, stopped. Shapes that are
/// too small beside the scene for single precision are never met.
///
/// Cost: about 100 bytes for each triangle of a mesh and 300 for each shape.
class RayScene
{
public:
    struct Limits {
        std::size_t shapes = 16'777'216;
        std::size_t triangles = 100'000'000; ///< of the meshes
        std::size_t bytes = std::size_t{16} << 30;
    };

    struct Shape {
        std::size_t mesh = 0;
        dg::DMat44 toUnit; ///< from the frame of the welded mesh to the unit frame
        bool isOpaque = true;
    };

    /// @param isSameEverywhere whether rays meet the same to the last bit on every machine, at up to twice the cost
    static std::unique_ptr<RayScene> Build(const std::vector<std::unique_ptr<WeldedMesh>>& meshes,
                                           const std::vector<Shape>& shapes, const Limits& limits,
                                           bool isSameEverywhere, const Workers& workers, std::string& error);
    ~RayScene();
    RayScene(const RayScene&) = delete;
    RayScene& operator=(const RayScene&) = delete;

    void Intersect(const RayPacket& rays, HitPacket& hits) const noexcept;

    /// @return a bit for each ray, the lowest for the first: whether anything opaque is on it
    std::uint32_t FindOccluded(const RayPacket& rays) const noexcept;

    /// The same as Intersect, among opaque shapes.
    void IntersectOpaque(const RayPacket& rays, HitPacket& hits) const noexcept;

private:
    class Device;
    RayScene();

    std::unique_ptr<Device> m_device;
};

} // namespace luhost::render
