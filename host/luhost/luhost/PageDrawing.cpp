#include "PageDrawing.h"

#include <dg/XmlElem.h>
#include <luk/SerializedContentXml.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

namespace luhost
{

namespace
{

using luk::SerializedContentElement;
using luk::SerializedContentXml;
using luk::illustration2d::Lines2D;

constexpr std::string_view kDrawing = "drawing";
constexpr std::string_view kLines = "lines";
constexpr std::string_view kLine = "line";
constexpr std::string_view kPage = "page";
constexpr std::string_view kClass = "class";
constexpr std::string_view kPart = "part";
constexpr std::string_view kSymbol = "symbol";
constexpr std::string_view kTitle = "title";
constexpr std::string_view kStrokeWidth = "width";
constexpr std::string_view kDashes = "dashes";
constexpr std::string_view kColor = "color";
constexpr std::string_view kClosed = "closed";
constexpr std::string_view kPoints = "points";
constexpr std::size_t kMaxDashes = 64;

void Indent(std::string& out, int depth) { out.append(2 * static_cast<std::size_t>(depth), ' '); }

/// Finite numbers, with one blank between them.
std::optional<std::vector<double>> ParseNumbers(std::string_view text, std::size_t most)
{
    std::vector<double> numbers;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        double number = 0.0;
        if (numbers.size() == most || !SerializedContentXml::ParseReal(text.substr(0, end), number) ||
            !std::isfinite(number)) {
            return std::nullopt;
        }
        numbers.push_back(number);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return numbers;
}

std::string ReadText(const dg::XmlElem& xml, std::string_view name)
{
    std::string text;
    return SerializedContentXml::ReadAttribute(xml, name, text) ? text : std::string();
}

void AppendText(std::string& out, std::string_view name, const std::string& text)
{
    if (!text.empty()) {
        SerializedContentXml::AppendAttribute(out, name, text);
    }
}

void AppendNumbers(std::string& out, const std::vector<double>& numbers)
{
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        out.append(i == 0 ? "" : " ");
        SerializedContentXml::AppendReal(out, numbers[i]);
    }
}

bool ReadLine(const dg::XmlElem& xml, std::size_t& pointsLeft, Lines2D::Line& line, std::string& problem)
{
    const std::string_view closed = xml.GetAttribute(kClosed);
    const std::string_view points = xml.GetAttribute(kPoints);
    // Each number has a digit and a blank.
    if (points.size() / 4 > pointsLeft) {
        problem = "the drawings of the document have too many points";
        return false;
    }
    const auto numbers = ParseNumbers(points, 2 * pointsLeft);
    if (!numbers || numbers->size() < 4 || numbers->size() % 2 != 0 ||
        (xml.HasAttribute(kClosed) && closed != "true")) {
        problem = "a line is not a list of at least two points";
        return false;
    }
    line.isClosed = closed == "true";
    line.points.reserve(numbers->size() / 2);
    for (std::size_t i = 0; i < numbers->size(); i += 2) {
        line.points.push_back({(*numbers)[i], (*numbers)[i + 1]});
    }
    pointsLeft -= line.points.size();
    return true;
}

/// How all of the lines are drawn.
bool ReadLook(const dg::XmlElem& xml, Lines2D& lines, std::string& problem)
{
    double width = 0.0;
    SerializedContentElement::Value color = dg::Color::BLACK;
    const auto dashes = ParseNumbers(xml.GetAttribute(kDashes), kMaxDashes);
    const auto isLength = [](double dash) { return dash >= 0.0; };
    if (!SerializedContentXml::ParseReal(xml.GetAttribute(kStrokeWidth), width) || !std::isfinite(width) ||
        !(width > 0.0)) {
        problem = "lines have no sound \"width\"";
    } else if (!dashes || !std::all_of(dashes->begin(), dashes->end(), isLength)) {
        problem = "lines have no sound \"dashes\"";
    } else if (!SerializedContentXml::ParseValue(xml.GetAttribute(kColor), color)) {
        problem = "lines have no sound \"color\"";
    } else {
        lines.SetWidth(width);
        lines.SetDashes(*dashes);
        lines.SetColor(std::get<dg::Color>(color));
        lines.SetLineClass(ReadText(xml, kClass));
        lines.SetPart(ReadText(xml, kPart));
        lines.SetTitle(ReadText(xml, kTitle));
        const std::string symbol = ReadText(xml, kSymbol);
        lines.SetIDPath(symbol.empty() ? du::Symbol() : du::Symbol(symbol));
        return true;
    }
    return false;
}

} // namespace

void PageDrawing::Read(const dg::XmlElem& drawing, std::size_t page, std::size_t& pointsLeft,
                       DocumentProblems& problems)
{
    const KeptXml::Holder holder{kDrawing, kPage, page};
    m_kept.ReadAttributes(drawing, {}, holder, problems);
    for (dg::XmlElem child = drawing.FirstChild(); child; child = child.NextSibling()) {
        std::string problem;
        if (child.GetName() != kLines) {
            m_kept.KeepUnknown(m_read.size(), child, holder, problems);
        } else if (!ReadLines(child, page, pointsLeft, problem, problems)) {
            m_kept.KeepTold(m_read.size(), child);
            std::string text = "page " + std::to_string(page);
            problems.Add(text.append(": ").append(problem).append("; they are kept and not drawn"));
        }
    }
}

bool PageDrawing::ReadLines(const dg::XmlElem& xml, std::size_t page, std::size_t& pointsLeft, std::string& problem,
                            DocumentProblems& problems)
{
    const auto lines = du::MakeCounted<Lines>();
    if (!ReadLook(xml, *lines, problem)) {
        return false;
    }
    const KeptXml::Holder holder{kLines, kPage, page};
    KeptXml kept;
    kept.ReadAttributes(xml,
                        {kClass, "classBase64", kPart, "partBase64", kSymbol, "symbolBase64", kTitle, "titleBase64",
                         kStrokeWidth, kDashes, kColor},
                        holder, problems);
    std::vector<Lines::Line> read;
    std::size_t left = pointsLeft;
    for (dg::XmlElem child = xml.FirstChild(); child; child = child.NextSibling()) {
        if (child.GetName() != kLine) {
            kept.KeepUnknown(read.size(), child, holder, problems);
            continue;
        }
        KeptXml ofLine;
        ofLine.ReadWhole(child, {kClosed, kPoints}, {kLine, kPage, page}, problems);
        // A line that says more than is understood is not one to be drawn.
        if (!ofLine.IsEmpty()) {
            kept.KeepTold(read.size(), child);
        } else if (!ReadLine(child, left, read.emplace_back(), problem)) {
            return false;
        }
    }
    pointsLeft = left;
    lines->SetLines(std::move(read));
    m_keptOf.emplace(lines.get(), std::move(kept));
    m_read.push_back(lines);
    return true;
}

void PageDrawing::PutOn(const du::SmartPtr<luk::illustration2d::Document2D>& page)
{
    m_page = page;
    for (const du::SmartPtr<Lines>& lines : m_read) {
        lines->SetLayer(page->GetCurrentLayer());
        page->AppendNode(lines);
    }
}

std::vector<const PageDrawing::Lines*> PageDrawing::GetLines() const
{
    std::vector<const Lines*> all;
    if (!m_page) {
        std::transform(m_read.begin(), m_read.end(), std::back_inserter(all),
                       [](const auto& lines) { return lines.get(); });
        return all;
    }
    for (const du::SmartPtr<luk::illustration2d::Node2D>& node : m_page->GetNodes()) {
        if (const auto* const lines = dynamic_cast<const Lines*>(node.get())) {
            all.push_back(lines);
        }
    }
    return all;
}

void PageDrawing::Write(std::string& out, int depth) const
{
    const std::vector<const Lines*> all = GetLines();
    if (all.empty() && m_kept.IsEmpty()) {
        return;
    }
    Indent(out, depth);
    out.append("<").append(kDrawing).append(m_kept.GetAttributes()).append(">\n");
    // What was kept behind lines that are gone comes at the end.
    const std::size_t places = std::max(all.size(), m_read.size());
    for (std::size_t i = 0; i <= places; ++i) {
        m_kept.Write(out, i, depth + 1);
        if (i < all.size()) {
            WriteLines(*all[i], out, depth + 1);
        }
    }
    Indent(out, depth);
    out.append("</").append(kDrawing).append(">\n");
}

void PageDrawing::WriteLines(const Lines& lines, std::string& out, int depth) const
{
    static const KeptXml s_nothing;
    const auto found = m_keptOf.find(&lines);
    const KeptXml& kept = found == m_keptOf.end() ? s_nothing : found->second;
    Indent(out, depth);
    out.append("<").append(kLines);
    AppendText(out, kClass, lines.GetLineClass());
    AppendText(out, kPart, lines.GetPart());
    AppendText(out, kSymbol, lines.GetIDPath().GetText());
    AppendText(out, kTitle, lines.GetTitle());
    out.append(" ").append(kStrokeWidth).append("=\"");
    SerializedContentXml::AppendReal(out, lines.GetWidth());
    if (!lines.GetDashes().empty()) {
        out.append("\" ").append(kDashes).append("=\"");
        AppendNumbers(out, lines.GetDashes());
    }
    out.append("\" ").append(kColor).append("=\"");
    SerializedContentXml::AppendValue(out, lines.GetColor());
    out.append("\"").append(kept.GetAttributes()).append(">\n");
    std::vector<double> numbers;
    for (std::size_t i = 0; i < lines.GetLines().size(); ++i) {
        const Lines::Line& line = lines.GetLines()[i];
        kept.Write(out, i, depth + 1);
        numbers.clear();
        for (const dg::DPoint2D& point : line.points) {
            numbers.push_back(point.x);
            numbers.push_back(point.y);
        }
        Indent(out, depth + 1);
        out.append("<").append(kLine).append(line.isClosed ? " closed=\"true\" points=\"" : " points=\"");
        AppendNumbers(out, numbers);
        out.append("\"/>\n");
    }
    kept.Write(out, lines.GetLines().size(), depth + 1);
    Indent(out, depth);
    out.append("</").append(kLines).append(">\n");
}

void PageDrawing::ForEachKept(const std::function<void(const KeptXml&)>& look) const
{
    look(m_kept);
    for (const auto& [lines, kept] : m_keptOf) {
        look(kept);
    }
}

} // namespace luhost
