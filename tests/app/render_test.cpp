#include "DocumentFolder.h"
#include "support/Contains.h"

namespace
{

using namespace test;
using Arguments = std::vector<std::string>;

/// "100x50" of a PNG picture
std::string SizeOfPng(const std::string& bytes)
{
    const auto number = [&](std::size_t at) {
        unsigned value = 0;
        for (const char byte : bytes.substr(at, 4)) {
            value = value << 8U | static_cast<unsigned char>(byte);
        }
        return std::to_string(value);
    };
    return bytes.size() < 24 || bytes.substr(1, 3) != "PNG" ? std::string("none") : number(16) + "x" + number(20);
}

TEST(Render, DrawsPagesAndViewInEveryFormat)
{
    const DocumentFolder folder;
    const auto render = [&](const std::string& name, Arguments options) {
        options.insert(options.begin(), {"render", folder.Doc(), "-o", folder.Path(name)});
        folder.Lusym(options);
        return folder.Read(name);
    };
    EXPECT_EQ(SizeOfPng(render("view.png", {})), "1280x800");
    EXPECT_EQ(SizeOfPng(render("view.png", {"--size=320"})), "320x200");
    EXPECT_EQ(SizeOfPng(render("page.PNG", {"--page=2"})), "378x189");
    EXPECT_EQ(SizeOfPng(render("page.bin", {"--page=2", "--size=x100", "--format=png"})), "200x100");
    EXPECT_TRUE(render("page.pdf", {"--page=1"}).starts_with("%PDF-"));
    EXPECT_EQ(folder.Lusym({"render", folder.Doc(), "-o", "-", "--format=svg"}).out, render("view.svg", {}));
    render("p-{page}.svg", {});
    EXPECT_EQ(folder.Read("p-2.svg"), render("two.svg", {"--page=2"}));
    EXPECT_TRUE(Contains(folder.Read("p-1.svg"), "width=\"210mm\" height=\"297mm\""));
}

TEST(Render, ShowsWhatASymbolIs)
{
    const DocumentFolder folder;
    const std::string page = folder.Lusym({"render", folder.Doc(), "-o", "-", "--format=svg", "--page=1"}).out;
    for (const char* const part : {"data-annotation=\"s1\"", "data-annotation=\"s2\"", "<title>Title of a</title>",
                                   "stroke=\"#ff0000\"", "fill=\"#00ff00\""}) {
        EXPECT_TRUE(Contains(page, part));
    }
    EXPECT_EQ(page.find("data-annotation=\"s3\""), page.npos);
    const std::string view = folder.Lusym({"render", folder.Doc(), "-o", "-", "--format=svg"}).out;
    EXPECT_TRUE(Contains(view, "<title>Own title</title>") && Contains(view, "stroke=\"#0000ff\""));
    folder.Drop("Symbols/b.svg");
    const ProcessResult crossed = folder.Lusym({"render", folder.Doc(), "-o", folder.Path("p.svg"), "--page=1"});
    EXPECT_TRUE(Contains(crossed.err, "doc.luz:s2: warning: the picture \"b.svg\" cannot be shown: "));
}

TEST(Render, TellsWhyNothingIsDrawn)
{
    const DocumentFolder folder;
    const std::string bytes = folder.Read("doc.luz");
    const std::string bare = folder.Path("bare.luz");
    folder.Lusym({"document", "new", "-o", bare});
    const std::tuple<std::string, Arguments, int, std::string> cases[] = {
        {folder.Doc(), {"-o", folder.Path("p.txt")}, 2, "--format: say svg, pdf or png, since the ending of "},
        {folder.Doc(), {"-o", folder.Doc(), "--format=svg"}, 2, "is the document, which the picture would replace"},
        {folder.Doc(), {"-o", folder.Path("p.png"), "--size=0"}, 2, "\"0\" is no size. Write WxH, W or xH"},
        {folder.Doc(), {"-o", folder.Path("p.png"), "--background=mud"}, 2, "\"mud\" is no colour. Write #rrggbb"},
        {folder.Doc(), {"-o", folder.Path("p.png"), "--page=3"}, 1, "there is no page 3; the document has 2"},
        {folder.Doc(), {"-o", folder.Path("p.png"), "--size=65536x65536"}, 1, "Ask for another size with --size"},
        {folder.Doc(), {"-o", folder.Path("{view}.png"), "--page=1"}, 2, "nothing to put in the place of {view}"},
        {folder.Doc(), {"-o", folder.Path("{page}.png"), "--view=top"}, 2, "nothing to put in the place of {page}"},
        {bare, {"-o", folder.Path("p-{page}.png")}, 1, "the document has no page. Leave {page} out"},
        {folder.Doc(), {"-o", folder.Path("none/p.png")}, 4, "none/p.png: cannot be written: "},
    };
    for (auto [document, arguments, exitCode, message] : cases) {
        arguments.insert(arguments.begin(), {"render", document});
        EXPECT_TRUE(Contains(folder.Lusym(arguments, exitCode).err, message));
        EXPECT_FALSE(std::filesystem::exists(folder.Path("p.png")));
    }
    EXPECT_EQ(folder.Read("doc.luz"), bytes);
}

} // namespace
