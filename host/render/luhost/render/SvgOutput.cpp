#include <dg/FormatNumber.h>
#include <luhost/render/DrawingOutput.h>
#include <luhost/render/Placement.h>
#include <luhost/render/PngEncoder.h>
#include <luhost/render/StrokePlacement.h>
#include <luhost/render/XmlText.h>

#include <array>
#include <charconv>
#include <cmath>
#include <glib.h>
#include <memory>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

namespace luhost::render
{

namespace
{

/// Digits enough to place a pixel of a picture on the largest sheet, few enough to hide how machines round.
constexpr int kSignificantDigits = 8;
/// Below this a coordinate or a factor is what rounding has left of 0.
constexpr double kSmallestNumber = 1e-9;

void AppendCoordinate(std::string& out, double value)
{
    std::array<char, 32> buffer;
    const double cleaned = std::fabs(value) < kSmallestNumber ? 0.0 : value;
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), cleaned, std::chars_format::general,
                                      kSignificantDigits);
    out.append(buffer.data(), result.ptr);
}

void AppendBase64(std::string& out, std::string_view bytes)
{
    const std::unique_ptr<gchar, void (*)(void*)> base64(
        g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size()), g_free);
    out += base64.get();
}

bool AppendPng(std::string& out, const Raster& pixels)
{
    std::string png;
    if (!EncodePng(pixels, png)) {
        return false;
    }
    out += "data:image/png;base64,";
    AppendBase64(out, png);
    return true;
}

class SvgWriter
{
public:
    explicit SvgWriter(const Drawing& drawing) : m_drawing(drawing), m_sheet(SheetOf(drawing)) {}

    /// @return empty when there was no memory for a picture
    std::string Write()
    {
        PlacePictures();
        OpenDocument();
        WriteSymbols();
        WriteUnderlay();
        WriteAllStrokes();
        for (const auto& [picture, placement] : m_placed) {
            WritePicture(*picture, placement);
        }
        m_out += "</svg>\n";
        return m_complete ? std::move(m_out) : std::string();
    }

private:
    void PlacePictures()
    {
        for (const DrawnPicture& picture : m_drawing.pictures) {
            auto placement = Place(picture, m_sheet, 1.0, 1.0, m_store);
            if (!placement) {
                continue;
            }
            if (placement->content == Placement::Content::Whole) {
                CountUse(*placement->use.picture);
            }
            m_placed.emplace_back(&picture, std::move(*placement));
        }
    }

    void CountUse(StoredPicture& picture)
    {
        if (picture.GetNumber() >= m_uses.size()) {
            m_uses.resize(picture.GetNumber() + 1, {nullptr, 0});
        }
        auto& [stored, count] = m_uses[picture.GetNumber()];
        stored = &picture;
        ++count;
    }

    void OpenDocument()
    {
        const bool inMillimetres = m_drawing.unit == Drawing::Unit::Millimetre;
        m_out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
                "xmlns:xlink=\"http://www.w3.org/1999/xlink\"";
        const std::string_view unit = inMillimetres ? "mm" : "px";
        const double scale = inMillimetres ? 1.0 : PixelsPerUnit(m_drawing);
        WriteNumber(" width=\"", m_sheet.width * scale);
        m_out.append(unit).append("\"");
        WriteNumber(" height=\"", m_sheet.height * scale);
        m_out.append(unit).append("\"");
        WriteNumber(" viewBox=\"0 0 ", m_sheet.width);
        WriteNumber(" ", m_sheet.height);
        m_out += "\">\n";
        WriteWords("title", m_drawing.title);
        if (m_drawing.background.alpha > 0.0F) {
            m_out += "<rect width=\"100%\" height=\"100%\"";
            WriteColor("fill", Clamped(m_drawing.background));
            m_out += "/>\n";
        }
    }

    void WriteSymbols()
    {
        for (const auto& [picture, count] : m_uses) {
            if (count < 2) {
                continue;
            }
            WriteInteger("<symbol id=\"picture", picture->GetNumber() + 1);
            // What a symbol cuts off at its border, programs fade: nothing is to be cut.
            m_out += "\" overflow=\"visible\">";
            WriteImage(*picture, "");
            m_out += "</symbol>\n";
        }
    }

    void WriteUnderlay()
    {
        if (!m_drawing.underlay || m_drawing.underlay->pixels.empty()) {
            return;
        }
        WriteNumber("<image width=\"", m_sheet.width);
        WriteNumber("\" height=\"", m_sheet.height);
        m_out += "\" preserveAspectRatio=\"none\" xlink:href=\"";
        m_complete = AppendPng(m_out, *m_drawing.underlay) && m_complete;
        m_out += "\"/>\n";
    }

    /// Neighbours that are drawn alike share a group.
    void WriteAllStrokes()
    {
        std::string group;
        for (const DrawnStrokes& strokes : m_drawing.strokes) {
            const PlacedStrokes placed = PlaceStrokes(strokes, m_sheet, 1.0, 1.0);
            if (placed.lines.empty()) {
                continue;
            }
            std::string opening = OpeningOf(placed);
            if (opening != group) {
                m_out.append(group.empty() ? "" : "</g>\n").append(opening);
                group = std::move(opening);
            }
            WriteStrokes(strokes, placed);
        }
        m_out += group.empty() ? "" : "</g>\n";
    }

    std::string OpeningOf(const PlacedStrokes& placed)
    {
        std::string before = std::exchange(m_out, "<g fill=\"none\"");
        WriteColor("stroke", placed.color);
        WriteNumber(" stroke-width=\"", placed.width);
        m_out += "\" stroke-linecap=\"round\" stroke-linejoin=\"round\"";
        for (std::size_t i = 0; i < placed.dashes.size(); ++i) {
            WriteNumber(i == 0 ? " stroke-dasharray=\"" : " ", placed.dashes[i]);
        }
        m_out += placed.dashes.empty() ? ">\n" : "\">\n";
        return std::exchange(m_out, std::move(before));
    }

    void WriteStrokes(const DrawnStrokes& strokes, const PlacedStrokes& placed)
    {
        OpenLink(strokes.link);
        m_out += "<path";
        for (const auto& [before, text] :
             {std::pair(" class=\"", &strokes.lineClass), std::pair(" data-part=\"", &strokes.part),
              std::pair(" data-annotation=\"", &strokes.annotation)}) {
            if (!text->empty()) {
                WriteText(before, *text);
                m_out += "\"";
            }
        }
        m_out += " d=\"";
        for (const Line& line : placed.lines) {
            WritePath(line);
        }
        if (strokes.title.empty()) {
            m_out += "\"/>\n";
        } else {
            m_out += "\">";
            WriteWords("title", strokes.title);
            m_out.back() = '<';
            m_out += "/path>\n";
        }
        CloseLink(strokes.link);
    }

    void OpenLink(const std::string& link)
    {
        if (!link.empty()) {
            WriteText("<a xlink:href=\"", link);
            m_out += "\">\n";
        }
    }

    void CloseLink(const std::string& link) { m_out += link.empty() ? "" : "</a>\n"; }

    void WritePath(const Line& line)
    {
        for (std::size_t i = 0; i < line.points.size(); ++i) {
            WriteNumber(i == 0 ? "M" : i == 1 ? "L" : " ", line.points[i].x);
            WriteNumber(" ", line.points[i].y);
        }
        m_out += line.closed ? "Z" : "";
    }

    void WritePicture(const DrawnPicture& picture, const Placement& placement)
    {
        const std::size_t mask = WriteMask(placement.mask);
        OpenLink(picture.link);
        m_out += "<g";
        if (mask > 0) {
            WriteInteger(" mask=\"url(#mask", mask);
            m_out += ")\"";
        }
        if (!picture.id.empty()) {
            WriteText(" data-annotation=\"", picture.id);
            m_out += "\"";
        }
        if (placement.opacity < 1.0) {
            WriteNumber(" opacity=\"", placement.opacity);
            m_out += "\"";
        }
        m_out += ">\n";
        WriteWords("title", picture.title);
        WriteWords("desc", picture.description);
        if (placement.fillColor.alpha > 0.0F) {
            WriteLine({placement.box.outline, true});
            WriteColor("fill", placement.fillColor);
            m_out += "/>\n";
        }
        WriteContent(placement);
        for (const Line& line : placement.lineWidth > 0.0 ? placement.box.frame : std::vector<Line>()) {
            WriteLine(line);
            m_out += " fill=\"none\"";
            WriteColor("stroke", placement.lineColor);
            WriteNumber(" stroke-width=\"", placement.lineWidth);
            m_out += "\"/>\n";
        }
        m_out += "</g>\n";
        CloseLink(picture.link);
    }

    /// @return its number, from 1; 0 for none
    std::size_t WriteMask(const PlacedMask& mask)
    {
        if (!mask.pixels) {
            return 0;
        }
        WriteInteger("<mask id=\"mask", ++m_maskCount);
        m_out += "\" maskUnits=\"userSpaceOnUse\"";
        const std::string box = BoxText(mask.left, mask.top, mask.width, mask.height);
        m_out.append(box).append("><image").append(box).append(" preserveAspectRatio=\"none\" xlink:href=\"");
        m_complete = AppendPng(m_out, *mask.pixels) && m_complete;
        m_out += "\"/></mask>\n";
        return m_maskCount;
    }

    static std::string BoxText(double left, double top, double width, double height)
    {
        std::string text;
        for (const auto& [name, value] : {std::pair(" x=\"", left), std::pair("\" y=\"", top),
                                          std::pair("\" width=\"", width), std::pair("\" height=\"", height)}) {
            text += name;
            AppendCoordinate(text, value);
        }
        return text += '"';
    }

    void WriteContent(const Placement& placement)
    {
        switch (placement.content) {
        case Placement::Content::Nothing:
            break;
        case Placement::Content::Missing:
            WriteMissing(placement);
            break;
        case Placement::Content::Whole:
            WriteWhole(placement);
            break;
        case Placement::Content::Patch:
            WritePatch(placement);
            break;
        }
    }

    void WriteMissing(const Placement& placement)
    {
        constexpr float kGrey = static_cast<float>(kMissingGrey);
        m_out += "<g fill=\"none\"";
        WriteColor("stroke", {kGrey, kGrey, kGrey, 1.0F});
        WriteNumber(" stroke-width=\"", m_sheet.thinLine);
        m_out += "\">\n";
        for (const Line& line : placement.box.cross) {
            WriteLine(line);
            m_out += "/>\n";
        }
        for (const Line& line : placement.box.frame) {
            WriteLine(line);
            WriteNumber(" stroke-dasharray=\"", kMissingDash * m_sheet.thinLine);
            m_out += "\"/>\n";
        }
        m_out += "</g>\n";
    }

    void WriteWhole(const Placement& placement)
    {
        StoredPicture& picture = *placement.use.picture;
        const auto& [origin, right, opposite, below] = placement.corners;
        std::string transform = " transform=\"matrix(";
        const std::array<double, 6> entries{(right.x - origin.x) / picture.GetWidth(),
                                            (right.y - origin.y) / picture.GetWidth(),
                                            (below.x - origin.x) / picture.GetHeight(),
                                            (below.y - origin.y) / picture.GetHeight(),
                                            origin.x,
                                            origin.y};
        for (const double entry : entries) {
            AppendCoordinate(transform, entry);
            transform += ' ';
        }
        transform.back() = ')';
        transform += '"';
        if (m_uses[picture.GetNumber()].second < 2) {
            WriteImage(picture, transform);
            m_out += "\n";
        } else {
            WriteInteger("<use xlink:href=\"#picture", picture.GetNumber() + 1);
            m_out.append("\"").append(transform).append("/>\n");
        }
    }

    void WriteImage(StoredPicture& picture, std::string_view transform)
    {
        WriteNumber("<image width=\"", picture.GetWidth());
        WriteNumber("\" height=\"", picture.GetHeight());
        m_out.append("\" preserveAspectRatio=\"none\"").append(transform).append(" xlink:href=\"");
        if (const std::string* svg = picture.GetVectorSource()) {
            m_out += "data:image/svg+xml;base64,";
            AppendBase64(m_out, *svg);
        } else if (!AppendPng(m_out, picture.GetPixels())) {
            m_complete = false;
        }
        m_out += "\"/>";
    }

    void WritePatch(const Placement& placement)
    {
        Patch patch = MakePatch(placement, m_sheet, PatchPixelsPerUnit(m_drawing), kMostPatchPixels);
        const std::size_t number = ++m_clipCount;
        WriteInteger("<clipPath id=\"clip", number);
        m_out += "\">";
        WriteLine({placement.box.outline, true});
        WriteInteger("/></clipPath>\n<g clip-path=\"url(#clip", number);
        m_out.append(")\"><image")
            .append(BoxText(patch.left, patch.top, patch.pixels.width / patch.pixelsPerUnit,
                            patch.pixels.height / patch.pixelsPerUnit));
        m_out += " preserveAspectRatio=\"none\" xlink:href=\"";
        m_complete = AppendPng(m_out, patch.pixels) && m_complete;
        m_out += "\"/></g>\n";
    }

    /// Leaves the element open for more attributes.
    void WriteLine(const Line& line)
    {
        m_out += line.closed ? "<polygon points=\"" : "<polyline points=\"";
        for (std::size_t i = 0; i < line.points.size(); ++i) {
            WriteNumber(i == 0 ? "" : " ", line.points[i].x);
            WriteNumber(",", line.points[i].y);
        }
        m_out += "\"";
    }

    void WriteColor(std::string_view attribute, const dg::Color& color)
    {
        constexpr std::string_view kDigits = "0123456789abcdef";
        m_out.append(" ").append(attribute).append("=\"#");
        for (const float channel : {color.red, color.green, color.blue}) {
            const auto level = static_cast<std::size_t>(std::lround(channel * 255.0F));
            m_out += kDigits[level / 16];
            m_out += kDigits[level % 16];
        }
        m_out += "\"";
        if (color.alpha < 1.0F) {
            m_out.append(" ").append(attribute).append("-opacity=\"");
            dg::AppendNumber(m_out, color.alpha);
            m_out += "\"";
        }
    }

    void WriteWords(std::string_view element, std::string_view words)
    {
        if (!words.empty()) {
            m_out.append("<").append(element).append(">");
            AppendXmlText(m_out, words);
            m_out.append("</").append(element).append(">\n");
        }
    }

    void WriteText(std::string_view before, std::string_view text)
    {
        m_out += before;
        AppendXmlText(m_out, text);
    }

    void WriteNumber(std::string_view before, double value)
    {
        m_out += before;
        AppendCoordinate(m_out, value);
    }

    void WriteInteger(std::string_view before, std::size_t value)
    {
        m_out.append(before).append(std::to_string(value));
    }

    const Drawing& m_drawing;
    Sheet m_sheet;
    PictureStore m_store;
    std::vector<std::pair<const DrawnPicture*, Placement>> m_placed;
    std::vector<std::pair<StoredPicture*, std::size_t>> m_uses; ///< as a whole, by the number of the picture
    std::size_t m_clipCount = 0;
    std::size_t m_maskCount = 0;
    std::string m_out;
    bool m_complete = true;
};

} // namespace

bool WriteSvg(const Drawing& drawing, std::string& svg, std::string& error)
{
    svg.clear();
    if (!CheckSheet(drawing, error)) {
        return false;
    }
    try {
        svg = SvgWriter(drawing).Write();
    } catch (const std::bad_alloc&) {
        svg.clear();
    }
    if (svg.empty()) {
        error = "out of memory";
    }
    return !svg.empty();
}

} // namespace luhost::render
