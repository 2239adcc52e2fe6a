#include "Check.h"
#include "Locales.h"
#include "Stage.h"
#include "SystemState.h"
#include "Trial.h"
#include "xml/SymbolTemplateWriter.h"

#include <du/FileSystem.h>
#include <luk/illustration/AssociativeObjectSaver.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/SymbolCollectionInformation.h>
#include <luk/illustration/SymbolTemplate.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <vector>

namespace lusym::check
{

namespace
{

using luk::illustration::AssociativeObjectSaver;
using luk::illustration::CategoryInfo;
using luk::illustration::SymbolTemplate;
using LoaderPtr = du::SmartPtr<lukapp::illustration::SymbolTemplateLoader>;
using Templates = std::vector<du::SmartPtr<SymbolTemplate>>;
using Categories = std::vector<du::SmartPtr<CategoryInfo>>;

constexpr const char* kWholeLibrary = R"(<?xml version="1.0" encoding="utf-8"?>
<drellin-library>
  <units>mm</units>
  <information>Tools &amp; signs, "all" of them</information>
  <categories>
    <category id="cat-signs"><name>Signs</name><tooltip>What to mind</tooltip><description></description></category>
    <category id="cat-bolts"><name>Bolts</name><tooltip></tooltip><description>M4 to M20</description></category>
  </categories>
  <shapes>
    <shape id="shp-1" categoryId="cat-bolts"><name>Bolt</name><title>Bolt M8</title><showTooltipTitle>true</showTooltipTitle>
      <description>Zinc &lt;plated&gt;</description><tooltip>M8</tooltip>
      <gallery_thumbnail url="SymbolsLibrary/Shape/bolt_64x64.png"/><graphic url="SymbolsLibrary/Shape/bolt.shp"/>
      <scale>2.5</scale><orientation>3</orientation>
      <shape_csys a="0" b="-1" c="0" d="1" e="0" f="0" g="0" h="0" i="1" pos_x="1.5" pos_y="-2.25" pos_z="1e+06"/>
      <axis_name>Z</axis_name><distance_from_csys>12.5</distance_from_csys><axis_id>2</axis_id>
      <orientation_name>front</orientation_name><annotation_to_symbol>true</annotation_to_symbol>
      <use_current_orientation>true</use_current_orientation><edit_csys_method>2</edit_csys_method>
      <tags><tag type="TORQUE"><description>how tight</description><quantity unit="Nm">25.4</quantity></tag></tags>
      <camera ortho="true" value="12.5" location="1 0 0 0 1 0 0 0 1 0.5 -4 2.5"/></shape>
    <shape id="shp-2" categoryId="cat-bolts"><name>Nut</name><gallery_thumbnail url="SymbolsLibrary/Shape/nut_64x64.png"/>
      <graphic url="SymbolsLibrary/Shape/nut.shp"/></shape>
  </shapes>
  <symbols>
    <symbol id="img-1" categoryId="cat-signs" billboard="true"><name>Hot</name><title></title><description>Wärme</description>
      <tooltip>Hot surface</tooltip><gallery_thumbnail url="SymbolsLibrary/2D/hot_64x64.png"/>
      <image url="SymbolsLibrary/2D/hot.png"/><scale>3</scale><flip horizontal="true" vertical="false"/>
      <rotate right="90" left="180"/></symbol>
    <symbol id="img-2" categoryId="cat-none" billboard="false"><name>Cold</name>
      <gallery_thumbnail url="SymbolsLibrary/2D/cold_64x64.png"/><image url="SymbolsLibrary/2D/cold.png"/></symbol>
  </symbols>
</drellin-library>
)";

/// What a loader gives.
struct Library {
    LoaderPtr loader;
    bool isUnderstood = false;
    Templates templates;
    Categories categories;
};

Library ReadLibrary(Trial& trial, const std::string& path)
{
    Library library;
    library.loader = trial.MakeLoader();
    if (library.loader) {
        library.isUnderstood = library.loader->GetTemplateList(du::Symbol(path), library.templates);
        library.loader->GetCategoryList(library.categories);
    }
    return library;
}

std::string ReadText(const std::string& path)
{
    std::ifstream file(std::filesystem::path(std::u8string(path.begin(), path.end())), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// As one text, by what every entry has.
std::string TextOf(const Library& library)
{
    std::string text;
    for (const auto& category : library.categories) {
        text += category->GetId() + "=" + category->GetName() + ";";
    }
    for (const auto& entry : library.templates) {
        text += entry->GetId() + "=" + entry->GetName() + " in " + entry->GetCategoryId() + ";";
    }
    return text;
}

/// Entry by entry, as the entries themselves compare.
void ExpectEqual(Trial& trial, const Library& first, const Library& second, const std::string& when)
{
    trial.Expect(TextOf(first) == TextOf(second), when + " a library holds other entries or categories");
    for (std::size_t i = 0; i < std::min(first.templates.size(), second.templates.size()); ++i) {
        trial.Expect(first.templates[i]->Compare(second.templates[i]),
                     when + " the entry \"" + first.templates[i]->GetName() + "\" says something else");
    }
}

/// The writer, which a host makes by its constructor and no request. Its functions are those of the library that is looked at.
class Writer
{
public:
    explicit Writer(Trial& trial)
    {
        std::string problem;
        m_library = RawLibrary::Load(trial.GetPluginPath(), RawLibrary::Binding::Now, problem);
        m_construct = m_library ? m_library->Find("_ZN9lusymbols20SymbolTemplateWriterC1Eb") : nullptr;
        m_toXml = m_library ? m_library->Find("_ZN9lusymbols20SymbolTemplateWriter5ToXmlERKN2du6SymbolEOSt6vectorINS1_"
                                              "8SmartPtrIN3luk12illustration14SymbolTemplateEEESaISA_EERKS5_INS6_INS8_"
                                              "12CategoryInfoEEESaISF_EE")
                            : nullptr;
    }

    bool IsThere() const { return m_construct && m_toXml; }

    void Write(const std::string& path, const Library& library) const
    {
        using Construct = void (*)(void*, bool);
        using ToXml = void (*)(void*, const du::Symbol&, Templates&&, const Categories&);
        void* const memory = ::operator new(sizeof(lusymbols::SymbolTemplateWriter));
        reinterpret_cast<Construct>(m_construct)(memory, false);
        const du::SmartPtr<AssociativeObjectSaver> writer(static_cast<AssociativeObjectSaver*>(memory));
        writer->SetCollectionInformation(library.loader->GetCollectionInformation());
        reinterpret_cast<ToXml>(m_toXml)(memory, du::Symbol(path), Templates(library.templates), library.categories);
    }

private:
    std::unique_ptr<RawLibrary> m_library;
    void* m_construct = nullptr;
    void* m_toXml = nullptr;
};

void CheckLibraryRead(Trial& trial)
{
    const Stage stage(trial);
    const Library library = ReadLibrary(trial, stage.Write("whole.xml", kWholeLibrary));
    if (!library.loader) {
        return;
    }
    const auto information =
        du::DynamicCast<luk::illustration::SymbolCollectionInformation>(library.loader->GetCollectionInformation());
    trial.Expect(library.isUnderstood, "a library that can be read is answered with false");
    trial.Expect(information && information->GetUnits() == "mm" &&
                     information->GetInformation() == "Tools & signs, \"all\" of them",
                 "the unit and the information of a library are not what it says");
    const std::string expected = "cat-signs=Signs;cat-bolts=Bolts;shp-1=Bolt in cat-bolts;shp-2=Nut in cat-bolts;"
                                 "img-1=Hot in cat-signs;img-2=Cold in cat-none;";
    trial.Expect(TextOf(library) == expected, "a library reads as " + TextOf(library) + " and not " + expected);
    for (const auto& entry : library.templates) {
        trial.Expect(entry->Compare(entry) && !entry->Compare(nullptr) &&
                         entry->Compare(library.templates.front()) == (entry == library.templates.front()),
                     "an entry of a library does not compare as what it is");
    }
}

void CheckLibraryRoundTrip(Trial& trial)
{
    const Stage stage(trial);
    const Writer writer(trial);
    if (!trial.Expect(writer.IsThere(),
                      "the library does not show the constructor and ToXml of SymbolTemplateWriter")) {
        return;
    }
    // The user's own library, of which files are named in the folder that they are in.
    constexpr const char* kUserLibrary = "SymbolsLibrary/PartSymbolLibrary.xml";
    const Library first = ReadLibrary(trial, stage.Write(kUserLibrary, kWholeLibrary));
    const std::string once = trial.GetFolder() + "/once.xml";
    const std::string twice = trial.GetFolder() + "/twice.xml";
    if (!first.loader) {
        return;
    }
    writer.Write(once, first);
    const Library second = ReadLibrary(trial, stage.Write(kUserLibrary, ReadText(once)));
    writer.Write(twice, second);
    ExpectEqual(trial, first, second, "written and read again");
    trial.Expect(ReadText(once) == ReadText(twice) && !ReadText(once).empty(),
                 "a library that was written, read and written again has another text");
}

void CheckLibraryTwice(Trial& trial)
{
    const Stage stage(trial);
    const std::string path = stage.Write("whole.xml", kWholeLibrary);
    const LoaderPtr loader = trial.MakeLoader();
    if (!loader) {
        return;
    }
    Templates once;
    Templates twice;
    Categories categories;
    loader->GetTemplateList(du::Symbol(path), once);
    loader->GetTemplateList(du::Symbol(path), twice);
    loader->GetCategoryList(categories);
    trial.Expect(once == twice && !once.empty(), "a library that one loader reads twice has its entries twice");
    trial.Expect(categories.size() == 4, "the categories of both readings are not there");
}

void CheckLibraryUnreadable(Trial& trial)
{
    const Stage stage(trial);
    du::FileSystem::Mkdir(trial.GetFolder() + "/folder.xml");
    MakePipe(trial.GetFolder() + "/pipe.xml");
    const std::string text = kWholeLibrary;
    const std::string six =
        text.substr(0, text.find("  <symbols>")) + "<more/>" + text.substr(text.find("  <symbols>"));
    const std::string paths[] = {trial.GetFolder() + "/missing.xml",
                                 trial.GetFolder() + "/folder.xml",
                                 trial.GetFolder() + "/pipe.xml",
                                 "",
                                 "/dev/zero",
                                 stage.Write("empty.xml", ""),
                                 stage.Write("text.xml", "no XML at all"),
                                 stage.Write("other.xml", "<?xml version=\"1.0\"?><other/>"),
                                 stage.Write("six.xml", six),
                                 stage.Write("nul.xml", text + std::string(1, '\0')),
                                 stage.Write("deep.xml",
                                             [] {
                                                 std::string deep;
                                                 for (int i = 0; i < 100000; ++i) {
                                                     deep += "<a>";
                                                 }
                                                 return deep;
                                             }()),
                                 "<?xml this is no document"};
    for (const std::string& path : paths) {
        const Library library = ReadLibrary(trial, path);
        const std::string name = path.substr(path.rfind('/') + 1);
        trial.Expect(library.isUnderstood,
                     "the request for the unreadable library \"" + name + "\" is answered with false");
        trial.Expect(library.templates.empty() && library.categories.empty(),
                     "the unreadable library \"" + name + "\" has entries");
    }
}

void CheckLibraryTruncated(Trial& trial)
{
    const Stage stage(trial);
    const std::string text = kWholeLibrary;
    const std::size_t end = text.rfind('>');
    for (std::size_t length = 0; length < end; ++length) {
        const std::string cut = text.substr(0, length);
        // Most of them as a document of its own, which spares the file.
        const Library library = ReadLibrary(trial, length % 50 == 0 || length < 6 ? stage.Write("cut.xml", cut) : cut);
        if (!trial.Expect(library.isUnderstood && library.templates.empty() && library.categories.empty(),
                          "something is read of a library that ends after " + std::to_string(length) + " bytes")) {
            return;
        }
    }
}

void CheckLibraryLocale(Trial& trial)
{
    const Stage stage(trial);
    const Writer writer(trial);
    const std::string path = stage.Write("whole.xml", kWholeLibrary);
    const std::string here = trial.GetFolder() + "/here.xml";
    const std::string there = trial.GetFolder() + "/there.xml";
    const Library library = ReadLibrary(trial, path);
    if (!library.loader) {
        return;
    }
    if (writer.IsThere()) {
        writer.Write(here, library);
    }
    const CommaLocale elsewhere;
    ExpectEqual(trial, library, ReadLibrary(trial, path), "under another locale");
    if (writer.IsThere()) {
        writer.Write(there, library);
        trial.Expect(ReadText(here) == ReadText(there), "a library is written in another way under another locale");
    }
}

constexpr Check kLibraryChecks[] = {
    {"library-read", "library",
     "The loader reads a library into its entries and categories, in the order of the document, shapes before "
     "pictures, with "
     "the unit and the information of the whole.",
     CheckLibraryRead},
    {"library-round-trip", "library",
     "The library shows the writer of symbol libraries. What it writes reads back as entries equal to those that were "
     "written, and is written again as the same text.",
     CheckLibraryRoundTrip},
    {"library-twice", "library",
     "One loader may read several libraries. Of two entries with one name it keeps the first; the categories of all "
     "are kept.",
     CheckLibraryTwice},
    {"library-unreadable", "library",
     "A library that is missing, empty, a folder, a pipe, without an end, not well formed, nested too deep or of "
     "another kind "
     "has no entries and no categories; the request for it is answered with true all the same.",
     CheckLibraryUnreadable},
    {"library-truncated", "library", "Of a library that ends anywhere before its end nothing is read.",
     CheckLibraryTruncated},
    {"library-locale", "library",
     "Libraries do not depend on how the user's language writes numbers, neither in reading nor in writing.",
     CheckLibraryLocale},
};

} // namespace

std::span<const Check> LibraryChecks() { return kLibraryChecks; }

} // namespace lusym::check
