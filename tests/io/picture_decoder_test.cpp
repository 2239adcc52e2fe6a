#include "io/PictureSamples.h"
#include "support/Contains.h"
#include "support/Threads.h"

#include <luhost/io/PictureDecoders.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace test
{

namespace
{

using luhost::io::MakePictureDecoders;
using luhost::io::PictureLimits;
using luhost::io::VectorPictures;
using luk::ImageData;

const std::string kSvg = "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" ";

std::string FromBase64(std::string_view text)
{
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    std::size_t bits = 0;
    for (std::size_t count = 1; count <= text.size() && text[count - 1] != '='; ++count) {
        bits = (bits << 6) | kDigits.find(text[count - 1]);
        if (count % 4 != 1) {
            bytes += static_cast<char>((bits >> (6 - 2 * ((count - 1) % 4))) & 0xFF);
        }
    }
    return bytes;
}

struct Result {
    du::SmartPtr<ImageData> picture;
    std::string problem;
};

Result Decode(std::string_view bytes, const PictureLimits& limits = {})
{
    Result result{nullptr, "no decoder takes it"};
    for (const auto& decoder : MakePictureDecoders(limits)) {
        if (decoder->Recognises(bytes)) {
            result.problem.clear();
            result.picture = decoder->Decode(bytes, result.problem);
            break;
        }
    }
    EXPECT_NE(result.picture != nullptr, !result.problem.empty());
    return result;
}

std::vector<std::string> Split(std::string_view text, char separator)
{
    std::istringstream stream{std::string(text)};
    std::vector<std::string> parts;
    for (std::string part; std::getline(stream, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

/// The middle of each cell of the frame, in the letters of PictureSample; '?' for any other colour.
std::string LettersOf(const ImageData::Frame& frame, std::size_t columns, std::size_t rows)
{
    static const std::map<char, std::vector<int>> kColours{
        {'R', {255, 0, 0, 255}},   {'G', {0, 255, 0, 255}}, {'B', {0, 0, 255, 255}}, {'W', {255, 255, 255, 255}},
        {'Y', {255, 255, 0, 255}}, {'K', {0, 0, 0, 255}},   {'h', {255, 0, 0, 128}}};
    std::string letters;
    for (std::size_t cell = 0; cell < columns * rows; ++cell) {
        const auto x = (cell % columns * 2 + 1) * static_cast<std::size_t>(frame.width) / (columns * 2);
        const auto y = (cell / columns * 2 + 1) * static_cast<std::size_t>(frame.height) / (rows * 2);
        const std::uint8_t* const pixel = &(*frame.pixels)[(y * static_cast<std::size_t>(frame.width) + x) * 4];
        const int tolerance = frame.width > 9 ? 8 : 0; // JPEG and lossy WebP
        const auto isNear = [&](int said, std::uint8_t is) { return std::abs(said - is) <= tolerance; };
        const auto found = std::find_if(kColours.begin(), kColours.end(), [&](const auto& colour) {
            return std::equal(colour.second.begin(), colour.second.end(), pixel, isNear);
        });
        letters += cell > 0 && cell % columns == 0 ? "/" : "";
        letters += found != kColours.end() ? found->first : pixel[3] == 0 ? 't' : '?';
    }
    return letters;
}

TEST(PictureDecoders, ShowEachFormatAsItIs)
{
    for (const PictureSample& sample : kPictureSamples) {
        SCOPED_TRACE(sample.name);
        for (const char* const rest : {"", "whatever follows"}) {
            const Result result = Decode(FromBase64(sample.base64) + rest);
            ASSERT_TRUE(result.picture) << result.problem;
            const std::vector<std::string> frames = Split(sample.shown, '|');
            const std::vector<std::string> delays = Split(sample.delays, ' ');
            ASSERT_EQ(result.picture->GetFrameCount(), frames.size());
            for (std::size_t index = 0; index < frames.size(); ++index) {
                const auto rows =
                    static_cast<std::size_t>(std::count(frames[index].begin(), frames[index].end(), '/')) + 1;
                const std::size_t columns = (frames[index].size() + 1) / rows - 1;
                const ImageData::Frame& frame = result.picture->GetFrame(index);
                EXPECT_EQ(LettersOf(frame, columns, rows), frames[index]);
                EXPECT_EQ(frame.width * static_cast<int>(rows), frame.height * static_cast<int>(columns));
                EXPECT_EQ(frame.delayMilliseconds, delays.empty() ? 0 : std::atoi(delays[index].c_str()));
            }
        }
    }
}

TEST(PictureDecoders, TakeNothingThatIsCutOffAndSurviveAnyDamage)
{
    testing::internal::CaptureStderr();
    for (const PictureSample& sample : kPictureSamples) {
        const std::string bytes = FromBase64(sample.base64);
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            const Result result = Decode(std::string_view(bytes).substr(0, size));
            EXPECT_FALSE(result.picture) << sample.name << ", " << size << " of " << bytes.size();
            if (size > 30) {
                EXPECT_TRUE(Contains(result.problem, "cut off")) << sample.name << ", " << size;
            }
        }
        for (std::size_t place = 0; place < bytes.size(); ++place) {
            for (const char byte : {'\0', '\x7f', '\xff', static_cast<char>(bytes[place] ^ 1)}) {
                std::string damaged = bytes;
                damaged[place] = byte;
                Decode(damaged, {32768, 1 << 16, 1000});
            }
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(PictureDecoders, KeepToTheirLimits)
{
    for (const PictureSample& sample : kPictureSamples) {
        SCOPED_TRACE(sample.name);
        const std::string bytes = FromBase64(sample.base64);
        const Result whole = Decode(bytes);
        ASSERT_TRUE(whole.picture);
        std::uint64_t pixels = 0;
        int side = 0;
        for (std::size_t index = 0; index < whole.picture->GetFrameCount(); ++index) {
            const ImageData::Frame& frame = whole.picture->GetFrame(index);
            pixels += frame.pixels->size() / 4;
            side = std::max({side, frame.width, frame.height});
        }
        EXPECT_TRUE(Contains(Decode(bytes, {side - 1, pixels, 1000}).problem, "on a side at most"));
        EXPECT_TRUE(Contains(Decode(bytes, {side, pixels - 1, 1000}).problem, "pixels in all at most"));
        const Result first = Decode(bytes, {side, pixels * 2, 1});
        ASSERT_TRUE(first.picture) << first.problem;
        EXPECT_EQ(first.picture->GetFrameCount(), 1u);
    }
    const auto patched = [](std::string_view name, std::size_t place, std::string_view patch) {
        const auto* const sample = std::find_if(std::begin(kPictureSamples), std::end(kPictureSamples),
                                                [&](const PictureSample& each) { return each.name == name; });
        return Decode(FromBase64(sample->base64).replace(place, patch.size(), patch)).problem;
    };
    EXPECT_TRUE(Contains(patched("png-rgba", 20, "\xEE\x6B\x28"), "says it is 3 x 4,000,000,002 pixels; 32,768"));
    EXPECT_TRUE(Contains(patched("png-rgba", 16, {"\0\0\x1F\0\0\0\x1F\0", 8}), "damaged")); // checksum of the header
    EXPECT_TRUE(Contains(patched("gif-still", 6, "\xFF\xFF"), "says it is 65,535 x 2 pixels"));
    EXPECT_TRUE(Contains(patched("bmp-24", 18, "\xFF\xFF\xFF\x7F"), "says it is 2,147,483,647 x 2 pixels"));
    EXPECT_TRUE(Contains(patched("bmp-24", 22, {"\0\0\0\x80", 4}), "says it is 3 x 2,147,483,648 pixels"));
    EXPECT_TRUE(Contains(patched("bmp-24", 18, {"\0\0", 2}), "says it is 0 x 2 pixels"));
    EXPECT_TRUE(Contains(patched("bmp-24", 18, {"\0\x20\0\0\0\x20", 6}), "cut off"));
}

TEST(PictureDecoders, FindTheSizeOfADrawing)
{
    const std::pair<std::string, std::string> cases[] = {
        {"width=\"1in\" height=\"25.4mm\"", "96x96"},
        {"width=\"40\" height=\"30\" viewBox=\"0 0 4 3\"", "40x30"},
        {"viewBox=\"0 0 20 10\"", "20x10"},
        {"width=\"100%\" height=\"100%\" viewBox=\"0 0 20 10\"", "20x10"},
        {"width=\"10\" viewBox=\"0 0 20 10\"", "10x5"},
        {"height=\"20\" viewBox=\"0 0 20 10\"", "40x20"},
        {"width=\"0.1\" height=\"0.1\"", "1x1"},
        {"", "8x6"},
    };
    for (const auto& [attributes, size] : cases) {
        const std::string text = "\xef\xbb\xbf<?xml version=\"1.0\"?><!-- a --><!DOCTYPE svg [<!ENTITY c \"red\">]>\n" +
                                 kSvg + attributes + "><rect width=\"8\" height=\"6\" fill=\"&c;\"/></svg>\n";
        const Result result = Decode(text);
        ASSERT_TRUE(result.picture) << attributes << ": " << result.problem;
        const ImageData::Frame& frame = result.picture->GetFrame(0);
        EXPECT_EQ(std::to_string(frame.width) + "x" + std::to_string(frame.height), size) << attributes;
        EXPECT_EQ(*result.picture->GetVectorSource(), text);
    }
    const std::string drawing = kSvg + "width='3' height='2'/>";
    std::string problem;
    const auto vectors = MakePictureDecoders({}, VectorPictures::AsTheyAre).back()->Decode(drawing, problem);
    ASSERT_TRUE(vectors) << problem;
    EXPECT_EQ(vectors->GetWidth() * 10 + vectors->GetHeight(), 32);
    EXPECT_EQ(vectors->GetFrame(0).pixels, nullptr);
    EXPECT_EQ(*vectors->GetVectorSource(), drawing);
    EXPECT_EQ(Decode("<html><svg/></html>").problem, "no decoder takes it");
    EXPECT_TRUE(Contains(Decode(kSvg + "width='40000' height='1'/>").problem, "says it is 40,000 x 1 pixels"));
    EXPECT_EQ(Decode(kSvg + "width='4' height='1'><g>").problem, "the file is cut off");
    EXPECT_EQ(Decode(kSvg + "width='4' height='1'").problem, "the file is cut off");
}

TEST(PictureDecoders, DrawWhatIsInADrawingAndNothingElse)
{
    const std::string red =
        "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAIAAACQd1PeAAAADElEQVR4nGP4z8AAAAMBAQDJ/pLvAAAAAElFTkSuQmCC";
    const std::string path = testing::TempDir() + "/beside.png";
    std::ofstream(path, std::ios::binary) << FromBase64(red);
    const auto drawn = [](const std::string& content) {
        const Result result = Decode(kSvg + "width='2' height='1'>" + content + "</svg>");
        return result.picture ? LettersOf(result.picture->GetFrame(0), 2, 1) : result.problem;
    };
    const std::string picture = "<image width='1' height='1' xlink:href='";
    EXPECT_EQ(drawn("<rect width='1' height='1' fill='red'/><rect x='1' width='1' height='1' fill='#f00' "
                    "fill-opacity='0.502'/>"),
              "Rh");
    EXPECT_EQ(drawn(picture + "data:image/png;base64," + red + "'/>"), "Rt");
    EXPECT_EQ(drawn(picture + "file://" + path + "'/>"), "tt");
    EXPECT_EQ(drawn(picture + path + "'/><text>Metadata: data: none</text>"), "tt");
    const std::string twice =
        picture + "data:image/png;base64," + red + "'/>" + picture + "data:;base64," + red + "'/>";
    EXPECT_EQ(drawn(twice + "<text>back\\slash &amp; ampersand</text>"), "Rt");
    EXPECT_TRUE(Contains(Decode(kSvg + "width='1' height='1'>" + twice + "</svg>", {9, 1, 9}).problem, "in all"));
}

TEST(PictureDecoders, RefuseDrawingsThatCostTooMuch)
{
    const auto repeat = [](std::string_view text, std::size_t count) {
        std::string all;
        for (std::size_t n = 0; n < count; ++n) {
            all.append(text);
        }
        return all;
    };
    std::string laughs = "<!DOCTYPE svg [<!ENTITY a0 \"ha\">";
    std::string uses = "<g id='u0'><rect width='1' height='1'/></g>";
    for (int level = 1; level < 12; ++level) {
        const std::string below = std::to_string(level - 1);
        laughs += "<!ENTITY a" + std::to_string(level) + " \"" + repeat("&a" + below + ";", 10) + "\">";
        uses += "<g id='u" + std::to_string(level) + "'>" + repeat("<use xlink:href='#u" + below + "'/>", 10) + "</g>";
    }
    const std::string open = kSvg + "width='900' height='900'>";
    const std::string image = open + "<image width='9' height='9' xlink:href='";
    const std::string blowUp = "<!DOCTYPE svg [<!ENTITY a \"" + std::string(100000, 'x') + "\">]>";
    const std::pair<std::string, const char*> cases[] = {
        {laughs + "]>" + open + "<text>&a11;</text></svg>", "entities"},
        {blowUp + open + "<text>" + repeat("&a;", 30000) + "</text></svg>", "entities"},
        {"<!DOCTYPE svg [<!ENTITY a SYSTEM \"file:///etc/passwd\">]>" + open + "<text>&a;</text></svg>", "entities"},
        {"<?xml version='1.0' encoding='UTF-7'?>" + open + "</svg>", "encoding"},
        {open + repeat("<g>", 100000) + repeat("</g>", 100000) + "</svg>", "depth"},
        {open + uses + "</svg>", "referenced elements"},
        {image + "data:image/svg+xml;base64,PHN2Zz4='/></svg>", "neither a picture nor a font"},
        {image + "data:image/png;base64,iVBORw0KGgo='/></svg>", "the file is cut off"},
        {image + "d&#10;&#97;ta:image/png;base64,iVBORw0KGgo='/></svg>", "the file is cut off"},
        {"<!DOCTYPE svg [<!ENTITY a 'dat'>]>" + image + "&a;a:image/svg+xml;base64,PHN2Zz4='/></svg>",
         "neither a picture"},
        {open + "<style>g{fill:URL(\"\\64 at\\61\t:image/svg+xml;base64,PHN2Zz4=#p\")}</style></svg>",
         "neither a picture"},
        {"<!DOCTYPE svg [<!ENTITY a 'x'><!ENTITY a 'data'>]>" + open + "</svg>", "entities"},
        {"<!DOCTYPE svg [" + repeat("<!ENTITY", 200000) + "]>" + open + "</svg>", "entities"},
        {open + "<desc>" + repeat("href=url(data:x", 200000), "neither a picture"},
        {open + "<svg:text a='/>'>" + repeat("a<!--</text>-->", 5000), "longer than 65536"},
        {"<!DOCTYPE svg [<!ENTITY a '" + repeat("much ", 1000) + "'>]>" + open + "<text>" + repeat("&a;", 20),
         "longer"},
        {open + "<filter id='f'><feConvolveMatrix order='21' kernelMatrix='" + repeat("1 ", 441) + "'/></filter></svg>",
         "filters"},
        {open + "<filter id='f'><feTurbulence numOctaves='9999'/></filter></svg>", "filters"},
        {kSvg + "width='4000' height='4000'><filter id='f'><feMorphology radius='9'/></filter></svg>", "filters"},
        {kSvg + "width='5000' height='5000'/>", "16,777,216 pixels in all at most"},
    };
    for (const auto& [text, reason] : cases) {
        const Result result = Decode(text);
        EXPECT_FALSE(result.picture) << reason;
        EXPECT_TRUE(Contains(result.problem, reason));
    }
    EXPECT_TRUE(Decode(open + "<text/><desc>" + repeat("much ", 20000) + "</desc><text>a</text></svg>").picture);
    EXPECT_TRUE(
        Decode(open + "<g id='a'><use xlink:href='#b'/></g><g id='b'><use xlink:href='#a'/></g></svg>").picture);
}

TEST(PictureDecoders, WorkOnSeveralThreadsAtOnce)
{
    const auto decoders = MakePictureDecoders();
    const std::string drawing = kSvg + "width='9' height='9'><text font-size='9'>a</text></svg>";
    std::atomic<int> failures{0};
    OnThreads(4, [&](unsigned) {
        for (int turn = 0; turn < 20; ++turn) {
            std::string problem;
            failures += decoders.back()->Decode(drawing, problem) == nullptr;
            for (const PictureSample& sample : kPictureSamples) {
                const std::string bytes = FromBase64(sample.base64);
                const auto decoder = std::find_if(decoders.begin(), decoders.end(),
                                                  [&](const auto& each) { return each->Recognises(bytes); });
                failures += (*decoder)->Decode(bytes, problem) == nullptr;
            }
        }
    });
    EXPECT_EQ(failures, 0);
}

} // namespace

} // namespace test
