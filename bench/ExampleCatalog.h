#pragma once

#include <du/SmartPtr.h>
#include <luhost/Session.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/SymbolTemplate.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace bench
{

using Templates = std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>>;
using Categories = std::vector<du::SmartPtr<luk::illustration::CategoryInfo>>;

/// A catalog like a real one: half shapes, half pictures, texts of ordinary length, tags on every tenth entry.
struct Catalog {
    Templates templates;
    Categories categories;
};
Catalog MakeCatalog(std::size_t entries, std::size_t categories);

/// A host session in a temporary folder that also holds the documents that are measured.
class Workplace
{
public:
    Workplace();
    ~Workplace();
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;

    /// Path of the user's library with this many entries, a hundred to a category; written when first asked for.
    std::string LibraryFile(std::size_t entries);
    /// Path of a small picture of this name in the "Symbols" folder of the session; written when first asked for.
    std::string PictureFile(const std::string& name);
    /// The same for a small shape, different for each seed.
    std::string ShapeFile(const std::string& name, std::size_t seed);
    /// Path of a document to write to and read from.
    std::string DocumentFile(std::size_t symbols) const;
    /// Path of a file to write to.
    std::string OutputFile() const { return m_folder + "/written.xml"; }

private:
    std::string m_folder;
    std::unique_ptr<luhost::Session> m_session;
};

/// The one workplace of the run.
Workplace& GetWorkplace();

std::size_t FileSize(const std::string& path);

/// Bytes that the program holds by its allocator.
std::size_t BytesInUse();

/// To the system, so that what comes next finds memory as a program does that has just begun.
void GiveFreeMemoryBack();

} // namespace bench
