#include "LibraryUrl.h"

#include "xml/LibraryFormat.h"

#include <du/FileSpec.h>

namespace lusym
{

namespace format = lusymbols::format;

using lusymbols::SymbolTemplateLoader;

std::string WrittenUrl(const std::string& resolved, bool isShape, SymbolTemplateLoader::Origin origin,
                       bool exportAsStandard)
{
    if (!du::FileSpec::IsAbsolute(resolved)) {
        return resolved;
    }
    const bool isShared = (origin & SymbolTemplateLoader::Origin::ORIGIN_SHARED) != 0;
    const bool isStandard =
        (origin & SymbolTemplateLoader::Origin::ORIGIN_OOTB) != 0 || (exportAsStandard && !isShared);
    std::string url(format::kLibraryFolder);
    if (isStandard) {
        url.append("/").append(format::kStandardFolder);
    }
    url.append("/").append(isShape ? format::kShapeFolder : format::kImageFolder).append("/");
    return url.append(du::FileSpec(resolved).GetFile());
}

} // namespace lusym
