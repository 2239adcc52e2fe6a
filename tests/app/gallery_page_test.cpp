#include "app/GalleryAssets.h"
#include "app/GalleryPage.h"
#include "app/ImageData.h"
#include "catalog/PartslibraryCategoryItem.h"
#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "catalog/PartslibraryUIData.h"
#include "Process.h"
#include "support/TemporaryFolder.h"

#include <du/Utf8.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sys/stat.h>

namespace
{

using namespace lusym;
using namespace lusymbols;
using Strings = std::vector<std::string>;

const std::string kReplacement = "\xEF\xBF\xBD";

std::size_t CountOf(std::string_view text, std::string_view part)
{
    std::size_t count = 0;
    for (std::size_t i = text.find(part); i != std::string_view::npos; i = text.find(part, i + part.size())) {
        ++count;
    }
    return count;
}

/// All that stands between the two texts, in order.
Strings Between(std::string_view text, std::string_view before, std::string_view after)
{
    Strings found;
    for (std::size_t i = text.find(before); i != std::string_view::npos; i = text.find(before, i)) {
        i += before.size();
        found.emplace_back(text.substr(i, text.find(after, i) - i));
    }
    return found;
}

std::string Png(std::uint8_t width, std::uint8_t height, std::string_view rest = "pixels")
{
    std::string png("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0w\0\0\0h", 24);
    png[19] = static_cast<char>(width);
    png[23] = static_cast<char>(height);
    return png.append(rest);
}

std::string Base64(std::string_view bytes)
{
    std::string base64;
    lusym::AppendBase64(base64, bytes);
    return base64;
}

GalleryPageResult PageOfIcons(const Strings& icons)
{
    GalleryGroup group{L"Group", {}};
    for (const std::string& icon : icons) {
        group.rows.push_back({icon, L"Label", {}, "image.1", "name", false});
    }
    return WriteGalleryPage("Library", "en", {group});
}

Strings PictureClasses(std::string_view page) { return Between(page, "<span class=\"p ", "\""); }

/// The texts of a page with one entry, which a hostile library chooses.
struct Texts {
    std::string title, name, userData;
    std::wstring group, label, tooltip;
};

std::string PageOf(const Texts& texts)
{
    const GalleryRow row{{}, texts.label, texts.tooltip, texts.userData, texts.name, true};
    return WriteGalleryPage(texts.title, "en", {{texts.group, {row}}}).html;
}

Texts SameText(const std::string& text)
{
    const std::wstring wide = du::Utf8ToWideStr(text);
    return {text, text, "ol." + text, wide, wide, L"\\b other " + wide + L"\\b0 \n " + wide};
}

/// The SHA-256 of a text in Base64, made with the tool of the system.
std::string Base64OfSha256(std::string_view text)
{
    const test::TemporaryFolder folder;
    const std::string hex = test::RunProcess({"/bin/sh", "-c", "sha256sum < " + folder.Write("text", text)}).out;
    std::string hash;
    for (std::size_t i = 0; i + 1 < std::min<std::size_t>(hex.size(), 64); i += 2) {
        hash += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    return Base64(hash);
}

TEST(GalleryPage, TextsOfTheLibraryStayTexts)
{
    const std::map<char, std::string> entities = {
        {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&#39;"}};
    const std::string plain = PageOf(SameText("text"));
    for (const std::string text : {
             "</span></button><script>alert(1)</script>",
             "\" onmouseover=\"alert(1)",
             "' onfocus='alert(1)",
             "</title></style></script><img src=x onerror=alert(1)>",
             "<!--",
             "]]><svg onload=alert(1)>",
             "&lt;b&gt; &amp; &#60;script&#62; &notin;",
             "{{script}} {{sections}} {{",
             "`${alert(1)}` \\u003cscript\\u003e",
             "javascript:alert(1)",
         }) {
        SCOPED_TRACE(text);
        const std::string page = PageOf(SameText(text));
        // A text that opened or closed anything would change how often one of these stands in the page.
        for (const std::string_view mark : {"<", ">", "\"", "'"}) {
            EXPECT_EQ(CountOf(page, mark), CountOf(plain, mark)) << mark;
        }
        EXPECT_EQ(CountOf(page, kGalleryPageJs), 1u);
        std::string escaped;
        for (const char c : text) {
            const auto entity = entities.find(c);
            escaped += entity == entities.end() ? std::string(1, c) : entity->second;
        }
        // Three times the title, the group's label twice, name, user data, label, and both parts of the tooltip.
        EXPECT_EQ(CountOf(page, escaped) - CountOf(plain, escaped), 10u);
    }
}

TEST(GalleryPage, IllFormedTextBecomesWellFormed)
{
    for (const auto& [text, shown] : std::vector<std::pair<std::string, std::string>>{
             {"a\xFF\xC3", "a" + kReplacement + kReplacement},
             {"\xED\xA0\x80", kReplacement + kReplacement + kReplacement},
             {"\xC0\xBCscript>", kReplacement + kReplacement + "script&gt;"},
             {std::string("a\0b", 3), "a" + kReplacement + "b"},
             {"\x1B[31m\x7F\b", kReplacement + "[31m" + kReplacement + kReplacement},
             {"a\r\nb\tc", "a&#13;\nb\tc"},
         }) {
        SCOPED_TRACE(testing::PrintToString(text));
        const std::string page = PageOf({text, text, "image." + text, L"g", L"l", L"t"});
        EXPECT_EQ(du::WideStrToUtf8(du::Utf8ToWideStr(page)), page);
        EXPECT_EQ(Between(page, "data-n=\"", "\""), Strings{shown});
        EXPECT_EQ(Between(page, "data-u=\"", "\""), Strings{"image." + shown});
        EXPECT_EQ(Between(page, "<title>", "</title>"), Strings{shown});
    }
    const std::wstring loneSurrogate{L'a', static_cast<wchar_t>(0xD800), L'b'};
    const std::string page = PageOf({"t", "n", "u", loneSurrogate, loneSurrogate, loneSurrogate});
    EXPECT_EQ(CountOf(page, "a" + kReplacement + "b"), 4u);
}

TEST(GalleryPage, AllowsItsOwnScriptAndNothingElse)
{
    const std::string page = PageOf(SameText("text"));
    const Strings scripts = Between(page, "<script>", "</script>");
    ASSERT_EQ(scripts.size(), 1u);
    EXPECT_EQ(Base64("f") + Base64("foo") + Base64("\xFF\xFE\xFB"), "Zg==Zm9v//77");
    ASSERT_EQ(Base64OfSha256("abc"), "ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0=");
    EXPECT_EQ(Between(page, "Content-Security-Policy\" content=\"", "\""),
              Strings{"default-src 'none'; img-src data:; style-src 'unsafe-inline'; script-src 'sha256-" +
                      Base64OfSha256(scripts.front()) + "'; base-uri 'none'; form-action 'none'"});
    // Addresses would be a way out, even where the policy forbids it; names of XML namespaces are none.
    EXPECT_EQ(CountOf(page, "http"), CountOf(page, "http-equiv") + CountOf(page, "xmlns='http://www.w3.org/2000/svg'"));
}

TEST(GalleryPage, ReadsTitleAndDescriptionOfTooltips)
{
    const std::tuple<std::wstring, std::string, std::string> cases[] = {
        {L"\\b Bolt\\b0 \n Tighten.", "Bolt", "Tighten."},
        {L"\\b Bolt\\b0 \n ", "Bolt", ""},
        {L"\\b Bolt\\b0 \n first\n\n second \\b0 \n third", "Bolt", "first\n\n second \\b0 \n third"},
        {L"\\b Two\nlines\\b0 \n x", "Two\nlines", "x"},
        {L"\\b \\b0 \n only text", "", "only text"},
        {L"", "", ""},
        {L"plain", "", "plain"},
        {L"\\b never ends", "", "\\b never ends"},
        {L"\\b Bolt\\b0 no line feed", "", "\\b Bolt\\b0 no line feed"},
        {L" \\b Bolt\\b0 \n late", "", " \\b Bolt\\b0 \n late"},
        {L"\\b0 \n \\b ", "", "\\b0 \n \\b "},
        {L"\\b Ärmel \U0001F529\\b0 \n ש", "Ärmel 🔩", "ש"},
    };
    for (const auto& [richText, title, text] : cases) {
        const TooltipParts parts = ParseTooltip(richText);
        EXPECT_EQ(parts.title, title) << parts.text;
        EXPECT_EQ(parts.text, text) << parts.title;
    }
}

TEST(GalleryPage, ShowsEachTooltipTextOnceAndNamesEntriesWithoutTexts)
{
    const std::string usual = PageOf({"t", "n", "u", L"g", L"Bolt", L"\\b Bolt\\b0 \n Tighten."});
    EXPECT_EQ(CountOf(usual, "Bolt"), 1u);
    EXPECT_EQ(Between(usual, "<span class=d dir=auto>", "</span>"), Strings{"Tighten."});

    const std::string other = PageOf({"t", "n", "u", L"g", L"Bolt", L"\\b Screw\\b0 \n "});
    EXPECT_EQ(Between(other, "<span class=t dir=auto>", "</span>"), Strings{"Screw"});
    EXPECT_EQ(CountOf(other, "<span class=d"), 0u);

    const std::string plain = PageOf({"t", "n", "u", L"g", L"Bolt", L"as <it> is"});
    EXPECT_EQ(Between(plain, "<span class=\"d w\" dir=auto>", "</span>"), Strings{"as &lt;it&gt; is"});

    const std::string page = PageOf({"", "bolt7", "other", L"", L"", L""});
    EXPECT_EQ(Between(page, "<span class=l dir=auto>", "</span>"), Strings{"bolt7"});
    EXPECT_EQ(CountOf(page, "<bdi>(no name)</bdi>"), 2u);
    EXPECT_EQ(Between(page, "<title>", "</title>"), Strings{"Symbol library"});
    EXPECT_EQ(CountOf(page, "<span class=k>"), 0u);
}

TEST(GalleryPage, LanguageIsATagOrEnglish)
{
    const std::pair<std::string, std::string> cases[] = {
        {"de", "de"},
        {"pt-BR", "pt-BR"},
        {"de_DE.UTF-8", "de-DE"},
        {"ca_ES@valencia", "ca-ES"},
    };
    for (const auto& [language, tag] : cases) {
        EXPECT_EQ(Between(WriteGalleryPage("t", language, {}).html, "<html lang=\"", "\""), Strings{tag});
    }
    const Strings none = {"", "C", "POSIX", "de-", "de\" onload=\"x", "d\xC3\xA9", "de-" + std::string(40, 'x')};
    for (const std::string& bad : none) {
        EXPECT_EQ(Between(WriteGalleryPage("t", bad, {}).html, "<html lang=\"", "\""), Strings{"en"}) << bad;
    }
}

TEST(GalleryPage, RecognisesPicturesByContent)
{
    using namespace std::string_view_literals;
    const std::pair<std::string_view, ImageType> cases[] = {
        {"\x89PNG\r\n\x1a\nrest"sv, ImageType::Png},
        {"\x89PNG\n\x1a\nrest"sv, ImageType::Unknown},
        {"\xFF\xD8\xFF\xE0"sv, ImageType::Jpeg},
        {"\xFF\xD8"sv, ImageType::Unknown},
        {"GIF87a"sv, ImageType::Gif},
        {"GIF89a.."sv, ImageType::Gif},
        {"GIF88a.."sv, ImageType::Unknown},
        {"RIFF\x08\0\0\0WEBPVP8 "sv, ImageType::Webp},
        {"RIFF\x08\0\0\0WAVEfmt "sv, ImageType::Unknown},
        {"RIFF\x08\0\0\0WEB"sv, ImageType::Unknown},
        {"<svg xmlns='http://www.w3.org/2000/svg'/>"sv, ImageType::Svg},
        {"\xEF\xBB\xBF \n<?xml version='1.0'?><!-- <html> --><svg:svg xmlns:svg='x'/>"sv, ImageType::Svg},
        {"<!DOCTYPE svg PUBLIC \"a>b\" 'c' [ <!ENTITY ns \"x]>\"> ]>\n<svg/>"sv, ImageType::Svg},
        {"<svg>"sv, ImageType::Svg},
        {"<svg"sv, ImageType::Unknown},
        {"<svgx/>"sv, ImageType::Unknown},
        {"<html><svg/></html>"sv, ImageType::Unknown},
        {"<!-- <svg/>"sv, ImageType::Unknown},
        {"<!DOCTYPE svg [ <svg/>"sv, ImageType::Unknown},
        {"<?xml <svg/>"sv, ImageType::Unknown},
        {"text <svg/>"sv, ImageType::Unknown},
        {"<"sv, ImageType::Unknown},
        {""sv, ImageType::Unknown},
    };
    for (const auto& [bytes, type] : cases) {
        EXPECT_EQ(lusym::DetectImageType(bytes), type) << bytes;
    }
}

TEST(GalleryPage, EachPictureStandsInThePageOnce)
{
    const test::TemporaryFolder folder;
    const std::string png = Png(64, 64, "one");
    const std::string svg = "<svg xmlns='http://www.w3.org/2000/svg'><script>alert(1)</script></svg>";
    const std::string a = folder.Write("a.jpg", png);
    const std::string b = folder.Write("b.png", svg);
    const GalleryPageResult page = PageOfIcons({a, b, a, a, b});

    EXPECT_TRUE(page.missingIcons.empty());
    EXPECT_EQ(PictureClasses(page.html), (Strings{"p1", "p2", "p1", "p1", "p2"}));
    EXPECT_EQ(CountOf(page.html, "url(\"data:image/png;base64," + Base64(png) + "\")"), 1u);
    EXPECT_EQ(CountOf(page.html, "url(\"data:image/svg+xml;base64," + Base64(svg) + "\")"), 1u);
    EXPECT_EQ(CountOf(page.html, "alert(1)"), 0u);
}

TEST(GalleryPage, LargeThumbnailsJoinTheirIcons)
{
    const test::TemporaryFolder folder;
    const std::string small = Png(64, 64, "small");
    const std::string large = Png(192, 192, "large");
    // The size in a folder's name is not the one that counts.
    const std::string both = folder.Write("64x64/a_64x64.png", small);
    folder.Write("64x64/a_192x192.png", large);
    folder.Write("192x192/a_64x64.png", Png(9, 9, "wrong"));
    const std::string alone = folder.Write("alone_64x64.png", small);
    const std::string tiny = folder.Write("tiny.png", Png(16, 63));
    const std::string drawing = folder.Write("drawing_64x64.svg", "<svg/>");
    folder.Write("drawing_192x192.svg", "<svg id='large'/>");
    const GalleryPageResult page = PageOfIcons({both, alone, tiny, drawing});

    EXPECT_TRUE(page.missingIcons.empty());
    const std::string smallUrl = "url(\"data:image/png;base64," + Base64(small) + "\")";
    EXPECT_EQ(Between(page.html, ".p1{", "}"), Strings{"background-image:image-set(" + smallUrl +
                                                       " 1x,url(\"data:image/png;base64," + Base64(large) + "\") 3x)"});
    EXPECT_EQ(Between(page.html, ".p2{", "}"), Strings{"background-image:" + smallUrl});
    EXPECT_NE(Between(page.html, ".p3{", "}").at(0).find(";background-size:auto"), std::string::npos);
    EXPECT_EQ(Between(page.html, ".p4{", "}"),
              Strings{"background-image:url(\"data:image/svg+xml;base64," + Base64("<svg/>") + "\")"});
}

TEST(GalleryPage, WhatIsNoPictureIsToldOnceAndReplaced)
{
    const test::TemporaryFolder folder;
    const std::string good = folder.Write("good.png", Png(64, 64));
    const std::string pipe = folder.Path("pipe.png");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string largest = folder.Write("largest.png", Png(64, 64));
    std::filesystem::resize_file(largest, kMaxGalleryPictureBytes);
    const std::string tooLarge = folder.Write("too_large.png", Png(64, 64));
    std::filesystem::resize_file(tooLarge, kMaxGalleryPictureBytes + 1);
    const Strings missing = {
        folder.Path("absent.png"), folder.Path(), pipe,        folder.Write("text.png", "no picture"),
        folder.Write("empty", ""), tooLarge,      "/dev/zero", good + std::string("\0.svg", 5),
        "https://example.com/a",   std::string(),
    };
    Strings icons = missing;
    icons.push_back(good);
    icons.push_back(largest);
    icons.insert(icons.end(), missing.begin(), missing.end());
    const GalleryPageResult page = PageOfIcons(icons);

    EXPECT_EQ(page.missingIcons, missing);
    Strings classes(icons.size(), "p0");
    classes[missing.size()] = "p1";
    classes[missing.size() + 1] = "p2";
    EXPECT_EQ(PictureClasses(page.html), classes);
}

TEST(GalleryPage, AllPicturesTogetherHaveALimit)
{
    const test::TemporaryFolder folder;
    Strings icons;
    for (std::size_t i = 0; i <= kMaxGalleryPicturesBytes / kMaxGalleryPictureBytes; ++i) {
        const std::string name = std::to_string(i);
        icons.push_back(folder.Write(name + "_64x64.png", Png(64, 64)));
        std::filesystem::resize_file(icons.back(), kMaxGalleryPictureBytes - 100);
        folder.Write(name + "_192x192.png", Png(192, 192));
    }
    const GalleryPageResult page = PageOfIcons(icons);
    EXPECT_EQ(page.missingIcons, Strings{icons.back()});
    // Half full, the page takes icons only.
    EXPECT_EQ(CountOf(page.html, "{background-image:image-set("), icons.size() / 2);
}

/// "GROUP: NAME NAME" for each section of a page.
Strings SectionsOf(std::string_view page)
{
    Strings sections;
    for (const std::string& section : Between(page, "<section", "</section>")) {
        std::string line = Between(section, "<bdi>", "</bdi>").at(0) + ":";
        for (const std::string& name : Between(section, "data-n=\"", "\"")) {
            line += " " + name;
        }
        sections.push_back(line);
    }
    return sections;
}

template <class Item>
du::SmartPtr<Item> MakeItem(const std::string& id, const std::string& category, PartslibraryItem::Origin origin)
{
    const auto item = du::MakeCounted<Item>(origin);
    item->SetId(id);
    item->SetName("n");
    item->SetTitle("Title " + id);
    item->SetDescription("Description " + id);
    item->SetCategoryId(category);
    return item;
}

PartslibraryUIData MakeRows()
{
    PartslibraryUIData::CategoryList categories;
    for (const char* const id : {"A", "B", "C"}) {
        categories.push_back(du::MakeCounted<PartslibraryCategoryItem>());
        categories.back()->SetId(id);
        categories.back()->SetCatName(id);
    }
    return {{MakeItem<PartslibraryOlItem>("1", "A", PartslibraryItem::ORIGIN_SHARED)},
            {MakeItem<PartslibraryImageItem>("2", "A", PartslibraryItem::ORIGIN_USER),
             MakeItem<PartslibraryImageItem>("3", "C", PartslibraryItem::ORIGIN_USER)},
            categories};
}

TEST(GalleryPage, RowsFallIntoTheirGroups)
{
    const PartslibraryUIData rows = MakeRows();
    for (const auto& [rowsPerGroup, sections] : std::vector<std::pair<std::vector<std::size_t>, Strings>>{
             {{2, 0, 1}, {"A: n1 n2", "B:", "C: n3"}},
             {{1, 1, 1}, {"A: n1", "B: n2", "C: n3"}},
             {{2}, {"A: n1 n2", "B:", "C:", "Other: n3"}},
             {{}, {"A:", "B:", "C:", "Other: n1 n2 n3"}},
             {{SIZE_MAX, 1, 1}, {"A: n1 n2 n3", "B:", "C:"}},
             {{2, 0, 1, 7, 9}, {"A: n1 n2", "B:", "C: n3"}},
         }) {
        EXPECT_EQ(SectionsOf(WriteGalleryPage({"t", "en", rows, rowsPerGroup}).html), sections);
    }
}

TEST(GalleryPage, CardsShowWhatTheRowsSay)
{
    const PartslibraryUIData rows = MakeRows();
    const std::string page = WriteGalleryPage({"t", "en", rows, {2, 0, 1}}).html;
    const std::tuple<const char*, const char*, Strings> shown[] = {
        {"<span class=l dir=auto>", "</span>", {"Title 1", "Title 2", "Title 3"}},
        {"<span class=d dir=auto>", "</span>", {"Description 1", "Description 2", "Description 3"}},
        {"data-u=\"", "\"", {"ol.1", "image.2", "image.3"}},
        {"<span class=k>", "</span>", {"3D", "2D", "2D"}},
        {"<span class=k>3D</span> <span class=s>", "</span>", {"Shared or delivered"}},
        {"<span class=s>", "</span>", {"Shared or delivered"}},
        {"aria-live=\"polite\">", "</output>", {"3 entries"}},
        {"<span id=\"groups\">", "</span>", {"in 3 groups"}},
        {"<li><a href=\"", "\"", {"#g0", "#g1", "#g2"}},
        {"<section id=", " ", {"g0", "g1", "g2"}},
    };
    for (const auto& [before, after, texts] : shown) {
        EXPECT_EQ(Between(page, before, after), texts) << before;
    }
}

TEST(GalleryPage, LongGroupsAreCutIntoRuns)
{
    for (const auto& [count, runs] : std::vector<std::pair<std::size_t, Strings>>{
             {0, {}}, {1, {"1"}}, {120, {"120"}}, {121, {"120", "1"}}, {360, {"120", "120", "120"}}}) {
        const GalleryGroup group{L"g", std::vector<GalleryRow>(count)};
        EXPECT_EQ(Between(WriteGalleryPage("t", "en", {group}).html, "style=--n:", ">"), runs);
    }
}

} // namespace
