#include <luhost/render/PixelRays.h>
#include <luhost/render/Shading.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>

namespace luhost::render
{

namespace
{

constexpr int kTileSide = 32;
constexpr std::size_t kSamples = 4;
/// A pixel's rays, in parts of its side: turned so that near-level and near-upright edges show four steps.
constexpr std::array<std::array<double, 2>, kSamples> kPattern{
    {{0.375, 0.125}, {0.875, 0.375}, {0.125, 0.625}, {0.625, 0.875}}};

constexpr int kMostLayers = 32;
constexpr float kClear = 1.0F / 512.0F; ///< less cannot be seen through

/// The three sides of a box that is seen from a corner differ, and the darkest one still shows its lines.
constexpr float kAmbient = 0.48F;
constexpr float kKey = 0.54F;
constexpr float kFill = 0.09F;
constexpr float kRim = 0.08F;

struct Vector {
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;
};

float Dot(const Vector& a, const Vector& b) noexcept { return a.x * b.x + a.y * b.y + a.z * b.z; }
Vector Scaled(const Vector& a, float factor) noexcept { return {a.x * factor, a.y * factor, a.z * factor}; }
Vector ToSingle(const dg::DVec3& v) noexcept
{
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}
Vector Normalized(const Vector& v) noexcept
{
    const float square = Dot(v, v);
    return square > 0.0F ? Scaled(v, 1.0F / std::sqrt(square)) : v;
}

/// Takes normals from the frame of a welded mesh to the unit frame, to any length.
struct NormalTransform {
    explicit NormalTransform(const dg::DMat44& toUnit)
    {
        const auto column = [&toUnit](int i) {
            return dg::DVec3{toUnit.Get(0, i), toUnit.Get(1, i), toUnit.Get(2, i)}.Normalized();
        };
        const auto length = [&toUnit](int i) {
            return dg::DVec3{toUnit.Get(0, i), toUnit.Get(1, i), toUnit.Get(2, i)}.Length();
        };
        const double shortest = std::min({length(0), length(1), length(2)});
        x = ToSingle(column(1).Cross(column(2)) * (shortest / length(0)));
        y = ToSingle(column(2).Cross(column(0)) * (shortest / length(1)));
        z = ToSingle(column(0).Cross(column(1)) * (shortest / length(2)));
    }

    Vector Apply(const dg::FVec3& n) const noexcept
    {
        return {x.x * n.x + y.x * n.y + z.x * n.z, x.y * n.x + y.y * n.y + z.y * n.z,
                x.z * n.x + y.z * n.y + z.z * n.z};
    }

    Vector x;
    Vector y;
    Vector z;
};

/// Lights that stand still beside the camera.
class Lights
{
public:
    explicit Lights(const ViewFrame& view)
        : m_key(Direction(view, -0.45, 0.65, 0.75)), m_fill(Direction(view, 0.7, 0.1, 0.6)),
          m_rim(Direction(view, 0.25, 0.6, -0.75))
    {
    }

    /// @param normal,towardsViewer of length 1
    Vector Shade(const Surface& surface, const Vector& normal, const Vector& towardsViewer) const noexcept
    {
        const float light = kAmbient + kKey * SoftlyFacing(normal, m_key) + kFill * SoftlyFacing(normal, m_fill) +
                            kRim * Facing(normal, m_rim);
        const float gloss = GlossOf(surface, normal, towardsViewer);
        const auto mix = [light, gloss](float color, float emissive, float specular) {
            return std::clamp(color * light + emissive + specular * gloss, 0.0F, 1.0F);
        };
        return {mix(surface.color.red, surface.emissive.red, surface.specular.red),
                mix(surface.color.green, surface.emissive.green, surface.specular.green),
                mix(surface.color.blue, surface.emissive.blue, surface.specular.blue)};
    }

private:
    static Vector Direction(const ViewFrame& view, double right, double up, double towardsViewer)
    {
        return ToSingle((view.right * right + view.up * up + view.towardsViewer * towardsViewer).Normalized());
    }

    static float Facing(const Vector& normal, const Vector& light) noexcept
    {
        return std::max(Dot(normal, light), 0.0F);
    }

    /// Reaches a little around a body and fades out without an edge.
    static float SoftlyFacing(const Vector& normal, const Vector& light) noexcept
    {
        constexpr float kReach = 0.6F;
        const float facing = std::max((Dot(normal, light) + kReach) / (1.0F + kReach), 0.0F);
        return facing * facing;
    }

    float GlossOf(const Surface& surface, const Vector& normal, const Vector& towardsViewer) const noexcept
    {
        if (surface.specular.red <= 0.0F && surface.specular.green <= 0.0F && surface.specular.blue <= 0.0F) {
            return 0.0F;
        }
        const Vector between =
            Normalized({m_key.x + towardsViewer.x, m_key.y + towardsViewer.y, m_key.z + towardsViewer.z});
        return std::pow(Facing(normal, between), std::max(surface.shininess, 1.0F));
    }

    Vector m_key;
    Vector m_fill;
    Vector m_rim;
};

/// Light that has come along one ray, multiplied by how much it covers, and what is let through from behind.
struct Sample {
    Vector light;
    float clear = 1.0F;

    void Add(const Vector& color, float alpha) noexcept
    {
        const float weight = clear * alpha;
        light = {light.x + color.x * weight, light.y + color.y * weight, light.z + color.z * weight};
        clear -= weight;
    }
};

class Shader
{
public:
    Shader(const PreparedScene& scene, const ViewFrame& view, const ShadingOptions& options, Raster& raster)
        : m_scene(scene), m_view(view), m_options(options), m_lights(view), m_raster(raster), m_rays(view)
    {
        m_normals.reserve(scene.shapes.size());
        for (const RayScene::Shape& shape : scene.shapes) {
            m_normals.emplace_back(shape.toUnit);
        }
    }

    std::size_t GetTileCount() const noexcept { return static_cast<std::size_t>(TilesAcross()) * TilesDown(); }

    void ShadeTile(std::size_t number)
    {
        const int left = static_cast<int>(number % TilesAcross()) * kTileSide;
        const int top = static_cast<int>(number / TilesAcross()) * kTileSide;
        for (int y = top; y < std::min(top + kTileSide, m_raster.height); y += 2) {
            for (int x = left; x < std::min(left + kTileSide, m_raster.width); x += 2) {
                ShadeFourPixels(x, y);
            }
        }
    }

private:
    using Samples = std::array<Sample, RayPacket::kWidth>;
    /// Which ray of the packet is which sample.
    using SampleNumbers = std::array<unsigned, RayPacket::kWidth>;

    std::size_t TilesAcross() const noexcept { return Tiles(m_raster.width); }
    std::size_t TilesDown() const noexcept { return Tiles(m_raster.height); }
    static std::size_t Tiles(int side) noexcept { return static_cast<std::size_t>((side + kTileSide - 1) / kTileSide); }

    void ShadeFourPixels(int x, int y)
    {
        RayPacket rays;
        MakeRays(x, y, rays);
        Samples samples;
        FollowRays(rays, samples);
        for (unsigned pixel = 0; pixel < 4; ++pixel) {
            const int column = x + static_cast<int>(pixel % 2);
            const int row = y + static_cast<int>(pixel / 2);
            if (column < m_raster.width && row < m_raster.height) {
                m_raster.At(column, row) = Join(samples.data() + pixel * kSamples);
            }
        }
    }

    void MakeRays(int x, int y, RayPacket& rays) const
    {
        rays.count = RayPacket::kWidth;
        for (unsigned lane = 0; lane < RayPacket::kWidth; ++lane) {
            const auto& offset = kPattern[lane % kSamples];
            const double column = x + static_cast<int>(lane / kSamples % 2) + offset[0];
            const double row = y + static_cast<int>(lane / kSamples / 2) + offset[1];
            m_rays.Set(rays, lane, column, row);
        }
    }

    void FollowRays(RayPacket& rays, Samples& samples) const
    {
        SampleNumbers numbers;
        for (unsigned lane = 0; lane < RayPacket::kWidth; ++lane) {
            numbers[lane] = lane;
        }
        HitPacket hits;
        for (int layer = 0; layer < kMostLayers && rays.count > 0; ++layer) {
            m_scene.rays->Intersect(rays, hits);
            PreferOpaque(rays, hits);
            unsigned open = 0;
            for (unsigned lane = 0; lane < rays.count; ++lane) {
                Sample& sample = samples[numbers[lane]];
                if (hits.shape[lane] == HitPacket::kNothing) {
                    FinishSample(rays, lane, sample);
                } else if (AddLayer(rays, hits, lane, sample); sample.clear > kClear) {
                    numbers[open] = numbers[lane];
                    GoOnBehind(rays, lane, hits.distance[lane], open++);
                }
            }
            rays.count = open;
        }
        for (unsigned lane = 0; lane < rays.count; ++lane) {
            FinishSample(rays, lane, samples[numbers[lane]]);
        }
    }

    /// Where something transparent lies on something opaque, rounding alone would choose between them, otherwise for each ray.
    void PreferOpaque(const RayPacket& rays, HitPacket& hits) const
    {
        constexpr float kTouching = 1.0e-5F;
        RayPacket near;
        SampleNumbers numbers;
        for (unsigned lane = 0; lane < rays.count; ++lane) {
            if (hits.shape[lane] != HitPacket::kNothing && !m_scene.shapes[hits.shape[lane]].isOpaque) {
                numbers[near.count] = lane;
                near.Take(near.count, rays, lane);
                near.nearest[near.count] = std::max(hits.distance[lane] - kTouching, rays.nearest[lane]);
                near.farthest[near.count] = hits.distance[lane] + kTouching;
                ++near.count;
            }
        }
        if (near.count == 0) {
            return;
        }
        HitPacket opaque;
        m_scene.rays->IntersectOpaque(near, opaque);
        for (unsigned lane = 0; lane < near.count; ++lane) {
            if (opaque.shape[lane] != HitPacket::kNothing) {
                hits.Take(numbers[lane], opaque, lane);
            }
        }
    }

    /// Keeps a ray, as the one with the number `kept`, from behind its hit on.
    static void GoOnBehind(RayPacket& rays, unsigned lane, float distance, unsigned kept)
    {
        constexpr float kStep = 2.0e-6F;
        rays.Take(kept, rays, lane);
        rays.nearest[kept] = distance + kStep;
    }

    void AddLayer(const RayPacket& rays, const HitPacket& hits, unsigned lane, Sample& sample) const
    {
        const std::size_t number = hits.shape[lane];
        const std::size_t triangle = hits.triangle[lane];
        const SceneShape& shape = m_scene.geometry.shapes[number];
        const PreparedScene::Mesh& mesh = m_scene.meshes[shape.mesh];
        const Vector towardsViewer{-rays.directionX[lane], -rays.directionY[lane], -rays.directionZ[lane]};
        const Vector face = m_normals[number].Apply(mesh.edges->normals[triangle]);
        Vector normal = Normalized(m_normals[number].Apply(mesh.normals->At(triangle, hits.u[lane], hits.v[lane])));
        if (Dot(face, towardsViewer) < 0.0F) {
            normal = Scaled(normal, -1.0F);
        }
        const Surface surface = m_scene.geometry.SurfaceOf(shape, m_scene.welded[shape.mesh]->PartOf(triangle));
        sample.Add(m_lights.Shade(surface, normal, towardsViewer), std::clamp(surface.color.alpha, 0.0F, 1.0F));
    }

    void FinishSample(const RayPacket& rays, unsigned lane, Sample& sample) const
    {
        if (m_options.shadow) {
            const auto at = [lane](const RayPacket::Lanes& lanes) { return static_cast<double>(lanes[lane]); };
            sample.Add(
                {}, m_options.shadow->DarknessOnRay({at(rays.originX), at(rays.originY), at(rays.originZ)},
                                                    {at(rays.directionX), at(rays.directionY), at(rays.directionZ)}));
        }
        const dg::Color& background = m_options.background;
        sample.Add({background.red, background.green, background.blue}, background.alpha);
    }

    static std::uint32_t Join(const Sample* samples)
    {
        Vector light;
        float cover = 0.0F;
        for (std::size_t i = 0; i < kSamples; ++i) {
            light = {light.x + samples[i].light.x, light.y + samples[i].light.y, light.z + samples[i].light.z};
            cover += 1.0F - samples[i].clear;
        }
        const auto level = [](float sum, std::uint32_t most) {
            constexpr float kScale = 255.0F / static_cast<float>(kSamples);
            const float value = sum * kScale + 0.5F;
            return std::min(static_cast<std::uint32_t>(std::clamp(value, 0.0F, 255.0F)), most);
        };
        const std::uint32_t alpha = level(cover, 255);
        return alpha << 24U | level(light.x, alpha) << 16U | level(light.y, alpha) << 8U | level(light.z, alpha);
    }

    const PreparedScene& m_scene;
    const ViewFrame& m_view;
    const ShadingOptions& m_options;
    Lights m_lights;
    Raster& m_raster;
    PixelRays m_rays;
    std::vector<NormalTransform> m_normals;
};

} // namespace

Outcome ShadeView(const PreparedScene& scene, const ViewFrame& view, const ShadingOptions& options,
                  const Workers& workers, Raster& raster)
{
    try {
        raster = Raster(view.pixelWidth, view.pixelHeight);
        Shader shader(scene, view, options, raster);
        return RunParallel(shader.GetTileCount(), workers, [&shader](std::size_t tile) { shader.ShadeTile(tile); });
    } catch (const std::bad_alloc&) {
        return Outcome::NoMemory;
    }
}

} // namespace luhost::render
