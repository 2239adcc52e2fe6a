#include "Process.h"
#include "ShapeFolder.h"
#include "support/Contains.h"
#include "support/TemporaryFolder.h"

#include <luhost/io/PictureDecoders.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>

namespace
{

using namespace test;
using nlohmann::json;

constexpr const char* kNone = "SymbolsLibrary/2D/";

/// A library of pictures, written as the writer does, whose entries name thumbnails or none.
class PictureLibrary : public TemporaryFolder
{
public:
    std::string File() const { return Path("SymbolsLibrary/PartSymbolLibrary.xml"); }
    std::string Text() const { return Read("SymbolsLibrary/PartSymbolLibrary.xml"); }

    void Add(const std::string& id, const std::string& thumbnail, const std::string& picture, bool isFlipped = false,
             int right = 0)
    {
        m_symbols += "<symbol id=\"" + id + "\" categoryId=\"c\" billboard=\"false\"><name>" + id +
                     "</name><gallery_thumbnail url=\"" + thumbnail + "\"/><image url=\"" + picture +
                     "\"/><flip horizontal=\"" + (isFlipped ? "true" : "false") +
                     "\" vertical=\"false\"/><rotate right=\"" + std::to_string(right) + "\" left=\"0\"/></symbol>";
    }

    void WriteLibrary(bool isCanonical = true)
    {
        Write("SymbolsLibrary/PartSymbolLibrary.xml", "<drellin-library><units/><information/><categories/><shapes>" +
                                                          shapes + "</shapes><symbols>" + m_symbols +
                                                          "</symbols></drellin-library>");
        if (isCanonical) {
            RunLusym({"library", "format", File(), "-o", File()});
        }
    }

    /// Left half red, right half blue.
    void WritePicture(const std::string& name, int width, int height) const
    {
        const std::string half = "<rect width=\"" + std::to_string(width / 2) + "\" height=\"" + std::to_string(height);
        Write("SymbolsLibrary/2D/" + name, "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
                                               std::to_string(width) + "\" height=\"" + std::to_string(height) + "\">" +
                                               half + "\" fill=\"red\"/>" + half + "\" fill=\"blue\" x=\"" +
                                               std::to_string(width / 2) + "\"/></svg>");
    }

    ProcessResult Make(const std::vector<std::string>& more = {}, int exitCode = 0) const
    {
        std::vector<std::string> arguments = {"library", "thumbnails", File()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunLusym(arguments, exitCode);
    }

    /// The colours of a picture along its middle row or column, each said once: "-" where there is none.
    std::string Colors(const std::string& name, bool isColumn = false) const
    {
        const std::string bytes = Read(name);
        std::string colors;
        for (const auto& decoder : luhost::io::MakePictureDecoders()) {
            std::string problem;
            if (!decoder->Recognises(bytes)) {
                continue;
            }
            const auto picture = decoder->Decode(bytes, problem);
            const luk::ImageData::Frame& frame = picture->GetFrame(0);
            for (int i = 2; i < frame.width; i += 4) {
                const int x = isColumn ? frame.width / 2 - 2 : i;
                const int y = isColumn ? i : frame.height / 2 - 2;
                const std::uint8_t* const pixel = &(*frame.pixels)[static_cast<std::size_t>((y * frame.width + x) * 4)];
                const char color = pixel[3] < 128 ? '-' : pixel[0] > pixel[2] ? 'R' : 'B';
                if (!colors.ends_with(color)) {
                    colors += color;
                }
            }
            return std::to_string(frame.width) + " " + colors;
        }
        return "none";
    }

    std::string shapes;

private:
    std::string m_symbols;
};

TEST(LibraryThumbnails, AreMadeWhereTheyLackAndWhereTheirSourceChanged)
{
    PictureLibrary library;
    library.WritePicture("wide.svg", 40, 20);
    library.WritePicture("tall.svg", 20, 40);
    library.Add("wide", "SymbolsLibrary/2D/wide_64x64.png", "SymbolsLibrary/2D/wide.svg");
    library.Add("flipped", "SymbolsLibrary/2D/flipped_64x64.png", "SymbolsLibrary/2D/wide.svg", true);
    library.Add("turned", "SymbolsLibrary/2D/turned_64x64.png", "SymbolsLibrary/2D/wide.svg", false, 90);
    library.Add("tall", "SymbolsLibrary/2D/tall.png", "SymbolsLibrary/2D/tall.svg");
    library.WriteLibrary(false);
    EXPECT_EQ(library.Make({"--dry-run"}).out, "SymbolsLibrary/2D/wide_64x64.png: missing\n"
                                               "SymbolsLibrary/2D/wide_192x192.png: missing\n"
                                               "SymbolsLibrary/2D/flipped_64x64.png: missing\n"
                                               "SymbolsLibrary/2D/flipped_192x192.png: missing\n"
                                               "SymbolsLibrary/2D/turned_64x64.png: missing\n"
                                               "SymbolsLibrary/2D/turned_192x192.png: missing\n"
                                               "SymbolsLibrary/2D/tall.png: missing\n");
    EXPECT_EQ(library.Read("SymbolsLibrary/2D/tall.png"), "");
    EXPECT_TRUE(Contains(library.Make().out, "SymbolsLibrary/2D/tall.png: missing, made\n"));
    const std::tuple<const char*, bool, const char*> shown[] = {
        {"wide_64x64", false, "64 RB"},       {"wide_192x192", false, "192 RB"},  {"wide_192x192", true, "192 -R-"},
        {"flipped_192x192", false, "192 BR"}, {"turned_192x192", true, "192 RB"}, {"turned_64x64", false, "64 -R-"},
        {"tall", false, "192 -RB-"},
    };
    for (const auto& [name, isColumn, colors] : shown) {
        EXPECT_EQ(library.Colors(std::string("SymbolsLibrary/2D/") + name + ".png", isColumn), colors) << name;
    }
    EXPECT_EQ(library.Make().out, "") << "nothing has changed";

    library.WritePicture("tall.svg", 40, 40);
    const std::string whole = library.Read("SymbolsLibrary/2D/wide_64x64.png");
    library.Write("SymbolsLibrary/2D/wide_64x64.png", whole.substr(0, whole.size() / 2));
    library.Write("SymbolsLibrary/2D/flipped_64x64.png", "by hand");
    EXPECT_EQ(library.Make().out, "SymbolsLibrary/2D/wide_64x64.png: missing, made\n"
                                  "SymbolsLibrary/2D/tall.png: changed, made\n");
    EXPECT_EQ(library.Read("SymbolsLibrary/2D/wide_64x64.png"), whole);
    EXPECT_EQ(library.Read("SymbolsLibrary/2D/flipped_64x64.png"), "by hand");
    const json report = json::parse(library.Make({"--force", "--json"}).out);
    EXPECT_EQ(report["rewritten"], false);
    EXPECT_EQ(
        report["entries"][1]["thumbnails"][0],
        json({{"file", "SymbolsLibrary/2D/flipped_64x64.png"}, {"size", 64}, {"state", "changed"}, {"made", true}}));
    EXPECT_EQ(library.Colors("SymbolsLibrary/2D/flipped_64x64.png"), "64 BR");
}

TEST(LibraryThumbnails, GivesNamesAndChangesNothingElseOfTheLibrary)
{
    PictureLibrary library;
    library.WritePicture("a&b.svg", 40, 20);
    library.WritePicture("pin.svg", 20, 20);
    library.WritePicture("pin.v2.svg", 30, 20);
    library.Write("pin.svg", library.Read("SymbolsLibrary/2D/pin.svg") + "<!-- another -->");
    library.Write("SymbolsLibrary/2D/pin.v2_64x64.png", "of another");
    library.Add("1", kNone, "SymbolsLibrary/2D/a&amp;b.svg");
    library.Add("2", kNone, "SymbolsLibrary/2D/pin.svg");
    library.Add("3", "SymbolsLibrary/2D/other_64x64.png", "SymbolsLibrary/2D/pin.svg");
    library.Add("4", kNone, "SymbolsLibrary/2D/pin.v2.svg");
    library.Add("5", kNone, "SymbolsLibrary/2D/gone.svg");
    library.Add("6", kNone, "SymbolsLibrary/2D/pin.svg", true);
    library.WriteLibrary();
    std::string text = library.Text();
    library.Make({"--dry-run"}, 6);
    EXPECT_EQ(library.Text(), text);
    const ProcessResult made = library.Make({}, 6);
    EXPECT_TRUE(Contains(made.err, "error: the entry \"5\": " + library.Path("SymbolsLibrary/2D/gone.svg")));
    const std::pair<const char*, const char*> names[] = {
        {"1", "a&amp;b_64x64.png"}, {"2", "pin_64x64.png"}, {"4", "pin.v2-2_64x64.png"}, {"6", "pin-2_64x64.png"}};
    for (const auto& [id, name] : names) {
        const std::string none = "<gallery_thumbnail url=\"SymbolsLibrary/2D/";
        text.insert(text.find(none, text.find(std::string("<symbol id=\"") + id)) + none.size(), name);
    }
    EXPECT_EQ(library.Text(), text);
    EXPECT_EQ(library.Read("SymbolsLibrary/2D/pin.v2_64x64.png"), "of another");
    EXPECT_EQ(library.Make({}, 6).out, "");

    PictureLibrary loose;
    loose.WritePicture("pin.svg", 20, 20);
    loose.Add("1", kNone, "SymbolsLibrary/2D/pin.svg");
    loose.Add("2", "SymbolsLibrary/2D/named_64x64.png", "SymbolsLibrary/2D/pin.svg");
    loose.WriteLibrary(false);
    text = loose.Text();
    const ProcessResult refused = loose.Make({}, 6);
    EXPECT_TRUE(Contains(refused.err, "the library is not in canonical form"));
    EXPECT_TRUE(Contains(refused.out, "named_64x64.png: missing, made"));
    EXPECT_EQ(loose.Text(), text);
    EXPECT_FALSE(std::filesystem::exists(loose.Path("SymbolsLibrary/2D/pin_64x64.png")));

    // Written for the first time, entries that say nothing of a thumbnail have an empty URL.
    PictureLibrary fresh;
    fresh.WritePicture("pin.svg", 20, 20);
    fresh.shapes = "<shape id=\"s\"><name>s</name><graphic url=\"SymbolsLibrary/Shape/gone.obj\"/></shape>";
    fresh.Add("1", kNone, "SymbolsLibrary/2D/pin.svg");
    fresh.WriteLibrary();
    EXPECT_TRUE(Contains(fresh.Text(), "<gallery_thumbnail url=\"\"/>"));
    fresh.Make({}, 6);
    EXPECT_TRUE(Contains(fresh.Text(), "SymbolsLibrary/2D/pin_64x64.png"));
    EXPECT_TRUE(Contains(fresh.Text(), "<gallery_thumbnail url=\"\"/>"));
}

TEST(LibraryThumbnails, GoNowhereElseAndOverNobodysPicture)
{
    PictureLibrary library;
    library.WritePicture("p.svg", 40, 20);
    const std::string png = "SymbolsLibrary/2D/source_64x64.png";
    library.Add("made", png, "SymbolsLibrary/2D/p.svg");
    library.WriteLibrary();
    library.Make();
    const std::string source = library.Read(png);
    library.Write("outside/x_64x64.png", "theirs");
    std::filesystem::create_directory_symlink(library.Path("outside"), library.Path("SymbolsLibrary/link"));
    std::filesystem::create_symlink(library.Path("gone_64x64.png"), library.Path("SymbolsLibrary/2D/l_64x64.png"));
    const char* const outside[] = {"SymbolsLibrary/../up_64x64.png", "SymbolsLibrary/link/new_64x64.png",
                                   "SymbolsLibrary/2D/l_64x64.png", "/tmp/lusym-thumbnail_64x64.png",
                                   "SymbolsLibrary/2D/p_64x64.svg"};
    for (const char* const name : outside) {
        library.Add(name, name, "SymbolsLibrary/2D/p.svg");
    }
    library.Add("own", png, png);
    library.Write("SymbolsLibrary/2D/broken.png", source.substr(0, 60));
    library.Add("broken", "SymbolsLibrary/2D/b_64x64.png", "SymbolsLibrary/2D/broken.png");
    library.Add("rival", "SymbolsLibrary/2D/r_64x64.png", "SymbolsLibrary/2D/p.svg");
    library.Add("rival2", "SymbolsLibrary/2D/r_64x64.png", "SymbolsLibrary/2D/p.svg", true);
    library.WriteLibrary(false);
    const json entries = json::parse(library.Make({"--force", "--json"}, 6).out)["entries"];
    const char* const problems[] = {"",
                                    "outside the library's folder",
                                    "outside the library's folder",
                                    "outside the library's folder",
                                    "outside the library's folder",
                                    "no PNG file",
                                    "that of another entry",
                                    "cannot be shown: ",
                                    "",
                                    "that of another entry"};
    for (std::size_t i = 0; i < std::size(problems); ++i) {
        const std::string problem = entries[i]["problem"];
        EXPECT_TRUE(*problems[i] ? Contains(problem, problems[i]) : ::testing::AssertionResult(problem.empty())) << i;
    }
    EXPECT_EQ(entries[8]["thumbnails"][1]["made"], true) << "one that is bad does not stop the rest";
    EXPECT_EQ(library.Read(png), source) << "it is a source itself";
    EXPECT_EQ(library.Read("SymbolsLibrary/2D/r_192x192.png"), library.Read("SymbolsLibrary/2D/source_192x192.png"));
    for (const char* const name : {"up_64x64.png", "outside/new_64x64.png", "gone_64x64.png"}) {
        EXPECT_FALSE(std::filesystem::exists(library.Path(name))) << name;
    }
}

TEST(LibraryThumbnails, ShowShapesThroughTheirCamera)
{
    PictureLibrary library;
    library.Write("SymbolsLibrary/Shape/pin.obj", ShapeFolder::Tetrahedron("pin", 0.0, 10.0, 1));
    const auto shape = [](const std::string& id, const std::string& camera) {
        return "<shape id=\"" + id + "\"><name>" + id + "</name><gallery_thumbnail url=\"SymbolsLibrary/Shape/" + id +
               "_64x64.png\"/><graphic url=\"SymbolsLibrary/Shape/pin.obj\"/>" + camera + "</shape>";
    };
    const auto camera = [](double width, double x) {
        return "<camera ortho=\"true\" value=\"" + std::to_string(width) + "\" location=\"1 0 0 0 1 0 0 0 1 " +
               std::to_string(x) + " 5 100\"/>";
    };
    library.shapes =
        shape("iso", "") + shape("near", camera(12, 5)) + shape("far", camera(48, 5)) + shape("lost", camera(12, 500));
    library.WriteLibrary(false);
    EXPECT_TRUE(Contains(library.Make().err, "warning: the entry \"lost\": its camera shows nothing of it"));
    const auto read = [&](const std::string& id) {
        return library.Read("SymbolsLibrary/Shape/" + id + "_192x192.png");
    };
    EXPECT_EQ(library.Colors("SymbolsLibrary/Shape/far_192x192.png").substr(0, 5), "192 -");
    EXPECT_NE(read("near"), read("far"));
    library.shapes = shape("iso", "") + shape("near", camera(12, 5)) + shape("far", camera(12, 5)) + shape("lost", "");
    library.WriteLibrary(false);
    EXPECT_EQ(library.Make().out, "SymbolsLibrary/Shape/far_64x64.png: changed, made\n"
                                  "SymbolsLibrary/Shape/far_192x192.png: changed, made\n"
                                  "SymbolsLibrary/Shape/lost_64x64.png: changed, made\n"
                                  "SymbolsLibrary/Shape/lost_192x192.png: changed, made\n");
    EXPECT_EQ(read("near"), read("far"));
    EXPECT_EQ(read("lost"), read("iso"));
    EXPECT_NE(read("near"), read("iso"));
}

} // namespace
