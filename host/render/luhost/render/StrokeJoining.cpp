#include <luhost/render/ScreenGeometry.h>
#include <luhost/render/StrokeJoining.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <utility>

namespace luhost::render
{

namespace
{

/// Pixels. Ends in one cell are at one place.
constexpr double kPlaceCell = 0.1;
/// A piece of another part that is no longer is not meant as a line of its own.
constexpr double kLongestSliver = 6.0;
/// Cosine between two directions away from a place: -1 for straight on.
constexpr double kOnwards = -0.97;
/// A joint that lies so near the straight line past it is left out.
constexpr double kJointTolerance = 0.04;
/// Of the ends at one place that are compared with one another.
constexpr std::ptrdiff_t kMostAtPlace = 32;

/// An end of a stroke: twice the number of the stroke, and one more for where it ends.
using End = std::size_t;
constexpr End kUnjoined = ~End{0};

/// The ends of open strokes, by where they are.
class EndTable
{
public:
    /// @param strokes have at least two points each
    explicit EndTable(std::vector<const Stroke*> strokes) : m_strokes(std::move(strokes))
    {
        for (End end = 0; end < 2 * m_strokes.size(); ++end) {
            if (!m_strokes[end / 2]->isClosed) {
                m_entries.push_back({PlaceOf(end), end});
            }
        }
        std::sort(m_entries.begin(), m_entries.end());
    }

    /// Calls with each end from which a stroke of the same kind goes straight on, and how straight.
    template <class Take>
    void ForEachOnwards(End end, const Take& take) const
    {
        const Place place = PlaceOf(end);
        const auto first = std::lower_bound(m_entries.begin(), m_entries.end(), Entry{place, 0});
        const auto last = m_entries.end() - first > kMostAtPlace ? first + kMostAtPlace : m_entries.end();
        for (auto entry = first; entry != last && entry->place == place; ++entry) {
            const double cosine = entry->end / 2 == end / 2 ? 1.0 : CosineBetween(end, entry->end);
            if (cosine < kOnwards) {
                take(entry->end, cosine);
            }
        }
    }

private:
    using Place = std::tuple<LineKind, bool, std::int64_t, std::int64_t>;
    struct Entry {
        Place place;
        End end;
        bool operator<(const Entry& other) const noexcept
        {
            return std::tie(place, end) < std::tie(other.place, other.end);
        }
    };

    /// @param number from the end inwards
    const dg::DPoint2D& PointAt(End end, std::size_t number) const
    {
        const auto& points = m_strokes[end / 2]->points;
        return end % 2 == 0 ? points[number] : points[points.size() - 1 - number];
    }

    Place PlaceOf(End end) const
    {
        const auto cell = [](double value) { return static_cast<std::int64_t>(std::floor(value / kPlaceCell)); };
        const dg::DPoint2D& point = PointAt(end, 0);
        return {m_strokes[end / 2]->kind, m_strokes[end / 2]->isVisible, cell(point.x), cell(point.y)};
    }

    double CosineBetween(End a, End b) const
    {
        const dg::DPoint2D& fromA = PointAt(a, 0);
        const dg::DPoint2D& toA = PointAt(a, 1);
        const dg::DPoint2D& fromB = PointAt(b, 0);
        const dg::DPoint2D& toB = PointAt(b, 1);
        const double product = (toA.x - fromA.x) * (toB.x - fromB.x) + (toA.y - fromA.y) * (toB.y - fromB.y);
        return product / (Distance(fromA, toA) * Distance(fromB, toB));
    }

    std::vector<const Stroke*> m_strokes;
    std::vector<Entry> m_entries;
};

class Joiner
{
public:
    explicit Joiner(std::vector<Stroke>& strokes)
        : m_strokes(strokes), m_joined(2 * strokes.size(), kUnjoined), m_isUsed(strokes.size(), 0)
    {
    }

    void Join()
    {
        if (!JoinEnds()) {
            return;
        }
        std::vector<Stroke> joined;
        for (End end = 0; end < m_joined.size(); ++end) {
            if (m_joined[end] == kUnjoined && !m_isUsed[end / 2]) {
                joined.push_back(Follow(end));
            }
        }
        for (End end = 0; end < m_joined.size(); end += 2) {
            if (!m_isUsed[end / 2]) {
                joined.push_back(Follow(end));
            }
        }
        m_strokes = std::move(joined);
    }

private:
    struct Pair {
        double cosine;
        End a;
        End b;
    };

    /// The straightest first. @return false when there are none
    bool JoinEnds()
    {
        std::vector<const Stroke*> all;
        for (const Stroke& stroke : m_strokes) {
            all.push_back(&stroke);
        }
        const EndTable table(std::move(all));
        std::vector<Pair> pairs;
        for (End end = 0; end < m_joined.size(); ++end) {
            if (!m_strokes[end / 2].isClosed) {
                table.ForEachOnwards(end, [&](End other, double cosine) {
                    if (end < other) {
                        pairs.push_back({cosine, end, other});
                    }
                });
            }
        }
        std::stable_sort(pairs.begin(), pairs.end(), [](const Pair& a, const Pair& b) { return a.cosine < b.cosine; });
        for (const Pair& pair : pairs) {
            if (m_joined[pair.a] == kUnjoined && m_joined[pair.b] == kUnjoined) {
                m_joined[pair.a] = pair.b;
                m_joined[pair.b] = pair.a;
            }
        }
        return !pairs.empty();
    }

    Stroke Follow(End first)
    {
        Stroke stroke{m_strokes[first / 2].kind, m_strokes[first / 2].isVisible, m_strokes[first / 2].isClosed, {}};
        End from = first;
        do {
            m_isUsed[from / 2] = 1;
            Append(stroke.points, std::move(m_strokes[from / 2].points), from % 2 == 0);
            from = m_joined[from ^ 1U];
        } while (from != kUnjoined && from != first);
        if (from == first) {
            stroke.points.pop_back();
            stroke.isClosed = true;
        }
        return stroke;
    }

    static void Append(std::vector<dg::DPoint2D>& line, std::vector<dg::DPoint2D> more, bool isForward)
    {
        if (!isForward) {
            std::reverse(more.begin(), more.end());
        }
        if (line.empty()) {
            line = std::move(more);
            return;
        }
        if (DistanceToSegment(line.back(), line[line.size() - 2], more[1]) <= kJointTolerance) {
            line.pop_back();
        }
        line.insert(line.end(), more.begin() + 1, more.end());
    }

    std::vector<Stroke>& m_strokes;
    std::vector<End> m_joined;
    std::vector<char> m_isUsed;
};

class SliverTaker
{
public:
    SliverTaker(std::vector<std::vector<Stroke>>& strokes, const std::function<bool(std::size_t)>& isPart)
        : m_strokesOfShapes(strokes)
    {
        for (std::size_t shape = 0; shape < strokes.size(); ++shape) {
            for (std::size_t i = 0; isPart(shape) && i < strokes[shape].size(); ++i) {
                if (strokes[shape][i].isVisible) {
                    m_all.push_back(&strokes[shape][i]);
                    m_shapes.push_back(shape);
                }
            }
        }
    }

    void Take()
    {
        const EndTable table({m_all.begin(), m_all.end()});
        const std::vector<std::size_t> before = m_shapes;
        for (const std::size_t sliver : FindSlivers()) {
            table.ForEachOnwards(2 * sliver, [&](End a, double) {
                table.ForEachOnwards(2 * sliver + 1, [&](End b, double) {
                    m_shapes[sliver] = m_shapes[a / 2] == m_shapes[b / 2] ? m_shapes[a / 2] : m_shapes[sliver];
                });
            });
        }
        Move(before);
    }

private:
    /// The shortest first.
    std::vector<std::size_t> FindSlivers() const
    {
        const auto lengthOf = [this](std::size_t i) { return Distance(m_all[i]->points[0], m_all[i]->points[1]); };
        std::vector<std::size_t> slivers;
        for (std::size_t i = 0; i < m_all.size(); ++i) {
            if (m_all[i]->points.size() == 2 && lengthOf(i) < kLongestSliver) {
                slivers.push_back(i);
            }
        }
        std::ranges::stable_sort(slivers, {}, lengthOf);
        return slivers;
    }

    void Move(const std::vector<std::size_t>& before)
    {
        std::vector<std::pair<std::size_t, Stroke>> moved;
        for (std::size_t i = 0; i < m_all.size(); ++i) {
            if (m_shapes[i] != before[i]) {
                moved.emplace_back(m_shapes[i], std::exchange(*m_all[i], Stroke()));
            }
        }
        for (std::vector<Stroke>& strokes : m_strokesOfShapes) {
            std::erase_if(strokes, [](const Stroke& stroke) { return stroke.points.empty(); });
        }
        for (auto& [shape, stroke] : moved) {
            m_strokesOfShapes[shape].push_back(std::move(stroke));
        }
    }

    std::vector<std::vector<Stroke>>& m_strokesOfShapes;
    std::vector<Stroke*> m_all;
    std::vector<std::size_t> m_shapes; ///< to which each belongs
};

} // namespace

void JoinStrokes(std::vector<Stroke>& strokes) { Joiner(strokes).Join(); }

void TakeSlivers(std::vector<std::vector<Stroke>>& strokes, const std::function<bool(std::size_t)>& isPart)
{
    SliverTaker(strokes, isPart).Take();
}

} // namespace luhost::render
