// The content of a package: its entries as text, each behind a line "=== NAME". What opens is saved, opened and saved as the
// same, and leaves nothing behind.
#include "Fuzzing.h"
#include "FuzzWorkplace.h"

#include <filesystem>

namespace
{

fuzz::MemoryPackages::Entries ToEntries(std::string_view text)
{
    constexpr std::string_view kMark = "=== ";
    fuzz::MemoryPackages::Entries entries;
    while (text.starts_with(kMark)) {
        text.remove_prefix(kMark.size());
        const std::size_t nameEnd = std::min(text.find('\n'), text.size());
        const std::string name(text.substr(0, nameEnd));
        text.remove_prefix(std::min(nameEnd + 1, text.size()));
        const std::size_t next = text.find("\n=== ");
        entries[name] = text.substr(0, next);
        text.remove_prefix(next == text.npos ? text.size() : next + 1);
    }
    return entries;
}

/// Files of the package are unpacked below "Symbols" of the temporary folder, and nowhere else. They go.
void RequireInPlace()
{
    namespace fs = std::filesystem;
    const fs::path temporary = fs::path(fuzz::GetFolder()) / "temporary";
    fs::create_directories(temporary);
    for (const fs::path& folder : {fs::path(fuzz::GetFolder()), temporary}) {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            const fs::path name = entry.path().filename();
            fuzz::Require(name == (folder == temporary ? "Symbols" : "temporary") || name == "library.xml",
                          "nothing is written elsewhere");
        }
    }
    fs::remove_all(temporary / "Symbols");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::FuzzWorkplace workplace;
    workplace.GetPackages().files["input"] = ToEntries(fuzz::AsText(data, size));
    if (std::unique_ptr<luhost::Document> document = workplace.Open("input")) {
        workplace.SaveAndOpen(std::move(document));
    }
    RequireInPlace();
    return 0;
}
