#include "Pictures.h"
#include "support/Contains.h"

#include <luhost/render/DrawingOutput.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

using namespace luhost::render;

namespace
{

using test::Contains;
using test::PutInto;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

Drawing MakeDrawing(std::vector<DrawnPicture> pictures)
{
    Drawing drawing;
    drawing.width = 120.0;
    drawing.height = 120.0;
    drawing.pictures = std::move(pictures);
    return drawing;
}

struct Files {
    std::string svg;
    std::string pdf;
    std::string png;
};

Files WriteAll(const Drawing& drawing)
{
    Files files;
    std::string error;
    EXPECT_TRUE(WriteSvg(drawing, files.svg, error)) << error;
    EXPECT_TRUE(WritePdf(drawing, files.pdf, error)) << error;
    EXPECT_TRUE(WritePng(drawing, 0, 0, files.png, error)) << error;
    return files;
}

std::size_t Count(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

/// Where the diagonals cross: the middle of the picture, in perspective too.
dg::DPoint2D Middle(const std::array<dg::DPoint2D, 4>& c)
{
    const dg::DPoint2D a{c[2].x - c[0].x, c[2].y - c[0].y};
    const dg::DPoint2D b{c[3].x - c[1].x, c[3].y - c[1].y};
    const double part = ((c[1].x - c[0].x) * b.y - (c[1].y - c[0].y) * b.x) / (a.x * b.y - a.y * b.x);
    return {c[0].x + a.x * part, c[0].y + a.y * part};
}

/// Colours on the way from the middle to the corners, close to the middle and close to the corner.
std::string Probe(const test::Pixels& pixels, const std::array<dg::DPoint2D, 4>& corners)
{
    std::string colors;
    const dg::DPoint2D middle = Middle(corners);
    for (const double part : {0.2, 0.9}) {
        for (const dg::DPoint2D& corner : corners) {
            colors += pixels.ColorAt(middle.x + (corner.x - middle.x) * part, middle.y + (corner.y - middle.y) * part);
        }
    }
    return colors;
}

TEST(DrawingOutput, PutsTheCornersOfThePictureWhereTheyBelong)
{
    const std::array<dg::DPoint2D, 4> boxes[] = {
        {dg::DPoint2D{10.0, 20.0}, {106.0, 20.0}, {106.0, 84.0}, {10.0, 84.0}},   // upright
        {dg::DPoint2D{106.0, 20.0}, {10.0, 20.0}, {10.0, 84.0}, {106.0, 84.0}},   // left to right
        {dg::DPoint2D{10.0, 84.0}, {106.0, 84.0}, {106.0, 20.0}, {10.0, 20.0}},   // top to bottom
        {dg::DPoint2D{100.0, 10.0}, {100.0, 110.0}, {20.0, 110.0}, {20.0, 10.0}}, // turned
        {dg::DPoint2D{20.0, 20.0}, {100.0, 40.0}, {90.0, 110.0}, {10.0, 90.0}},   // slanted
        {dg::DPoint2D{5.0, 5.0}, {115.0, 40.0}, {100.0, 80.0}, {10.0, 115.0}},    // in perspective
        {dg::DPoint2D{100.0, 80.0}, {115.0, 40.0}, {5.0, 5.0}, {10.0, 115.0}},    // in perspective, mirrored
    };
    const char* const turned[] = {"RGBYRGBY", "YRGBYRGB", "BYRGBYRG", "GBYRGBYR"};
    for (const auto& picture : {test::MakeQuarters(), test::MakeVectorQuarters()}) {
        for (int turns = 0; turns < 4; ++turns) {
            for (const auto& corners : boxes) {
                SCOPED_TRACE(testing::Message() << (picture->GetVectorSource() ? "vector" : "pixels") << ", turns "
                                                << turns << ", from " << corners[0].x << " " << corners[0].y);
                DrawnPicture drawn;
                drawn.corners = corners;
                drawn.image = picture->CreateCWRotated(turns);
                const Files files = WriteAll(MakeDrawing({drawn}));
                EXPECT_EQ(Probe(test::DecodePng(files.png), corners), turned[turns]);
                EXPECT_EQ(Probe(test::ShowSvg(files.svg, 120, 120), corners), turned[turns]);
            }
        }
    }
}

TEST(DrawingOutput, KeepsPixelsThatNeedNoResampling)
{
    std::mt19937 random(7);
    std::vector<std::uint32_t> rgba(31 * 17);
    std::generate(rgba.begin(), rgba.end(), [&] { return static_cast<std::uint32_t>(random()) | 0xFFU; });
    const test::Pixels pixels =
        test::DecodePng(WriteAll(MakeDrawing({PutInto(50, 60, 81, 77, test::MakePicture(31, 17, rgba))})).png);
    for (int i = 0; i < 31 * 17; ++i) {
        ASSERT_EQ(pixels.At(50 + i % 31, 60 + i / 31) & 0xFFFFFF, rgba[static_cast<std::size_t>(i)] >> 8) << i;
    }
    EXPECT_EQ(pixels.At(49, 60), 0U);
    EXPECT_EQ(pixels.At(81, 60), 0U);
}

TEST(DrawingOutput, EnlargesWithoutFadingAndShrinksWithoutLosingLines)
{
    const auto four = test::MakePicture(2, 2, {0xFF0000FF, 0x00FF00FF, 0xFFFF00FF, 0x0000FFFF});
    const test::Pixels large = test::DecodePng(WriteAll(MakeDrawing({PutInto(10, 10, 110, 110, four)})).png);
    for (int i = 0; i < 120; ++i) {
        EXPECT_EQ(large.At(i, 10) >> 24, i >= 10 && i < 110 ? 0xFFU : 0U) << i;
        EXPECT_EQ(large.At(109, i) >> 24, i >= 10 && i < 110 ? 0xFFU : 0U) << i;
    }
    std::vector<std::uint32_t> stripes(601 * 400);
    for (std::size_t i = 0; i < stripes.size(); ++i) {
        stripes[i] = i % 601 % 2 == 0 ? 0xFFFFFFFF : 0x000000FF;
    }
    for (const double size : {10.0, 37.0, 100.0}) {
        const auto picture = PutInto(0, 0, size, size, test::MakePicture(601, 400, stripes));
        const test::Pixels small = test::DecodePng(WriteAll(MakeDrawing({picture})).png);
        for (int x = 0; x < static_cast<int>(size); ++x) {
            EXPECT_NEAR(small.At(x, 3) & 0xFF, 127.0, 24.0) << size << " " << x;
        }
    }
}

TEST(DrawingOutput, LaysTheFrameOnTheEdgeAndFadesAllTogether)
{
    DrawnPicture picture = PutInto(20, 20, 100, 100, test::MakePicture(1, 1, {0xFFFFFFFF}));
    picture.fillColor = {0.0F, 0.0F, 0.0F, 1.0F};
    picture.lineColor = {0.0F, 0.0F, 1.0F, 1.0F};
    picture.lineWidth = 8.0;
    const Files files = WriteAll(MakeDrawing({picture}));
    for (const test::Pixels& pixels : {test::DecodePng(files.png), test::ShowSvg(files.svg, 120, 120)}) {
        std::string across;
        for (const int x : {15, 16, 23, 24, 95, 96, 103, 104}) {
            across += pixels.ColorAt(x, 60);
        }
        EXPECT_EQ(across, ".BBWWBB.");
        EXPECT_EQ(pixels.ColorAt(16, 16), 'B');
    }
    picture.opacity = 0.5;
    const test::Pixels faded = test::DecodePng(WriteAll(MakeDrawing({picture})).png);
    for (const int x : {16, 18, 22, 24, 60}) {
        EXPECT_NEAR(faded.At(x, 60) >> 24, 128.0, 1.0) << x;
    }
}

TEST(DrawingOutput, CrossesTheBoxOfAMissingPicture)
{
    const luk::ImageData::Frame cut{9, 9, std::make_shared<const luk::ImageData::Pixels>(9 * 9 * 4 - 1), 0};
    for (const auto& image :
         {du::SmartPtr<luk::ImageData>(), du::MakeCounted<luk::ImageData>(std::vector<luk::ImageData::Frame>()),
          du::MakeCounted<luk::ImageData>(std::vector<luk::ImageData::Frame>{cut})}) {
        const Files files = WriteAll(MakeDrawing({PutInto(20, 20, 101, 101, image)}));
        for (const test::Pixels& pixels : {test::DecodePng(files.png), test::ShowSvg(files.svg, 120, 120)}) {
            EXPECT_GE(pixels.At(60, 60) >> 24, 0xF0U) << "where the lines cross";
            EXPECT_NE(pixels.At(40, 40), 0U);
            EXPECT_NE(pixels.At(20, 21), 0U);
            EXPECT_EQ(pixels.At(30, 60), 0U);
        }
    }
}

TEST(DrawingOutput, EmbedsAPictureOnceAndKeepsVectors)
{
    const auto pixels = test::MakeQuarters();
    const auto vectors = test::MakeVectorQuarters();
    Drawing drawing = MakeDrawing(
        {PutInto(0, 0, 40, 40, pixels), PutInto(50, 0, 90, 40, test::MakeQuarters()), PutInto(90, 50, 50, 90, pixels)});
    drawing.pictures[2].opacity = 0.5;
    Files files = WriteAll(drawing);
    EXPECT_EQ(Count(files.svg, "data:image/png;base64,"), 1U);
    EXPECT_EQ(Count(files.svg, "<use "), 3U);
    EXPECT_EQ(Count(files.pdf, "/Subtype /Image"), 1U);
    std::string resources = files.pdf.substr(files.pdf.find("/XObject <<") + 12);
    resources.resize(resources.find(">>"));
    EXPECT_EQ(Count(resources, resources.substr(0, resources.find(' ') + 1)), 1U) << resources;

    files =
        WriteAll(MakeDrawing({PutInto(0, 0, 40, 40, vectors), PutInto(50, 0, 90, 40, vectors->CreateCWRotated(3))}));
    EXPECT_EQ(Count(files.svg, "data:image/svg+xml;base64,"), 1U);
    EXPECT_EQ(Count(files.svg, "data:image"), 1U);
    EXPECT_EQ(Count(files.pdf, "/Subtype /Image"), 0U);
    EXPECT_EQ(files.svg, WriteAll(MakeDrawing({PutInto(0, 0, 40, 40, vectors),
                                               PutInto(50, 0, 90, 40, vectors->CreateCWRotated(7))}))
                             .svg);
}

/// A picture may have nothing but its document, whose pixels nobody needs.
TEST(DrawingOutput, DrawsDocumentsWithoutPixelsInSeveralSizes)
{
    const auto vectorOf = [](const std::string& document) {
        return du::MakeCounted<luk::ImageData>(std::vector<luk::ImageData::Frame>{{24, 16, nullptr, 0}},
                                               std::make_shared<const std::string>(document));
    };
    const auto quarters = test::MakeVectorQuarters();
    const Drawing expected = MakeDrawing({PutInto(0, 0, 96, 64, quarters), PutInto(0, 64, 32, 112, quarters)});
    Drawing drawing = expected;
    drawing.pictures[0].image = vectorOf(*quarters->GetVectorSource());
    drawing.pictures[1].image = drawing.pictures[0].image->CreateCWRotated(4);
    luhost::render::PngSeries series;
    for (const int side : {64, 192, 64}) {
        std::string png;
        std::string expectedPng;
        std::string error;
        EXPECT_TRUE(series.Write(drawing, side, side, png, error) &&
                    WritePng(expected, side, side, expectedPng, error));
        EXPECT_TRUE(png == expectedPng) << side;
    }
    EXPECT_EQ(series.FindProblem(), "");

    std::string uses = "<g id='u0'><path d='M0 0h1'/></g>";
    for (int level = 1; level < 8; ++level) {
        uses += "<g id='u" + std::to_string(level) + "'>";
        for (int i = 0; i < 10; ++i) {
            uses += "<use href='#u" + std::to_string(level - 1) + "'/>";
        }
        uses += "</g>";
    }
    const auto endless = vectorOf("<svg xmlns='http://www.w3.org/2000/svg'>" + uses + "</svg>");
    const auto broken = vectorOf("<svg");
    std::string png;
    std::string error;
    EXPECT_TRUE(
        series.Write(MakeDrawing({PutInto(0, 0, 9, 9, endless), PutInto(0, 0, 9, 9, broken)}), 0, 0, png, error));
    EXPECT_TRUE(test::Contains(series.FindProblem(), "referenced elements")) << series.FindProblem();
}

TEST(DrawingOutput, GivesTheSameBytesAgain)
{
    Drawing drawing = MakeDrawing({PutInto(10, 10, 80, 80, test::MakeQuarters()),
                                   PutInto(40, 40, 110, 110, test::MakeVectorQuarters()), PutInto(0, 0, 9, 9, {})});
    drawing.title = "Twice";
    drawing.pictures[0].corners[2].x = 70.0;
    drawing.pictures[1].opacity = 0.3;
    const Files first = WriteAll(drawing);
    const Files second = WriteAll(drawing);
    EXPECT_EQ(first.svg, second.svg);
    EXPECT_TRUE(first.pdf == second.pdf);
    EXPECT_TRUE(first.png == second.png);
    EXPECT_EQ(Count(first.pdf, "CreationDate"), 0U);
}

TEST(DrawingOutput, EscapesWordsAndDropsWhatXmlCannotHold)
{
    Drawing drawing = MakeDrawing({PutInto(0, 0, 9, 9, {})});
    drawing.title = "\xFF\xC3";
    drawing.pictures[0].id = "a\"b<c>&d\n\x01\x1F\x7F";
    drawing.pictures[0].title = "</title><script>";
    drawing.pictures[0].description = std::string("nul\0 \xED\xA0\x80 \xEF\xBF\xBE\xC3\xA4", 14);
    const std::string svg = WriteAll(drawing).svg;
    EXPECT_TRUE(Contains(svg, "<title>\xEF\xBF\xBD\xEF\xBF\xBD</title>"));
    EXPECT_TRUE(Contains(svg, "data-annotation=\"a&quot;b&lt;c&gt;&amp;d&#10;\""));
    EXPECT_TRUE(Contains(svg, "<title>&lt;/title&gt;&lt;script&gt;</title>"));
    EXPECT_TRUE(Contains(svg, "<desc>nul \xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD \xC3\xA4</desc>"));
    EXPECT_EQ(test::ShowSvg(svg, 120, 120).width, 120);
}

/// What is to be seen in the middle of the sheet: nothing, the fill of the box (white), or red of the picture.
struct Degenerate {
    const char* name;
    std::array<dg::DPoint2D, 4> corners;
    char inTheMiddle;
};

TEST(DrawingOutput, EndsQuicklyWhateverTheCornersAre)
{
    const Degenerate cases[] = {
        {"not a number", {dg::DPoint2D{kNaN, 0}, {120, 0}, {120, 120}, {0, 120}}, '.'},
        {"infinite", {dg::DPoint2D{0, 0}, {kInfinity, 0}, {kInfinity, 120}, {0, 120}}, '.'},
        {"beyond all measure", {dg::DPoint2D{-1e300, -1e300}, {1e300, -1e300}, {1e300, 1e300}, {-1e300, 1e300}}, '.'},
        {"a point", {dg::DPoint2D{60, 60}, {60, 60}, {60, 60}, {60, 60}}, '.'},
        {"without height", {dg::DPoint2D{0, 60.5}, {120, 60.5}, {120, 60.5}, {0, 60.5}}, '.'},
        {"beside the sheet", {dg::DPoint2D{121, 0}, {200, 0}, {200, 120}, {121, 120}}, '.'},
        {"crossing itself", {dg::DPoint2D{0, 0}, {140, 30}, {140, 0}, {0, 140}}, 'W'},
        {"concave", {dg::DPoint2D{0, 0}, {120, 50}, {0, 120}, {70, 60}}, '.'},
        {"concave, around the middle", {dg::DPoint2D{0, 0}, {120, 50}, {0, 120}, {20, 60}}, 'W'},
        {"a triangle", {dg::DPoint2D{0, 0}, {120, 0}, {120, 0}, {60, 120}}, 'W'},
        {"far beyond the sheet", {dg::DPoint2D{-10, -10}, {2e8, -10}, {2e8, 2e8}, {-10, 2e8}}, 'R'},
        {"far and thin", {dg::DPoint2D{-9e8, 59}, {9.1e8, 60}, {9.1e8, 62}, {-9e8, 61}}, '?'},
        {"a far corner", {dg::DPoint2D{0, 0}, {120, 0}, {9e8, 9e8}, {0, 120}}, '?'},
    };
    for (const Degenerate& one : cases) {
        SCOPED_TRACE(one.name);
        DrawnPicture picture;
        picture.corners = one.corners;
        picture.fillColor = {1.0F, 1.0F, 1.0F, 1.0F};
        picture.image = test::MakeQuarters();
        const auto start = std::chrono::steady_clock::now();
        const char seen = test::DecodePng(WriteAll(MakeDrawing({picture})).png).ColorAt(60, 60);
        picture.image = nullptr;
        picture.lineWidth = 2.0;
        WriteAll(MakeDrawing({picture}));
        if (one.inTheMiddle != '?') {
            EXPECT_EQ(seen, one.inTheMiddle);
        }
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    }
}

TEST(DrawingOutput, TakesAnyNumbers)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<double> exponent(-12.0, 12.0);
    const auto number = [&] { return std::pow(10.0, exponent(random)) * (random() % 2 == 0 ? 1.0 : -1.0) + 60.0; };
    const double odd[] = {kNaN, kInfinity, -1.0, 0.0, 0.5, 1e300};
    const auto garbled =
        du::MakeCounted<luk::ImageData>(std::vector<luk::ImageData::Frame>{test::MakeQuarters()->GetFrame(0)},
                                        std::make_shared<const std::string>("<svg"));
    for (int i = 0; i < 60; ++i) {
        DrawnPicture picture;
        for (dg::DPoint2D& corner : picture.corners) {
            corner = {number(), number()};
        }
        picture.image = i % 3 == 0 ? garbled : i % 3 == 1 ? test::MakeVectorQuarters() : nullptr;
        picture.lineWidth = odd[random() % 6];
        picture.opacity = odd[random() % 6];
        picture.fillColor.alpha = static_cast<float>(odd[random() % 5]);
        picture.lineColor = {static_cast<float>(odd[random() % 5]), 0.0F, 0.0F, 1.0F};
        const Files files = WriteAll(MakeDrawing({picture}));
        EXPECT_EQ(test::DecodePng(files.png).width, 120);
        EXPECT_EQ(test::ShowSvg(files.svg, 120, 120).width, 120) << files.svg;
    }
}

TEST(DrawingOutput, FitsTheSheetIntoThePicture)
{
    struct Case {
        Drawing::Unit unit;
        double width, height;
        int askedWidth, askedHeight, gotWidth, gotHeight; ///< 0: refused
        int left, top;                                    ///< of the sheet
    };
    constexpr auto kMillimetre = Drawing::Unit::Millimetre;
    constexpr auto kPixel = Drawing::Unit::Pixel;
    const Case cases[] = {
        {kMillimetre, 210.0, 297.0, 0, 0, 794, 1123, 0, 0},
        {kMillimetre, 50.8, 25.4, 100, 0, 100, 50, 0, 0},
        {kPixel, 300.0, 200.0, 0, 100, 150, 100, 0, 0},
        {kPixel, 300.0, 200.0, 300, 400, 300, 400, 0, 100},
        {kPixel, 0.25, 0.25, 0, 0, 1, 1, 0, 0},
        {kPixel, 0.0, 200.0, 0, 0, 0, 0, 0, 0},
        {kPixel, kNaN, 200.0, 0, 0, 0, 0, 0, 0},
        {kPixel, kInfinity, 200.0, 0, 0, 0, 0, 0, 0},
        {kPixel, 16385.0, 16384.0, 9, 9, 0, 0, 0, 0},
        {kPixel, 40000.0, 1.0, 9, 9, 0, 0, 0, 0},
        {kPixel, 300.0, 200.0, 30000, 30000, 0, 0, 0, 0},
        {kPixel, 1.0, 9e-6, 0, 5, 0, 0, 0, 0},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(testing::Message() << one.width << " x " << one.height << " in " << one.askedWidth);
        Drawing drawing = MakeDrawing({});
        drawing.width = one.width;
        drawing.height = one.height;
        drawing.unit = one.unit;
        drawing.background = {1.0F, 1.0F, 1.0F, 1.0F};
        std::string png;
        std::string error;
        EXPECT_EQ(WritePng(drawing, one.askedWidth, one.askedHeight, png, error), one.gotWidth != 0);
        EXPECT_EQ(error.empty(), one.gotWidth != 0);
        if (one.gotWidth != 0) {
            const test::Pixels pixels = test::DecodePng(png);
            ASSERT_EQ(pixels.width, one.gotWidth);
            ASSERT_EQ(pixels.height, one.gotHeight);
            EXPECT_EQ(pixels.ColorAt(one.left, one.top), 'W');
            EXPECT_EQ(pixels.ColorAt(pixels.width - 1 - one.left, pixels.height - 1 - one.top), 'W');
            EXPECT_EQ(one.top == 0 || pixels.ColorAt(one.left, one.top - 1) == '.', true);
        }
    }
}

} // namespace
