#pragma once

#include <dg/Color.h>
#include <dg/DPoint2D.h>
#include <luk/illustration2d/Node2D.h>

#include <string>
#include <utility>
#include <vector>

namespace luk::illustration2d
{

/// Lines on a page that belong to one thing and are drawn alike. Its id path is that of the annotation that they are what is
/// seen of, if any.
class LUHOST_API Lines2D : public Node2D
{
public:
    /// In units of the page.
    struct Line {
        std::vector<dg::DPoint2D> points;
        bool isClosed = false;
    };

    Lines2D() = default;
    ~Lines2D() override;

    const std::vector<Line>& GetLines() const noexcept { return m_lines; }
    void SetLines(std::vector<Line> lines) { m_lines = std::move(lines); }

    /// In millimetres, as the dashes are.
    double GetWidth() const noexcept { return m_width; }
    void SetWidth(double width) noexcept { m_width = width; }
    /// On and off by turns; empty for whole lines.
    const std::vector<double>& GetDashes() const noexcept { return m_dashes; }
    void SetDashes(std::vector<double> dashes) { m_dashes = std::move(dashes); }
    const dg::Color& GetColor() const noexcept { return m_color; }
    void SetColor(const dg::Color& color) noexcept { m_color = color; }

    /// Words that say what lines they are, such as "visible silhouette".
    const std::string& GetLineClass() const noexcept { return m_lineClass; }
    void SetLineClass(const std::string& words) { m_lineClass = words; }
    /// Id path of the part of a product that they show; may be empty.
    const std::string& GetPart() const noexcept { return m_part; }
    void SetPart(const std::string& part) { m_part = part; }
    const std::string& GetTitle() const noexcept { return m_title; }
    void SetTitle(const std::string& title) { m_title = title; }

private:
    std::vector<Line> m_lines;
    std::vector<double> m_dashes;
    std::string m_lineClass;
    std::string m_part;
    std::string m_title;
    dg::Color m_color = dg::Color::BLACK;
    double m_width = 0.35;
};

} // namespace luk::illustration2d
