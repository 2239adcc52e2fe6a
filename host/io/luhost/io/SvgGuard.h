#pragma once

#include <luhost/io/SvgDecoder.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace luhost::io
{

/// Looks through the text of an SVG document for what would cost far more than the document is long.
///
/// *Rationale:* the SVG library bounds depth, elements and references, but not what entities expand to, nor the size of
/// pictures and further documents that are written into an address, nor the work of a filter.
///
/// Cost: a few passes over the text, and the decoding of each embedded picture.
class SvgGuard
{
public:
    explicit SvgGuard(std::string_view text) : m_text(text) {}

    /// Whether the first element is called svg.
    bool IsSvg() const;

    /// Entities must be short plain texts, in an encoding that keeps ASCII.
    bool HasHarmlessEntities(std::string& problem);

    /// The library takes some thousand bytes for each letter of one text. Comes after HasHarmlessEntities, as the next does.
    bool HasHarmlessTexts(std::string& problem) const;

    /// What is embedded must be a picture that one of the decoders takes, or a font. Comes after HasHarmlessEntities, since
    /// an address may be spelled with entities.
    /// @param maximumPixels of all embedded pictures together
    bool HasHarmlessData(const SvgDecoder::Decoders& decoders, std::uint64_t maximumPixels, std::string& problem) const;

    /// Whether all filters of the document, each applied once to this many pixels, end in a reasonable time.
    bool HasHarmlessFilters(std::uint64_t pixels, std::string& problem) const;

private:
    bool HasKnownEncoding() const;

    std::string_view m_text;
    std::unordered_map<std::string_view, std::string_view> m_entities;
    std::size_t m_longestEntity = 0;
};

} // namespace luhost::io
