#include <du/TextHash.h>
#include <luhost/render/LineCover.h>
#include <luhost/render/ScreenGeometry.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <type_traits>
#include <utility>

namespace luhost::render
{

namespace
{

constexpr double kCell = 0.5; ///< pixels

/// Calls with each segment of a stroke.
template <class Take>
void ForEachSegment(const Stroke& stroke, const Take& take)
{
    for (std::size_t i = 1; i < stroke.points.size(); ++i) {
        take(stroke.points[i - 1], stroke.points[i]);
    }
    if (stroke.isClosed) {
        take(stroke.points.back(), stroke.points.front());
    }
}

/// Puts segments that follow one another together again.
class StrokeBuilder
{
public:
    explicit StrokeBuilder(const Stroke& model) : m_model(model) {}

    void Add(const dg::DPoint2D& from, const dg::DPoint2D& to)
    {
        if (m_strokes.empty() || !(m_strokes.back().points.back() == from)) {
            m_strokes.push_back({m_model.kind, m_model.isVisible, false, {from}});
        }
        m_strokes.back().points.push_back(to);
    }

    std::vector<Stroke> Finish()
    {
        std::erase_if(m_strokes, [](const Stroke& stroke) {
            constexpr double kShortest = 1.0;
            return stroke.points.size() == 2 && Distance(stroke.points[0], stroke.points[1]) < kShortest;
        });
        return std::move(m_strokes);
    }

private:
    const Stroke& m_model;
    std::vector<Stroke> m_strokes;
};

} // namespace

std::size_t LineCover::KeyHash::operator()(const Key& key) const noexcept
{
    static_assert(std::has_unique_object_representations_v<Key>);
    return du::TextHash()({reinterpret_cast<const char*>(&key), sizeof(key)});
}

LineCover::Key LineCover::KeyOf(const dg::DPoint2D& a, const dg::DPoint2D& b) const noexcept
{
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const bool isSteep = std::fabs(dy) > std::fabs(dx);
    const double run = isSteep ? dy : dx;
    const double slope = run == 0.0 ? 0.0 : (isSteep ? dx : dy) / run;
    const double first = isSteep ? a.x - slope * a.y : a.y - slope * a.x;
    const double second = first + slope * (isSteep ? m_height : m_width);
    const auto cell = [](double value) { return static_cast<std::int32_t>(std::floor(value / kCell)); };
    return {isSteep ? 1 : 0, cell(first), cell(second)};
}

void LineCover::Add(const Stroke& stroke)
{
    ForEachSegment(stroke, [this](const dg::DPoint2D& a, const dg::DPoint2D& b) {
        const Key key = KeyOf(a, b);
        auto [from, to] = key.isSteep ? std::minmax(a.y, b.y) : std::minmax(a.x, b.x);
        Stretches& stretches = m_lines[key];
        auto next = stretches.upper_bound(from);
        if (next != stretches.begin() && std::prev(next)->second >= from) {
            --next;
        }
        double first = from;
        double last = to;
        while (next != stretches.end() && next->first <= last) {
            first = std::min(first, next->first);
            last = std::max(last, next->second);
            next = stretches.erase(next);
        }
        stretches.emplace(first, last);
    });
}

/// Takes out of what is left of a stretch what lies behind a line.
void LineCover::Cut(const Stretch& whole, const Key& key, std::vector<Stretch>& left) const
{
    const auto line = m_lines.find(key);
    if (line == m_lines.end()) {
        return;
    }
    auto cover = line->second.upper_bound(whole.from);
    cover = cover == line->second.begin() ? cover : std::prev(cover);
    for (; cover != line->second.end() && cover->first < whole.to; ++cover) {
        std::vector<Stretch> next;
        for (const Stretch& piece : left) {
            if (cover->first > piece.from) {
                next.push_back({piece.from, std::min(piece.to, cover->first)});
            }
            if (cover->second < piece.to) {
                next.push_back({std::max(piece.from, cover->second), piece.to});
            }
        }
        left = std::move(next);
    }
}

std::vector<LineCover::Stretch> LineCover::BesideOf(const Stretch& whole, const Key& key) const
{
    std::vector<Stretch> left{whole};
    for (std::int32_t first = -1; first <= 1; ++first) {
        for (std::int32_t second = -1; second <= 1; ++second) {
            Cut(whole, {key.isSteep, key.first + first, key.second + second}, left);
        }
    }
    return left;
}

std::vector<Stroke> LineCover::BesideOf(const Stroke& stroke) const
{
    StrokeBuilder builder(stroke);
    bool isWhole = true;
    ForEachSegment(stroke, [&](const dg::DPoint2D& a, const dg::DPoint2D& b) {
        const Key key = KeyOf(a, b);
        const double start = key.isSteep ? a.y : a.x;
        const double end = key.isSteep ? b.y : b.x;
        const Stretch whole{std::min(start, end), std::max(start, end)};
        std::vector<Stretch> left = BesideOf(whole, key);
        isWhole = isWhole && left.size() == 1 && left[0].from == whole.from && left[0].to == whole.to;
        const auto at = [&](double place) {
            const double fraction = (place - start) / (end - start);
            return place == start ? a
                   : place == end ? b
                                  : dg::DPoint2D{a.x + (b.x - a.x) * fraction, a.y + (b.y - a.y) * fraction};
        };
        if (start > end) {
            std::reverse(left.begin(), left.end());
        }
        for (const Stretch& piece : left) {
            builder.Add(at(start > end ? piece.to : piece.from), at(start > end ? piece.from : piece.to));
        }
    });
    return isWhole ? std::vector<Stroke>{stroke} : builder.Finish();
}

} // namespace luhost::render
