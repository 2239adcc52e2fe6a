// A library document from file to catalog and back: what is written is read again as the same.
#include "Fuzzing.h"
#include "FuzzWorkplace.h"
#include "xml/SymbolTemplateLoader.h"
#include "xml/SymbolTemplateWriter.h"

#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/CollectionInformation.h>
#include <luk/illustration/SymbolTemplate.h>

namespace
{

struct Library {
    std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>> templates;
    std::vector<du::SmartPtr<luk::illustration::CategoryInfo>> categories;
    du::SmartPtr<luk::illustration::CollectionInformation> information;
};

Library Load(std::string_view text)
{
    Library library;
    const auto loader = du::MakeCounted<lusymbols::SymbolTemplateLoader>();
    loader->GetTemplateList(du::Symbol(fuzz::FillFile("library.xml", text)), library.templates);
    loader->GetCategoryList(library.categories);
    library.information = loader->GetCollectionInformation();
    return library;
}

std::string Write(Library library, bool asStandard)
{
    const auto writer = du::MakeCounted<lusymbols::SymbolTemplateWriter>(asStandard);
    writer->SetCollectionInformation(library.information);
    const std::string path = fuzz::FillFile("written.xml", {});
    writer->ToXml(du::Symbol(path), std::move(library.templates), library.categories);
    return fuzz::ReadFile(path);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::FuzzWorkplace workplace;
    const fuzz::Balance balance;
    const Library library = Load(fuzz::AsText(data, size));
    for (const bool asStandard : {false, true}) {
        // A URL that names no file becomes one of the folder that it is resolved against, so that the first writing may differ.
        const Library again = Load(Write(library, asStandard));
        fuzz::Require(again.templates.size() == library.templates.size(), "no entry is lost");
        fuzz::Require(again.categories.size() == library.categories.size(), "no category is lost");
        const std::string written = Write(again, asStandard);
        fuzz::RequireSame(Write(Load(written), asStandard), written, "written again it is the same");
    }
    return 0;
}
