#include <luhost/render/DrawingOutput.h>
#include <luhost/render/PictureCover.h>
#include <luhost/render/Raster.h>
#include <luhost/render/ViewFrame.h>

#include <algorithm>
#include <bit>
#include <cmath>

namespace luhost::render
{

namespace
{

/// How far before its plane a picture counts as standing, in the unit frame.
constexpr double kBefore = 2.0e-3;
constexpr unsigned kSamplesPerSide = 2;
constexpr unsigned kSamplesPerPixel = kSamplesPerSide * kSamplesPerSide;
constexpr unsigned kPixelsPerPacket = RayPacket::kWidth / kSamplesPerPixel;

/// The plane of a picture as a camera sees it.
class SeenPlane
{
public:
    SeenPlane(const DrawnPlane& plane, const UnitFrame& frame, const ViewFrame& view)
        : m_view(view), m_point(view.ToView((plane.point - frame.center) * frame.scale)),
          m_normal(
              dg::DVec3{plane.normal.Dot(view.right), plane.normal.Dot(view.up), -plane.normal.Dot(view.towardsViewer)}
                  .Normalized())
    {
    }

    /// The view point of the plane that appears at a place of the screen. @return false when none does
    bool Find(double screenX, double screenY, dg::DVec3& point) const noexcept
    {
        const double x = (screenX - m_view.centerX) / m_view.pixelsPerUnit;
        const double y = (m_view.centerY - screenY) / m_view.pixelsPerUnit;
        if (m_view.isOrthographic) {
            point = {x, y, m_point.z - (m_normal.x * (x - m_point.x) + m_normal.y * (y - m_point.y)) / m_normal.z};
            return std::isfinite(point.z);
        }
        const dg::DVec3 sight{x, y, 1.0};
        const double distance = m_normal.Dot(m_point) / m_normal.Dot(sight);
        point = sight * distance;
        return distance > 0.0 && std::isfinite(distance);
    }

private:
    const ViewFrame& m_view;
    dg::DVec3 m_point;
    dg::DVec3 m_normal;
};

class MaskMaker
{
public:
    MaskMaker(const PreparedScene& scene, const ViewFrame& view, const DrawnPicture& picture, const PixelWindow& window)
        : m_scene(scene), m_view(view), m_plane(*picture.plane, scene.geometry.frame, view), m_window(window),
          m_pixels(std::make_shared<Raster>(window.width, window.height))
    {
    }

    Outcome Make(const Workers& workers)
    {
        return RunParallel(static_cast<std::size_t>(m_window.height), workers,
                           [this](std::size_t row) { MakeRow(static_cast<int>(row)); });
    }

    /// Takes so many pixels away around what is hidden.
    void Shrink(int pixels)
    {
        for (int i = 0; i < pixels; ++i) {
            const Raster before = *m_pixels;
            for (int row = 0; row < m_window.height; ++row) {
                for (int column = 0; column < m_window.width; ++column) {
                    m_pixels->At(column, row) = LeastAround(before, column, row);
                }
            }
        }
    }

    /// Of the pixels of a box; what lies around it is not the picture's.
    bool IsNothingLeft(const dg::DPoint2D& upperLeft, const dg::DPoint2D& lowerRight) const
    {
        for (int row = 0; row < m_window.height; ++row) {
            for (int column = 0; column < m_window.width; ++column) {
                const double x = m_window.left + column + 0.5;
                const double y = m_window.top + row + 0.5;
                const bool isInside = x > upperLeft.x && x < lowerRight.x && y > upperLeft.y && y < lowerRight.y;
                if (isInside && m_pixels->At(column, row) != 0) {
                    return false;
                }
            }
        }
        return true;
    }
    bool IsAllLeft() const { return m_pixels->IsOpaque(); }

    DrawnMask GetMask() const
    {
        return {1.0 * m_window.left, 1.0 * m_window.top, 1.0 * m_window.width, 1.0 * m_window.height, m_pixels};
    }

private:
    static std::uint32_t LeastAround(const Raster& pixels, int column, int row)
    {
        std::uint32_t least = pixels.At(column, row);
        for (int y = std::max(row - 1, 0); y <= std::min(row + 1, pixels.height - 1); ++y) {
            for (int x = std::max(column - 1, 0); x <= std::min(column + 1, pixels.width - 1); ++x) {
                least = std::min(least, pixels.At(x, y));
            }
        }
        return least;
    }

    void MakeRow(int row)
    {
        for (int first = 0; first < m_window.width; first += static_cast<int>(kPixelsPerPacket)) {
            RayPacket rays;
            rays.count = RayPacket::kWidth;
            std::uint32_t hasRay = 0;
            for (unsigned lane = 0; lane < RayPacket::kWidth; ++lane) {
                hasRay |= SetRay(rays, lane, first, row) ? 1U << lane : 0U;
            }
            const std::uint32_t hidden = m_scene.rays->FindOccluded(rays) & hasRay;
            const int end = std::min(first + static_cast<int>(kPixelsPerPacket), m_window.width);
            for (int column = first; column < end; ++column) {
                m_pixels->At(column, row) =
                    PixelOf(hidden >> (kSamplesPerPixel * static_cast<unsigned>(column - first)));
            }
        }
    }

    /// White, as much of it as is left.
    static std::uint32_t PixelOf(std::uint32_t hidden) noexcept
    {
        constexpr std::uint32_t kAll = (1U << kSamplesPerPixel) - 1;
        const auto count = static_cast<std::uint32_t>(std::popcount(hidden & kAll));
        return ((kSamplesPerPixel - count) * 0xFF / kSamplesPerPixel) * 0x01010101U;
    }

    bool SetRay(RayPacket& rays, unsigned lane, int firstColumn, int row) const
    {
        const unsigned sample = lane % kSamplesPerPixel;
        const auto offset = [](unsigned number) { return (number + 0.5) / kSamplesPerSide; };
        const double x =
            m_window.left + firstColumn + static_cast<int>(lane / kSamplesPerPixel) + offset(sample % kSamplesPerSide);
        const double y = m_window.top + row + offset(sample / kSamplesPerSide);
        dg::DVec3 point;
        const bool isFound = m_plane.Find(x, y, point);
        const dg::DVec3 start = isFound ? point : dg::DVec3{0.0, 0.0, 1.0};
        const double distance = start.Length();
        const dg::DVec3 onPlane = m_view.FromView(start);
        const dg::DVec3 towards =
            m_view.isOrthographic ? m_view.towardsViewer : (m_view.eye - onPlane) * (1.0 / distance);
        rays.Set(lane, onPlane + towards * kBefore, towards,
                 m_view.isOrthographic ? kFarthest : std::max(distance - kBefore, 0.0));
        return isFound;
    }

    /// Of a ray that starts anywhere: pictures may stand far behind a scene.
    static constexpr double kFarthest = 1.0e9;

    const PreparedScene& m_scene;
    const ViewFrame& m_view;
    SeenPlane m_plane;
    PixelWindow m_window;
    std::shared_ptr<Raster> m_pixels;
};

/// Upright, around a picture with its frame.
struct PictureBox {
    explicit PictureBox(const DrawnPicture& picture)
    {
        const auto [left, right] = std::ranges::minmax(picture.corners, {}, &dg::DPoint2D::x);
        const auto [top, bottom] = std::ranges::minmax(picture.corners, {}, &dg::DPoint2D::y);
        const double margin = 0.5 * std::max(picture.lineWidth, 0.0);
        upperLeft = {left.x - margin, top.y - margin};
        lowerRight = {right.x + margin, bottom.y + margin};
    }

    PixelWindow WindowOn(const ViewFrame& view) const
    {
        const Sheet sheet{1.0 * view.pixelWidth, 1.0 * view.pixelHeight, 1.0};
        const auto onSheet = [&sheet](const dg::DPoint2D& point) {
            return dg::DPoint2D{std::clamp(point.x, 0.0, sheet.width), std::clamp(point.y, 0.0, sheet.height)};
        };
        return WindowOf({onSheet(upperLeft), onSheet(lowerRight)}, sheet);
    }

    dg::DPoint2D upperLeft;
    dg::DPoint2D lowerRight;
};

} // namespace

Outcome CoverPictures(const PreparedScene& scene, const dg::Camera3D& camera, double margin, const Workers& workers,
                      Drawing& drawing)
{
    const auto view = ViewFrame::Make(camera, scene.geometry.frame);
    if (!view) {
        return Outcome::Done;
    }
    std::vector<DrawnPicture> kept;
    double maskPixels = 0.0; // of all masks that are kept, which are there until the drawing is written
    for (DrawnPicture& picture : drawing.pictures) {
        const PictureBox box(picture);
        const PixelWindow window = box.WindowOn(*view);
        if (!picture.plane || window.width <= 0 || window.height <= 0) {
            kept.push_back(std::move(picture));
            continue;
        }
        MaskMaker mask(scene, *view, picture, window);
        if (const Outcome outcome = mask.Make(workers); outcome != Outcome::Done) {
            return outcome;
        }
        mask.Shrink(static_cast<int>(std::lround(margin)));
        if (!mask.IsNothingLeft(box.upperLeft, box.lowerRight)) {
            picture.mask = mask.IsAllLeft() ? std::nullopt : std::optional(mask.GetMask());
            maskPixels += picture.mask ? 1.0 * window.width * window.height : 0.0;
            kept.push_back(std::move(picture));
        }
        if (maskPixels > kMaximumPixels) {
            return Outcome::NoMemory;
        }
    }
    drawing.pictures = std::move(kept);
    return Outcome::Done;
}

} // namespace luhost::render
