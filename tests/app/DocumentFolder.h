#pragma once

#include "Process.h"
#include "support/TemporaryFolder.h"

#include <luhost/io/ZipPackageFormat.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <vector>

namespace test
{

/// A library of two pictures, "a" (40 x 20 pixels) and "b" (30 x 30), and a document that follows it: s1 and s2 on page 1,
/// s3 on page 2, s4 and s5 over the view. s2 and s4 show "b", the others "a"; s4 has a title of its own and follows no entry.
class DocumentFolder : public TemporaryFolder
{
public:
    DocumentFolder()
    {
        WritePicture("a", 40, 20);
        WritePicture("b", 30, 30);
        WriteLibrary("Title of a");
        Lusym({"document", "new", "-o", Doc(), "--page", "a4", "--page", "100x50", "--library", Lib()});
        EXPECT_EQ(Place("entry,page,x,y,z,width,rotate,title,frame,fill\n"
                        "a,1,50,100,,40,,,red,#00ff0080\n"
                        "b,1,100,100,,30,,,,\n"
                        "a,2,50,25,,20,90,,,\n"
                        "b,view,0,0,0,50,,Own title,,\n"
                        "a,view,0,-50,0,50,,,blue,none\n"),
                  "s1\ns2\ns3\ns4\ns5\n");
    }

    std::string Doc() const { return Path("doc.luz"); }
    std::string Lib() const { return Path("SymbolsLibrary/PartSymbolLibrary.xml"); }

    void WritePicture(const std::string& name, int width, int height) const
    {
        const std::string size = "width=\"" + std::to_string(width) + "\" height=\"" + std::to_string(height) + "\"";
        Write("SymbolsLibrary/2D/" + name + ".svg",
              "<svg xmlns=\"http://www.w3.org/2000/svg\" " + size + "><rect " + size + " fill=\"#102030\"/></svg>");
    }

    void WriteLibrary(const std::string& titleOfA) const
    {
        Write("SymbolsLibrary/PartSymbolLibrary.xml",
              "<drellin-library><units/><information/><categories/><shapes><shape id=\"shape\"><name>Shape</name>"
              "<graphic url=\"s.obj\"/></shape></shapes><symbols>" +
                  Entry("a", titleOfA) + Entry("b", "Title of b") + "</symbols></drellin-library>");
    }

    static ProcessResult Lusym(const std::vector<std::string>& arguments, int exitCode = 0)
    {
        return RunLusym(arguments, exitCode);
    }

    nlohmann::json Json(std::vector<std::string> arguments, int exitCode = 0) const
    {
        arguments.emplace_back("--json");
        return nlohmann::json::parse(Lusym(arguments, exitCode).out, nullptr, false);
    }

    /// Places what a table says. @return what stands on standard output
    std::string Place(const std::string& table, int exitCode = 0) const
    {
        return Lusym({"symbol", "place", Doc(), "--from", Write("table", table)}, exitCode).out;
    }

    nlohmann::json Symbols() const { return Json({"symbol", "list", Doc()})["symbols"]; }

    nlohmann::json SymbolOf(const std::string& id) const
    {
        const nlohmann::json symbols = Symbols();
        const auto found = std::ranges::find_if(symbols, [&](const auto& symbol) { return symbol["id"] == id; });
        return found == symbols.end() ? nlohmann::json() : *found;
    }

    std::vector<luhost::PackageEntry> Unpack() const
    {
        std::vector<luhost::PackageEntry> entries;
        std::string error;
        EXPECT_TRUE(luhost::io::ZipPackageFormat().Read(Doc(), entries, error)) << error;
        return entries;
    }

    void Pack(const std::vector<luhost::PackageEntry>& entries, const std::string& name = "doc.luz") const
    {
        std::string error;
        EXPECT_TRUE(luhost::io::ZipPackageFormat().Write(Path(name), entries, error)) << error;
    }

    /// Replaces a text in one entry of the document, or takes the entry away.
    void Edit(const std::string& entry, const std::string& text, const std::string& replacement) const
    {
        std::vector<luhost::PackageEntry> entries = Unpack();
        const auto edited = std::ranges::find(entries, entry, &luhost::PackageEntry::name);
        ASSERT_NE(edited, entries.end());
        const std::size_t place = edited->bytes.find(text);
        ASSERT_NE(place, std::string::npos) << edited->bytes;
        edited->bytes.replace(place, text.size(), replacement);
        Pack(entries);
    }

    void Drop(const std::string& entry) const
    {
        std::vector<luhost::PackageEntry> entries = Unpack();
        EXPECT_EQ(std::erase_if(entries, [&](const auto& each) { return each.name == entry; }), 1U);
        Pack(entries);
    }

private:
    static std::string Entry(const std::string& id, const std::string& title)
    {
        return "<symbol id=\"" + id + "\"><name>Name of " + id + "</name><title>" + title +
               "</title><showTooltipTitle>true</showTooltipTitle><image url=\"SymbolsLibrary/2D/" + id +
               ".svg\"/></symbol>";
    }
};

} // namespace test
