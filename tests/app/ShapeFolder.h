#pragma once

#include "DocumentFolder.h"

namespace test
{

/// A product of a "cover" and a "base", each a tetrahedron of side 10 at a place of its own, a library of two shapes, "pin"
/// and "flag", and a document of both without symbols.
class ShapeFolder : public TemporaryFolder
{
public:
    using Arguments = std::vector<std::string>;

    ShapeFolder()
    {
        WriteShape("pin", 1);
        WriteShape("flag", 2);
        WriteLibrary("Title of pin");
        WriteModel("cover", "base");
        RunLusym({"document", "new", Path("model.obj"), "-o", Doc(), "--page", "a4", "--library", Lib()});
    }

    std::string Doc() const { return Path("doc.luz"); }
    std::string Lib() const { return Path("SymbolsLibrary/PartSymbolLibrary.xml"); }

    static std::string Tetrahedron(const std::string& name, double at, double side, int firstVertex)
    {
        const auto at3 = [&](double x, double y, double z) {
            return "v " + std::to_string(at + x * side) + " " + std::to_string(y * side) + " " +
                   std::to_string(z * side) + "\n";
        };
        std::string text = "o " + name + "\n" + at3(0, 0, 0) + at3(1, 0, 0) + at3(0, 1, 0) + at3(0, 0, 1);
        for (const auto& [a, b, c] : {std::array{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}}) {
            text += "f " + std::to_string(a + firstVertex) + " " + std::to_string(b + firstVertex) + " " +
                    std::to_string(c + firstVertex) + "\n";
        }
        return text;
    }

    void WriteModel(const std::string& first, const std::string& second) const
    {
        Write("model.obj", Tetrahedron(first, 0.0, 10.0, 1) + Tetrahedron(second, 100.0, 10.0, 5));
    }

    void WriteShape(const std::string& name, double side) const
    {
        Write("SymbolsLibrary/Shape/" + name + ".obj", Tetrahedron(name, 0.0, side, 1));
    }

    void WriteLibrary(const std::string& titleOfPin, const std::string& shapeOfPin = "pin") const
    {
        const auto entry = [](const std::string& id, const std::string& title, const std::string& file,
                              const std::string& more) {
            return "<shape id=\"" + id + "\"><name>Name of " + id + "</name><title>" + title +
                   "</title><graphic url=\"SymbolsLibrary/Shape/" + file + ".obj\"/>" + more + "</shape>";
        };
        Write("SymbolsLibrary/PartSymbolLibrary.xml",
              "<drellin-library><units/><information/><categories/><shapes>" +
                  entry("pin", titleOfPin, shapeOfPin, "") +
                  entry("flag", "Title of flag", "flag",
                        "<scale>2</scale><shape_csys a=\"1\" e=\"1\" i=\"1\" pos_x=\"5\" pos_y=\"0\" pos_z=\"0\"/>") +
                  "</shapes><symbols/></drellin-library>");
    }

    /// Runs a verb on the document.
    ProcessResult Do(Arguments words, int exitCode = 0) const
    {
        words.insert(words.begin() + 2, Doc());
        return RunLusym(words, exitCode);
    }

    std::string Place(Arguments words) const
    {
        words.insert(words.begin(), {"symbol", "place"});
        const std::string id = Do(words).out;
        return id.substr(0, id.find('\n'));
    }

    nlohmann::json Symbol(const std::string& id) const
    {
        const nlohmann::json list = nlohmann::json::parse(Do({"symbol", "list", "--json"}).out);
        for (const nlohmann::json& symbol : list["symbols"]) {
            if (symbol["id"] == id) {
                return symbol;
            }
        }
        return {};
    }

    nlohmann::json Findings() const
    {
        const ProcessOptions english;
        const std::string text = RunProcess({LUSYM_PROGRAM, "document", "check", Doc(), "--json"}, english).out;
        return nlohmann::json::parse(text, nullptr, false)["findings"];
    }

    /// Replaces a text in an entry of the document.
    void Edit(const std::string& text, const std::string& replacement) const
    {
        std::vector<luhost::PackageEntry> entries;
        std::string error;
        ASSERT_TRUE(luhost::io::ZipPackageFormat().Read(Doc(), entries, error)) << error;
        std::string& xml = std::ranges::find(entries, "document.xml", &luhost::PackageEntry::name)->bytes;
        const std::size_t place = xml.find(text);
        ASSERT_NE(place, std::string::npos) << xml;
        xml.replace(place, text.size(), replacement);
        ASSERT_TRUE(luhost::io::ZipPackageFormat().Write(Doc(), entries, error)) << error;
    }

    void Drop(const std::string& entry) const
    {
        std::vector<luhost::PackageEntry> entries;
        std::string error;
        ASSERT_TRUE(luhost::io::ZipPackageFormat().Read(Doc(), entries, error)) << error;
        EXPECT_EQ(std::erase_if(entries, [&](const auto& each) { return each.name == entry; }), 1U);
        ASSERT_TRUE(luhost::io::ZipPackageFormat().Write(Doc(), entries, error)) << error;
    }
};

} // namespace test
