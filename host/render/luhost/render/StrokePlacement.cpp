#include <luhost/render/Placement.h>
#include <luhost/render/StrokePlacement.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace luhost::render
{

namespace
{

constexpr double kMostSheets = 1.0e6;

/// Cuts lines off at a rectangle so far around the sheet that no end of them shows.
class LineCutter
{
public:
    LineCutter(const Sheet& sheet, double width, std::vector<Line>& lines)
        : m_left(-2.0 * width - sheet.thinLine), m_top(m_left), m_right(sheet.width - m_left),
          m_bottom(sheet.height - m_top), m_lines(lines)
    {
    }

    void Add(Line line)
    {
        if (line.points.size() < 2) {
            return;
        }
        if (std::all_of(line.points.begin(), line.points.end(), [this](const auto& p) { return IsInside(p); })) {
            m_lines.push_back(std::move(line));
            return;
        }
        if (line.closed) {
            line.points.push_back(line.points.front());
        }
        Line piece;
        for (std::size_t i = 1; i < line.points.size(); ++i) {
            AddSegment(line.points[i - 1], line.points[i], piece);
        }
        Finish(piece);
    }

private:
    bool IsInside(const dg::DPoint2D& point) const noexcept
    {
        return point.x >= m_left && point.x <= m_right && point.y >= m_top && point.y <= m_bottom;
    }

    void AddSegment(const dg::DPoint2D& from, const dg::DPoint2D& to, Line& piece)
    {
        double first = 0.0;
        double last = 1.0;
        const auto cut = [&first, &last](double start, double end) {
            if (start < 0.0 && end > start) {
                first = std::max(first, start / (start - end));
            } else if (end < 0.0 && start > end) {
                last = std::min(last, start / (start - end));
            } else if (!(start >= 0.0)) {
                last = -1.0;
            }
        };
        cut(from.x - m_left, to.x - m_left);
        cut(m_right - from.x, m_right - to.x);
        cut(from.y - m_top, to.y - m_top);
        cut(m_bottom - from.y, m_bottom - to.y);
        if (!(first <= last)) {
            Finish(piece);
            return;
        }
        if (first > 0.0 || piece.points.empty()) {
            Finish(piece);
            piece.points.push_back(At(from, to, first));
        }
        piece.points.push_back(At(from, to, last));
        if (last < 1.0) {
            Finish(piece);
        }
    }

    static dg::DPoint2D At(const dg::DPoint2D& from, const dg::DPoint2D& to, double fraction) noexcept
    {
        return {from.x + (to.x - from.x) * fraction, from.y + (to.y - from.y) * fraction};
    }

    void Finish(Line& piece)
    {
        if (piece.points.size() > 1) {
            m_lines.push_back(std::move(piece));
        }
        piece = {};
    }

    double m_left;
    double m_top;
    double m_right;
    double m_bottom;
    std::vector<Line>& m_lines;
};

/// Empty for those that would be dots without end, or none at all.
std::vector<double> UsableDashes(const std::vector<double>& dashes, double scale, const Sheet& sheet)
{
    constexpr double kShortestPeriod = 0.1; // thin lines
    std::vector<double> usable;
    double period = 0.0;
    for (const double dash : dashes) {
        if (!(dash >= 0.0)) {
            return {};
        }
        usable.push_back(dash * scale);
        period += usable.back();
    }
    return period > kShortestPeriod * sheet.thinLine && std::isfinite(period) ? usable : std::vector<double>();
}

} // namespace

PlacedStrokes PlaceStrokes(const DrawnStrokes& strokes, const Sheet& sheet, double scaleX, double scaleY)
{
    PlacedStrokes placed;
    const double scale = std::sqrt(scaleX * scaleY);
    placed.color = Clamped(strokes.color);
    if (!(strokes.width > 0.0) || !(placed.color.alpha > 0.0F)) {
        return placed;
    }
    placed.width = std::min(strokes.width * scale, std::max(sheet.width, sheet.height));
    placed.dashes = UsableDashes(strokes.dashes, scale, sheet);
    // From farther away nothing comes back exact.
    const double farthest = kMostSheets * std::max(sheet.width, sheet.height);
    const auto isNear = [farthest](const dg::DPoint2D& point) {
        return std::fabs(point.x) <= farthest && std::fabs(point.y) <= farthest;
    };
    LineCutter cutter(sheet, placed.width, placed.lines);
    for (const DrawnStrokes::Stroke& stroke : strokes.strokes) {
        Line line{stroke.points, stroke.closed};
        for (dg::DPoint2D& point : line.points) {
            point = {point.x * scaleX, point.y * scaleY};
        }
        if (std::all_of(line.points.begin(), line.points.end(), isNear)) {
            cutter.Add(std::move(line));
        }
    }
    return placed;
}

} // namespace luhost::render
