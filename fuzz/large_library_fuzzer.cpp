// A large library file, which is cut between entries, gives the same as the same document in a string, which never is.
//
// The input is the document, in which the bytes 1 and 2 stand for runs of shapes and of symbols long enough to be cut.
#include "Fuzzing.h"
#include "FuzzWorkplace.h"
#include "xml/SymbolTemplateLoader.h"
#include "xml/SymbolTemplateWriter.h"

#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/CollectionInformation.h>
#include <luk/illustration/SymbolTemplate.h>

namespace
{

/// Entries of which no two in a document have one name.
std::string MakeRun(const std::string& element, std::size_t number)
{
    // Few entries, since each costs an input its time, and large ones, since the size decides where a file is cut.
    constexpr int kEntries = 20;
    constexpr std::size_t kTextSize = 10000;
    std::string run;
    for (int i = 0; i < kEntries; ++i) {
        const std::string name = std::to_string(number) + "-" + std::to_string(i);
        run.append("<").append(element).append(" id=\"").append(name).append("\"><name>").append(name);
        run.append("</name><tooltip>");
        run.append(kTextSize, 'x').append("</tooltip></").append(element).append(">\n");
    }
    return run;
}

std::string MakeDocument(std::string_view input)
{
    constexpr std::size_t kMostRuns = 8;
    std::size_t runs = 0;
    std::string document = "<?xml ?>";
    for (const char c : input) {
        if ((c == 1 || c == 2) && ++runs <= kMostRuns) {
            document.append(MakeRun(c == 1 ? "shape" : "symbol", runs));
        } else if (c != '\r') {
            // A file's carriage returns go, those of a string stay.
            document.push_back(c);
        }
    }
    return document;
}

/// What is read of a source, as it is written again.
std::string ReadAndWrite(const std::string& source)
{
    const auto loader = du::MakeCounted<lusymbols::SymbolTemplateLoader>();
    loader->ParseFromFile(source, lusymbols::SymbolTemplateLoader::Origin::ORIGIN_USER);
    std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>> templates;
    std::vector<du::SmartPtr<luk::illustration::CategoryInfo>> categories;
    loader->GetTemplateList(du::Symbol(), templates);
    loader->GetCategoryList(categories);
    const auto writer = du::MakeCounted<lusymbols::SymbolTemplateWriter>(false);
    writer->SetCollectionInformation(loader->GetCollectionInformation());
    const std::string path = fuzz::FillFile("written.xml", {});
    writer->ToXml(du::Symbol(path), std::move(templates), categories);
    return fuzz::ReadFile(path);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::FuzzWorkplace workplace;
    const fuzz::Balance balance;
    const std::string document = MakeDocument(fuzz::AsText(data, size));
    fuzz::RequireSame(ReadAndWrite(fuzz::FillFile("library.xml", document)), ReadAndWrite(document), "cut or not");
    return 0;
}
