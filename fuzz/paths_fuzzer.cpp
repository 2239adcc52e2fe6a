// Paths and URLs, which are text alone: normalising is done once, and a name never leads elsewhere.
#include "catalog/Partslibrary.h"
#include "Fuzzing.h"
#include "FuzzWorkplace.h"

#include <du/FileSpec.h>

#include <algorithm>

namespace
{

std::string LocationOf(const du::FileSpec& file)
{
    std::string location;
    file.GetLocation(&location, true);
    return location;
}

void TryFileSpec(std::string_view folders, std::string_view name)
{
    du::FileSpec file(folders);
    const std::string path = file.GetFileSpec();
    fuzz::RequireSame(du::FileSpec(path).GetFileSpec(), path, "a normalised path stays as it is");
    fuzz::RequireSame(du::FileSpec(LocationOf(file) + file.GetFile()).GetFileSpec(), path, "its pieces make it up");
    file.SetLocation(folders);
    const std::string location = LocationOf(file);
    file.SetFile(name);
    file.SetFileExtension(name);
    file.SetFileBaseName(name);
    fuzz::RequireSame(LocationOf(file), location, "a name leaves the location as it is");
    fuzz::Require(file.GetFile().find(du::FileSpec::DIR_SEP_CHAR) == std::string::npos, "a name is one component");
    file.DirPushBack(name);
    fuzz::Require(LocationOf(file).starts_with(location), "a folder is put below the location");
}

void TryUrl(const std::string& text)
{
    std::string url = text;
    lusymbols::Partslibrary::CheckRelativeUrlAndConcatIfNeeded(url);
    std::string again = url;
    lusymbols::Partslibrary::CheckRelativeUrlAndConcatIfNeeded(again);
    fuzz::RequireSame(again, url, "a URL is resolved once");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::FuzzWorkplace workplace;
    const std::string_view text = fuzz::AsText(data, size);
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view rest = text.substr(std::min(end + 1, text.size()));
    TryFileSpec(text.substr(0, end), rest);
    TryUrl(std::string(text));
    return 0;
}
