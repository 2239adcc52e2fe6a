#pragma once

#include <luhost/render/Strokes.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <unordered_map>
#include <vector>

namespace luhost::render
{

/// Where lines lie, so that hidden ones exactly behind others can be left out: dashes would fray a whole line, and fill one
/// another's gaps.
///
/// Cost: constant for each segment, and logarithmic in the lines that lie on one straight line.
class LineCover
{
public:
    LineCover(int pixelWidth, int pixelHeight) : m_width(pixelWidth), m_height(pixelHeight) {}

    void Add(const Stroke& stroke);

    /// What of a stroke lies beside all the lines.
    std::vector<Stroke> BesideOf(const Stroke& stroke) const;

private:
    /// A line across the sheet by where it meets the sheet's borders, to half a pixel.
    struct Key {
        std::int32_t isSteep;
        std::int32_t first;
        std::int32_t second;
        bool operator==(const Key&) const = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const noexcept;
    };
    /// Along x, or along y for a steep line.
    struct Stretch {
        double from;
        double to;
    };
    /// By where they begin, to where they end; none touches another.
    using Stretches = std::map<double, double>;

    Key KeyOf(const dg::DPoint2D& a, const dg::DPoint2D& b) const noexcept;
    void Cut(const Stretch& whole, const Key& key, std::vector<Stretch>& left) const;
    std::vector<Stretch> BesideOf(const Stretch& whole, const Key& key) const;

    int m_width;
    int m_height;
    std::unordered_map<Key, Stretches, KeyHash> m_lines;
};

} // namespace luhost::render
