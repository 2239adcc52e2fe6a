// The bytes of a package: what can be read is written and read again as the same.
#include "Fuzzing.h"

#include <luhost/io/ZipPackageFormat.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const luhost::io::ZipPackageFormat format;
    std::vector<luhost::PackageEntry> entries;
    std::string error;
    if (!format.Read(fuzz::FillFile("input.luz", fuzz::AsText(data, size)), entries, error)) {
        fuzz::Require(!error.empty(), "a reason for what cannot be read");
        return 0;
    }
    if (entries.empty()) {
        return 0; // no document, and nothing that could be written
    }
    for (const luhost::PackageEntry& entry : entries) {
        fuzz::Require(!entry.name.starts_with('/') && ("/" + entry.name + "/").find("/../") == std::string::npos,
                      "no name leads out of the package");
    }
    const std::string path = fuzz::GetFolder() + "/output.luz";
    fuzz::Require(format.Write(path, entries, error), "what was read can be written");
    std::vector<luhost::PackageEntry> again;
    fuzz::Require(format.Read(path, again, error), "what was written can be read");
    fuzz::Require(again.size() == entries.size(), "no entry is lost");
    for (std::size_t i = 0; i < entries.size(); ++i) {
        fuzz::RequireSame(again[i].name, entries[i].name, "names stay");
        fuzz::RequireSame(again[i].bytes, entries[i].bytes, "bytes stay");
    }
    return 0;
}
