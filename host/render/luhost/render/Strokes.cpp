#include <luhost/render/ScreenGeometry.h>
#include <luhost/render/Strokes.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <tuple>
#include <utility>

namespace luhost::render
{

namespace
{

using Points = std::vector<dg::DPoint2D>;

/// Pixels. A change of visibility over less is a slip, a stroke of less a speck.
constexpr double kShortest = 0.6;
/// The longest hook at the end of a smooth outline, and the shortest piece of one.
constexpr double kHook = 8.0;
constexpr double kShortestOutline = 5.0;
/// By so much a stroke may miss its line.
constexpr double kTolerance = 0.04;
/// So near an outline comes out again from behind itself.
constexpr double kOnLine = 0.5;

/// An end of a line: twice the number of the line, and one more for where it ends.
using LineEnd = std::uint32_t;
constexpr LineEnd kNoEnd = ~LineEnd{0};
constexpr LineEnd OtherEnd(LineEnd end) noexcept { return end ^ 1U; }

/// Which ends of lines are joined.
class Joints
{
public:
    explicit Joints(const std::vector<FeatureLine>& lines) : m_lines(lines), m_joined(2 * lines.size(), kNoEnd)
    {
        std::vector<Meeting> ends;
        for (LineEnd end = 0; end < m_joined.size(); ++end) {
            if (VertexOf(end) != FeatureLine::kNoVertex) {
                ends.push_back({VertexOf(end), lines[end / 2].kind, end});
            }
        }
        std::sort(ends.begin(), ends.end());
        for (std::size_t first = 0; first < ends.size();) {
            std::size_t last = first;
            while (last < ends.size() && ends[last].vertex == ends[first].vertex &&
                   ends[last].kind == ends[first].kind) {
                ++last;
            }
            JoinAll(ends.data() + first, last - first);
            first = last;
        }
    }

    LineEnd JoinedTo(LineEnd end) const noexcept { return m_joined[end]; }

private:
    struct Meeting {
        std::uint32_t vertex;
        LineKind kind;
        LineEnd end;
        bool operator<(const Meeting& other) const
        {
            return std::tie(vertex, kind, end) < std::tie(other.vertex, other.kind, other.end);
        }
    };
    struct Pair {
        double straightness; ///< -1 for straight on
        LineEnd a;
        LineEnd b;
    };

    std::uint32_t VertexOf(LineEnd end) const noexcept
    {
        const FeatureLine& line = m_lines[end / 2];
        return end % 2 == 0 ? line.startVertex : line.endVertex;
    }

    void JoinAll(const Meeting* meetings, std::size_t count)
    {
        if (count == 2) {
            Join(meetings[0].end, meetings[1].end);
        } else if (count > 2) {
            JoinStraightest(meetings, std::min<std::size_t>(count, 8));
        }
    }

    void JoinStraightest(const Meeting* meetings, std::size_t count)
    {
        constexpr double kStraight = -0.9;
        std::vector<Pair> pairs;
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t j = i + 1; j < count; ++j) {
                pairs.push_back({CosineBetween(meetings[i].end, meetings[j].end), meetings[i].end, meetings[j].end});
            }
        }
        std::stable_sort(pairs.begin(), pairs.end(),
                         [](const Pair& a, const Pair& b) { return a.straightness < b.straightness; });
        for (const Pair& pair : pairs) {
            // The outline of a fine mesh turns back behind itself, also where it meets another.
            const bool turnsBack = pair.straightness > -kStraight && IsStep(pair.a) && IsStep(pair.b);
            if ((turnsBack || pair.straightness < kStraight) && m_joined[pair.a] == kNoEnd &&
                m_joined[pair.b] == kNoEnd) {
                Join(pair.a, pair.b);
            }
        }
    }

    /// One of the edges of an outline that nobody sees as such.
    bool IsStep(LineEnd end) const noexcept
    {
        constexpr double kLongestPixels = 2.0;
        const FeatureLine& line = m_lines[end / 2];
        return line.isSmooth && Distance(line.screenStart, line.screenEnd) < kLongestPixels;
    }

    double CosineBetween(LineEnd a, LineEnd b) const noexcept
    {
        const dg::DPoint2D directionA = DirectionFrom(a);
        const dg::DPoint2D directionB = DirectionFrom(b);
        return directionA.x * directionB.x + directionA.y * directionB.y;
    }

    dg::DPoint2D DirectionFrom(LineEnd end) const noexcept
    {
        const FeatureLine& line = m_lines[end / 2];
        const double length = Distance(line.screenStart, line.screenEnd);
        const double scale = length > 0.0 ? (end % 2 == 0 ? 1.0 : -1.0) / length : 0.0;
        return {(line.screenEnd.x - line.screenStart.x) * scale, (line.screenEnd.y - line.screenStart.y) * scale};
    }

    void Join(LineEnd a, LineEnd b) noexcept
    {
        m_joined[a] = b;
        m_joined[b] = a;
    }

    const std::vector<FeatureLine>& m_lines;
    std::vector<LineEnd> m_joined;
};

/// A stretch of a chain of lines that is visible or hidden as a whole.
struct Run {
    bool isVisible;
    bool isSmooth; ///< an outline of nothing but smooth edges
    Points points;
    double length;

    void GoOnTo(const dg::DPoint2D& point)
    {
        length += Distance(points.back(), point);
        points.push_back(point);
    }

    void GoOnAlong(const Run& more)
    {
        isSmooth = isSmooth && more.isSmooth;
        for (const dg::DPoint2D& point : more.points) {
            GoOnTo(point);
        }
    }
};

/// Of the points of a line the first one near its beginning from which on it goes on behind a place that lies on it.
/// @return 0 when the place does not
template <class Iterator>
std::size_t FindOnLine(Iterator point, Iterator end, const dg::DPoint2D& place)
{
    double length = 0.0;
    std::size_t number = 1;
    for (Iterator next = point + 1; next != end && length < kHook; ++point, ++next, ++number) {
        if (DistanceToSegment(place, *point, *next) <= kOnLine) {
            return number;
        }
        length += Distance(*point, *next);
    }
    return 0;
}

/// The outline of a coarse smooth mesh runs to and fro: it turns back behind itself, and comes out again where it has
/// already been. One line is made of what is seen, without the hooks.
/// @return false when that is not what it does
bool GoOnFromBehind(Run& seen, const Run& behind, const Run& next)
{
    if (!seen.isVisible || behind.isVisible || !behind.isSmooth || behind.length > 2.0 * kHook) {
        return false;
    }
    const std::size_t left = FindOnLine(seen.points.rbegin(), seen.points.rend(), next.points.front());
    const std::size_t entered = left == 0 ? FindOnLine(next.points.begin(), next.points.end(), seen.points.back()) : 0;
    if (left == 0 && entered == 0) {
        return false;
    }
    for (std::size_t i = 0; i < left; ++i) {
        seen.length -= Distance(seen.points[seen.points.size() - 2], seen.points.back());
        seen.points.pop_back();
    }
    for (std::size_t i = entered; i < next.points.size(); ++i) {
        seen.GoOnTo(next.points[i]);
    }
    seen.isSmooth = seen.isSmooth && next.isSmooth;
    return true;
}

class Chainer
{
public:
    Chainer(const std::vector<FeatureLine>& lines, const LineSpans& spans)
        : m_lines(lines), m_spans(spans), m_joints(lines), m_isUsed(lines.size(), 0)
    {
    }

    std::vector<Stroke> MakeStrokes()
    {
        for (LineEnd end = 0; end < 2 * m_lines.size(); ++end) {
            if (m_joints.JoinedTo(end) == kNoEnd) {
                FollowChain(end);
            }
        }
        for (LineEnd end = 0; end < 2 * m_lines.size(); end += 2) {
            FollowChain(end);
        }
        return std::move(m_strokes);
    }

private:
    /// From an end of a line through it and on, until the chain ends or is back where it began.
    void FollowChain(LineEnd first)
    {
        if (m_isUsed[first / 2]) {
            return;
        }
        m_runs.clear();
        LineEnd from = first;
        do {
            m_isUsed[from / 2] = 1;
            AddLine(from);
            from = m_joints.JoinedTo(OtherEnd(from));
        } while (from != kNoEnd && from != first);
        AddStrokes(m_lines[first / 2].kind, from == first);
    }

    void AddLine(LineEnd from)
    {
        const FeatureLine& line = m_lines[from / 2];
        const LineSpan* const begin = m_spans.Begin(from / 2);
        const LineSpan* const end = m_spans.End(from / 2);
        const auto at = [&line](double fraction) {
            return dg::DPoint2D{line.screenStart.x + (line.screenEnd.x - line.screenStart.x) * fraction,
                                line.screenStart.y + (line.screenEnd.y - line.screenStart.y) * fraction};
        };
        if (from % 2 == 0) {
            for (const LineSpan* span = begin; span != end; ++span) {
                AddSpan({span->isVisible, line.isSmooth, {at(span->from)}, 0.0}, at(span->to));
            }
        } else {
            for (const LineSpan* span = end; span-- != begin;) {
                AddSpan({span->isVisible, line.isSmooth, {at(span->to)}, 0.0}, at(span->from));
            }
        }
    }

    void AddSpan(Run span, const dg::DPoint2D& to)
    {
        span.GoOnTo(to);
        if (m_runs.empty() || m_runs.back().isVisible != span.isVisible) {
            m_runs.push_back(std::move(span));
        } else {
            m_runs.back().GoOnAlong(span);
        }
    }

    void AddStrokes(LineKind kind, bool isClosed)
    {
        std::vector<Run> runs = AbsorbShortRuns();
        if (isClosed && runs.size() > 1 && runs.front().isVisible == runs.back().isVisible) {
            runs.back().GoOnAlong(runs.front());
            runs.erase(runs.begin());
        }
        if (isClosed) {
            BeginHidden(runs);
        }
        for (Run& run : JoinOutlines(runs)) {
            AddStroke(kind, isClosed && runs.size() == 1, run);
        }
    }

    /// Lets a chain that is closed begin with what of it is hidden longest.
    static void BeginHidden(std::vector<Run>& runs)
    {
        const auto hidden =
            std::ranges::max_element(runs, {}, [](const Run& run) { return run.isVisible ? -1.0 : run.length; });
        std::rotate(runs.begin(), hidden, runs.end());
    }

    static std::vector<Run> JoinOutlines(std::vector<Run>& runs)
    {
        std::vector<Run> joined;
        for (std::size_t i = 0; i < runs.size(); ++i) {
            if (!joined.empty() && i + 1 < runs.size() && GoOnFromBehind(joined.back(), runs[i], runs[i + 1])) {
                ++i;
            } else {
                joined.push_back(std::move(runs[i]));
            }
        }
        return joined;
    }

    std::vector<Run> AbsorbShortRuns()
    {
        std::vector<Run> kept;
        for (Run& run : m_runs) {
            if (!kept.empty() && kept.back().length < kShortest) {
                kept.back().isVisible = run.isVisible;
            }
            if (!kept.empty() && (kept.back().isVisible == run.isVisible || run.length < kShortest)) {
                kept.back().GoOnAlong(run);
            } else {
                kept.push_back(std::move(run));
            }
        }
        return kept;
    }

    void AddStroke(LineKind kind, bool isClosed, Run& run);

    const std::vector<FeatureLine>& m_lines;
    const LineSpans& m_spans;
    Joints m_joints;
    std::vector<char> m_isUsed;
    std::vector<Run> m_runs; ///< of the chain that is followed
    std::vector<Stroke> m_strokes;
};

/// Goes along points and keeps those that are needed for a line that stays near all of them.
class Straightener
{
public:
    explicit Straightener(const dg::DPoint2D& first) { Keep(first); }

    void GoOnTo(const dg::DPoint2D& point)
    {
        if (!Accept(point)) {
            Keep(m_last);
            Accept(point);
        }
    }

    Points Finish()
    {
        Keep(m_last);
        return std::move(m_kept);
    }

private:
    void Keep(const dg::DPoint2D& point)
    {
        m_kept.push_back(point);
        m_last = point;
        m_reach = 0.0;
    }

    /// Whether one line from the point kept last still passes near all since, and does not turn back.
    bool Accept(const dg::DPoint2D& point)
    {
        const dg::DPoint2D& from = m_kept.back();
        const double distance = Distance(from, point);
        if (distance <= kTolerance) {
            return m_reach <= kTolerance && Take(point, distance);
        }
        const double freedom = std::asin(kTolerance / distance);
        if (m_reach <= kTolerance) {
            m_towards = {(point.x - from.x) / distance, (point.y - from.y) / distance};
            m_low = -freedom;
            m_high = freedom;
            return Take(point, distance);
        }
        const double x = point.x - from.x;
        const double y = point.y - from.y;
        const double turn = std::atan2(m_towards.x * y - m_towards.y * x, m_towards.x * x + m_towards.y * y);
        if (turn < m_low || turn > m_high || distance < m_reach) {
            return false;
        }
        m_low = std::max(m_low, turn - freedom);
        m_high = std::min(m_high, turn + freedom);
        return Take(point, distance);
    }

    bool Take(const dg::DPoint2D& point, double distance) noexcept
    {
        m_last = point;
        m_reach = std::max(m_reach, distance);
        return true;
    }

    Points m_kept;
    dg::DPoint2D m_last;
    dg::DPoint2D m_towards; ///< the first direction from the point kept last
    double m_reach = 0.0;   ///< how far from it the line has come
    double m_low = 0.0;     ///< angles that it may still take
    double m_high = 0.0;
};

/// How far a point lies from the line between its neighbours.
double Bulge(const dg::DPoint2D& before, const dg::DPoint2D& point, const dg::DPoint2D& after) noexcept
{
    const double length = Distance(before, after);
    const double area = (after.x - before.x) * (point.y - before.y) - (after.y - before.y) * (point.x - before.x);
    return length > 0.0 ? std::fabs(area) / length : Distance(before, point);
}

/// Lets a closed line, whose last point is its first, begin at a corner, which is needed whatever else is not.
void BeginAtCorner(Points& points)
{
    points.pop_back();
    const std::size_t count = points.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (Bulge(points[(i + count - 1) % count], points[i], points[(i + 1) % count]) > kTolerance) {
            std::rotate(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(i), points.end());
            break;
        }
    }
    points.push_back(points.front());
}

Points Rounded(const Points& points)
{
    Points rounded;
    for (const dg::DPoint2D& point : points) {
        const dg::DPoint2D next = RoundedPoint(point);
        if (rounded.empty() || !(next == rounded.back())) {
            rounded.push_back(next);
        }
    }
    return rounded;
}

/// Whether a line turns back at a point.
bool TurnsBack(const dg::DPoint2D& before, const dg::DPoint2D& point, const dg::DPoint2D& after) noexcept
{
    constexpr double kSharp = -0.3;
    const double cosine = (point.x - before.x) * (after.x - point.x) + (point.y - before.y) * (after.y - point.y);
    return cosine < kSharp * Distance(before, point) * Distance(point, after);
}

/// Cuts off the beginning up to the last point near it at which the line turns back.
///
/// Rationale: the steps of a fine mesh go back and forth, within less than anybody sees, and are no hook.
void CutHook(Points& points)
{
    constexpr double kLeg = 1.0;
    double length = 0.0;
    std::size_t begin = 0;
    std::size_t before = 0;
    for (std::size_t i = 1; i + 1 < points.size() && length < kHook; ++i) {
        length += Distance(points[i - 1], points[i]);
        while (before + 1 < i && Distance(points[before + 1], points[i]) >= kLeg) {
            ++before;
        }
        std::size_t after = i + 1;
        while (after + 1 < points.size() && Distance(points[after], points[i]) < kLeg) {
            ++after;
        }
        begin = TurnsBack(points[before], points[i], points[after]) ? i : begin;
    }
    points.erase(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(begin));
}

void CutHooks(Run& run)
{
    CutHook(run.points);
    std::reverse(run.points.begin(), run.points.end());
    CutHook(run.points);
    std::reverse(run.points.begin(), run.points.end());
    run.length = 0.0;
    for (std::size_t i = 1; i < run.points.size(); ++i) {
        run.length += Distance(run.points[i - 1], run.points[i]);
    }
}

void Chainer::AddStroke(LineKind kind, bool isClosed, Run& run)
{
    const bool isOutline = run.isSmooth && !isClosed;
    if (isOutline) {
        CutHooks(run);
    }
    if (run.length < (isOutline ? kShortestOutline : kShortest)) {
        return;
    }
    if (isClosed) {
        BeginAtCorner(run.points);
    }
    Straightener straightener(run.points.front());
    for (const dg::DPoint2D& point : run.points) {
        straightener.GoOnTo(point);
    }
    Points points = Rounded(straightener.Finish());
    if (isClosed && points.size() > 2 && points.front() == points.back()) {
        points.pop_back();
    }
    if (points.size() > 1) {
        m_strokes.push_back({kind, run.isVisible, isClosed && points.size() > 2, std::move(points)});
    }
}

} // namespace

std::vector<Stroke> MakeStrokes(const std::vector<FeatureLine>& lines, const LineSpans& spans)
{
    return Chainer(lines, spans).MakeStrokes();
}

} // namespace luhost::render
