#include "GalleryPage.h"

#include "catalog/PartslibraryUIData.h"
#include "GalleryAssets.h"
#include "ImageData.h"

#include <du/Utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <unordered_map>
#include <utility>

namespace lusym
{

namespace
{

/// Cards that stand in one run; the browser lays out the runs near the screen only. It divides by every number of columns
/// in the style sheet, so that only the last run of a group can end with a row that is not full.
constexpr std::size_t kCardsPerRun = 120;
/// Icons are shown at this size; a smaller picture is not blown up.
constexpr std::uint32_t kIconPixels = 64;

constexpr std::string_view kIconSizeInName = "64x64";
constexpr std::string_view kLargeSizeInName = "192x192";

enum class CharClass : unsigned char { Plain, Special, Control, BeyondAscii };

constexpr std::array<CharClass, 256> MakeCharClasses()
{
    std::array<CharClass, 256> classes{};
    for (std::size_t c = 0; c < classes.size(); ++c) {
        classes[c] = c >= 0x80 ? CharClass::BeyondAscii : c < 0x20 || c == 0x7F ? CharClass::Control : CharClass::Plain;
    }
    for (const char c : {'&', '<', '>', '"', '\'', '\r'}) {
        classes[static_cast<unsigned char>(c)] = CharClass::Special;
    }
    classes['\t'] = classes['\n'] = CharClass::Plain;
    return classes;
}

constexpr std::array<CharClass, 256> kCharClasses = MakeCharClasses();

CharClass ClassOf(char c) noexcept { return kCharClasses[static_cast<unsigned char>(c)]; }

std::string_view EntityOf(char c) noexcept
{
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&#39;";
    default:
        return "&#13;";
    }
}

/// Escapes well-formed UTF-8 for text and for quoted attributes alike. Control characters, which HTML does not allow, are
/// replaced.
void AppendEscaped(std::string& html, std::string_view utf8)
{
    const auto isKept = [](char c) { return ClassOf(c) == CharClass::Plain || ClassOf(c) == CharClass::BeyondAscii; };
    for (auto position = utf8.begin(); position != utf8.end();) {
        const auto end = std::find_if_not(position, utf8.end(), isKept);
        html.append(position, end);
        position = end;
        if (end != utf8.end()) {
            html.append(ClassOf(*position) == CharClass::Control ? "\xEF\xBF\xBD" : EntityOf(*position));
            ++position;
        }
    }
}

void AppendText(std::string& html, std::wstring_view text) { AppendEscaped(html, du::WideStrToUtf8(text)); }

/// For text that only claims to be UTF-8.
void AppendText(std::string& html, std::string_view text)
{
    const bool isAscii =
        std::none_of(text.begin(), text.end(), [](char c) { return ClassOf(c) == CharClass::BeyondAscii; });
    if (isAscii) {
        AppendEscaped(html, text);
    } else {
        AppendText(html, du::Utf8ToWideStr(text));
    }
}

std::string CountOf(std::size_t count, std::string_view one, std::string_view many)
{
    return std::to_string(count).append(" ").append(count == 1 ? one : many);
}

/// A language tag that a browser understands; "en" where the text is none.
std::string MakeLanguageTag(std::string_view language)
{
    std::string tag(language.substr(0, language.find_first_of(".@")));
    std::replace(tag.begin(), tag.end(), '_', '-');
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    const auto isAllowed = [isLetter](char c) { return isLetter(c) || (c >= '0' && c <= '9') || c == '-'; };
    const auto main = static_cast<std::size_t>(std::find_if_not(tag.begin(), tag.end(), isLetter) - tag.begin());
    const bool isTag = (main == 2 || main == 3) && (main == tag.size() || tag[main] == '-') && tag.back() != '-' &&
                       tag.size() <= 35 && std::all_of(tag.begin(), tag.end(), isAllowed);
    return isTag ? tag : "en";
}

std::string HexToBase64(std::string_view hex)
{
    const auto digit = [](char c) { return c <= '9' ? c - '0' : c - 'a' + 10; };
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes += static_cast<char>(digit(hex[i]) * 16 + digit(hex[i + 1]));
    }
    std::string base64;
    AppendBase64(base64, bytes);
    return base64;
}

/// The style rules that hold the pictures, one for each distinct file. *Rationale:* a rule is the only way to show one
/// embedded picture in many places without a script.
class PictureSheet
{
public:
    /// @return the number N of the rule ".pN"; 0 is the placeholder of the common style sheet
    std::size_t Add(std::string_view icon)
    {
        const auto [known, isNew] = m_numbers.try_emplace(icon, 0);
        if (isNew) {
            known->second = Embed(std::string(icon));
        }
        return known->second;
    }

    const std::string& GetRules() const { return m_rules; }
    std::vector<std::string> TakeMissing() { return std::move(m_missing); }

private:
    struct Picture {
        ImageType type = ImageType::Unknown;
        std::string bytes;
    };

    std::size_t Embed(const std::string& icon)
    {
        const std::optional<Picture> picture = Read(icon, kMaxGalleryPicturesBytes);
        if (!picture) {
            m_missing.push_back(icon);
            return 0;
        }
        m_rules.append(".p").append(std::to_string(++m_count)).append("{background-image:");
        const std::optional<Picture> large = ReadLarge(icon, picture->type);
        if (large) {
            m_rules += "image-set(";
            AppendUrl(*picture);
            m_rules += " 1x,";
            AppendUrl(*large);
            m_rules += " 3x)";
        } else {
            AppendUrl(*picture);
        }
        const std::optional<PixelSize> size = GetPixelSize(picture->type, picture->bytes);
        if (size && size->width < kIconPixels && size->height < kIconPixels) {
            m_rules += ";background-size:auto";
        }
        m_rules += "}\n";
        return m_count;
    }

    /// Of drawings that scale, one size is enough.
    std::optional<Picture> ReadLarge(std::string path, ImageType iconType)
    {
        const std::size_t found = path.rfind(kIconSizeInName);
        if (iconType == ImageType::Svg || found == std::string::npos) {
            return std::nullopt;
        }
        return Read(path.replace(found, kIconSizeInName.size(), kLargeSizeInName), kMaxGalleryBytesWithLarge);
    }

    /// @param maxTotalBytes of all pictures, this one included
    std::optional<Picture> Read(const std::string& path, std::size_t maxTotalBytes)
    {
        const std::size_t room = maxTotalBytes - std::min(maxTotalBytes, m_bytes);
        std::optional<std::string> bytes = ReadRegularFile(path, std::min(kMaxGalleryPictureBytes, room));
        const ImageType type = bytes ? DetectImageType(*bytes) : ImageType::Unknown;
        if (type == ImageType::Unknown) {
            return std::nullopt;
        }
        m_bytes += bytes->size();
        return Picture{type, std::move(*bytes)};
    }

    void AppendUrl(const Picture& picture)
    {
        m_rules += "url(\"";
        AppendDataUri(m_rules, picture.type, picture.bytes);
        m_rules += "\")";
    }

    std::unordered_map<std::string_view, std::size_t> m_numbers;
    std::string m_rules;
    std::size_t m_count = 0;
    std::size_t m_bytes = 0;
    std::vector<std::string> m_missing;
};

std::string_view KindOf(std::string_view userData)
{
    return userData.starts_with("ol.") ? "3D" : userData.starts_with("image.") ? "2D" : "";
}

/// Collects the parts of the page that depend on the library. Class names are explained in the style sheet.
class PageBody
{
public:
    void AddGroup(const GalleryGroup& group)
    {
        const std::string number = std::to_string(m_groupCount++);
        const std::string count = std::to_string(group.rows.size());
        m_navigation.append("<li><a href=\"#g").append(number).append("\"><bdi>");
        AppendLabel(m_navigation, group);
        m_navigation.append("</bdi> <span class=n>").append(count).append("</span></a></li>\n");

        m_sections.append("<section id=g").append(number).append(" aria-labelledby=h").append(number);
        m_sections.append("><h2 id=h").append(number).append("><bdi>");
        AppendLabel(m_sections, group);
        m_sections.append("</bdi> <span class=n>").append(count).append("<span class=v> entries</span></span></h2>\n");
        AddRuns(group.rows);
        m_sections += "</section>\n";
        m_rowCount += group.rows.size();
    }

    std::string MakeEntryCount() const
    {
        return m_rowCount == 0 ? "No entries" : CountOf(m_rowCount, "entry", "entries");
    }

    std::string MakeGroupCount() const
    {
        return m_rowCount == 0 ? std::string() : "in " + CountOf(m_groupCount, "group", "groups");
    }

    const std::string& GetNavigation() const { return m_navigation; }
    const std::string& GetSections() const { return m_sections; }
    PictureSheet& GetPictures() { return m_pictures; }

private:
    static void AppendLabel(std::string& html, const GalleryGroup& group)
    {
        AppendText(html, group.label.empty() ? L"(no name)" : group.label);
    }

    void AddRuns(const std::vector<GalleryRow>& rows)
    {
        m_sections += "<div class=g>";
        for (std::size_t first = 0; first < rows.size(); first += kCardsPerRun) {
            const std::size_t last = std::min(rows.size(), first + kCardsPerRun);
            m_sections.append("<ul class=u style=--n:").append(std::to_string(last - first)).append(">\n");
            for (std::size_t i = first; i < last; ++i) {
                AddCard(rows[i]);
            }
            m_sections += "</ul>";
        }
        m_sections += rows.empty() ? "<p>No entries</p></div>" : "</div>";
    }

    void AddCard(const GalleryRow& row)
    {
        m_sections += "<li><button type=button class=c tabindex=-1 data-n=\"";
        AppendText(m_sections, row.name);
        m_sections += "\" data-u=\"";
        AppendText(m_sections, row.userData);
        m_sections.append("\"><span class=\"p p").append(std::to_string(m_pictures.Add(row.icon)));
        m_sections += "\"></span><span class=l dir=auto>";
        if (row.label.empty()) {
            AppendText(m_sections, row.name);
        } else {
            AppendText(m_sections, row.label);
        }
        m_sections += "</span> ";
        AddMarks(row);
        AddTooltip(row);
        m_sections += "</button></li>\n";
    }

    void AddMarks(const GalleryRow& row)
    {
        m_sections += "<span class=m>";
        if (const std::string_view kind = KindOf(row.userData); !kind.empty()) {
            m_sections.append("<span class=k>").append(kind).append("</span> ");
        }
        m_sections += row.isShared ? "<span class=s>Shared or delivered</span></span>" : "</span>";
    }

    /// The title is the label nearly always and then not repeated.
    void AddTooltip(const GalleryRow& row)
    {
        const TooltipParts tooltip = ParseTooltip(row.tooltip);
        if (!tooltip.title.empty() && tooltip.title != du::WideStrToUtf8(row.label)) {
            m_sections += "<span class=t dir=auto>";
            AppendEscaped(m_sections, tooltip.title);
            m_sections += "</span>";
        }
        if (!tooltip.text.empty()) {
            m_sections += tooltip.title.empty() ? "<span class=\"d w\" dir=auto>" : "<span class=d dir=auto>";
            AppendEscaped(m_sections, tooltip.text);
            m_sections += "</span>";
        }
    }

    std::string m_navigation;
    std::string m_sections;
    PictureSheet m_pictures;
    std::size_t m_groupCount = 0;
    std::size_t m_rowCount = 0;
};

using Slots = std::initializer_list<std::pair<std::string_view, std::string_view>>;

/// Fills the places "{{name}}" of the page. Only the page's own text is searched for places, never what is put in.
std::string FillPage(std::string_view page, const Slots& slots)
{
    std::size_t size = page.size();
    for (const auto& slot : slots) {
        size += slot.second.size();
    }
    std::string html;
    html.reserve(size);
    for (std::size_t open = page.find("{{"); open != std::string_view::npos; open = page.find("{{")) {
        const std::size_t close = page.find("}}", open);
        const std::string_view name = page.substr(open + 2, close - open - 2);
        html.append(page.substr(0, open));
        for (const auto& [slotName, value] : slots) {
            html.append(slotName == name ? value : std::string_view());
        }
        page.remove_prefix(close + 2);
    }
    return html.append(page);
}

/// Reads the parallel lists; ends where the shortest of them ends.
class RowReader
{
public:
    explicit RowReader(const lusymbols::PartslibraryUIData& data)
        : m_data(data),
          m_count(std::min({data.GetIcons().size(), data.GetLabels().size(), data.GetTooltips().size(),
                            data.GetUserData().size(), data.GetNames().size(), data.GetSharedItems().size()}))
    {
    }

    bool IsAtEnd() const { return m_next == m_count; }

    std::vector<GalleryRow> Take(std::size_t count)
    {
        std::vector<GalleryRow> rows;
        rows.reserve(std::min(count, m_count - m_next));
        for (; rows.size() < count && !IsAtEnd(); ++m_next) {
            rows.push_back({m_data.GetIcons()[m_next], m_data.GetLabels()[m_next], m_data.GetTooltips()[m_next],
                            m_data.GetUserData()[m_next], m_data.GetNames()[m_next], m_data.GetSharedItems()[m_next]});
        }
        return rows;
    }

private:
    const lusymbols::PartslibraryUIData& m_data;
    std::size_t m_count;
    std::size_t m_next = 0;
};

std::vector<GalleryGroup> MakeGroups(const GalleryContent& content)
{
    RowReader reader(content.rows);
    std::vector<GalleryGroup> groups;
    const std::vector<std::wstring>& labels = content.rows.GetGroupLabels();
    for (std::size_t g = 0; g < labels.size(); ++g) {
        const std::size_t count = g < content.rowsPerGroup.size() ? content.rowsPerGroup[g] : 0;
        groups.push_back({labels[g], reader.Take(count)});
    }
    if (!reader.IsAtEnd()) {
        groups.push_back({L"Other", reader.Take(content.rows.GetIcons().size())});
    }
    return groups;
}

} // namespace

TooltipParts ParseTooltip(std::wstring_view richText)
{
    static constexpr std::wstring_view kBoldOn = L"\\b ";
    static constexpr std::wstring_view kBoldOff = L"\\b0 \n ";
    const std::size_t titleEnd = richText.find(kBoldOff);
    if (!richText.starts_with(kBoldOn) || titleEnd == std::wstring_view::npos) {
        return {{}, du::WideStrToUtf8(richText)};
    }
    return {du::WideStrToUtf8(richText.substr(kBoldOn.size(), titleEnd - kBoldOn.size())),
            du::WideStrToUtf8(richText.substr(titleEnd + kBoldOff.size()))};
}

GalleryPageResult WriteGalleryPage(const GalleryContent& content)
{
    return WriteGalleryPage(content.title, content.language, MakeGroups(content));
}

GalleryPageResult WriteGalleryPage(std::string_view title, std::string_view language,
                                   const std::vector<GalleryGroup>& groups)
{
    PageBody body;
    for (const GalleryGroup& group : groups) {
        body.AddGroup(group);
    }
    std::string heading;
    AppendText(heading, title.empty() ? "Symbol library" : title);
    return {FillPage(kGalleryPageHtml, {{"language", MakeLanguageTag(language)},
                                        {"title", heading},
                                        {"entryCount", body.MakeEntryCount()},
                                        {"groupCount", body.MakeGroupCount()},
                                        {"style", kGalleryPageCss},
                                        {"pictures", body.GetPictures().GetRules()},
                                        {"navigation", body.GetNavigation()},
                                        {"sections", body.GetSections()},
                                        {"script", kGalleryPageJs},
                                        {"scriptHash", HexToBase64(kGalleryPageJsSha256)}}),
            body.GetPictures().TakeMissing()};
}

} // namespace lusym
