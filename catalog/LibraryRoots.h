#pragma once

#include <du/Symbol.h>

#include <string>
#include <string_view>

namespace lusymbols
{

class PartslibraryItem;

/// The base folders against which library URLs resolve, as the host's settings name them at one moment.
///
/// Use: internal to the plug-in. Reading the settings costs several host calls, so work on many entries (loading a
/// document, filling the gallery) takes one of these and asks it for each URL.
///
/// Threads and locks: reads host settings in FromHost; afterwards an immutable value.
class LibraryRoots
{
public:
    static LibraryRoots FromHost();

    /// Makes the URL of an entry absolute: shared entries against the shared cache folder, others against the base
    /// folder. Delivered entries join the folder as it was given and have their relative part normalised; all others
    /// join the normalised folder and keep their relative part.
    /// @param[out] resolved what it held is replaced; must not be what `url` looks into
    void Resolve(const PartslibraryItem& item, std::string_view url, std::string& resolved) const;

    /// The same without an entry: always against the normalised base folder.
    void Resolve(std::string_view url, std::string& resolved) const;

private:
    /// A folder ready to be put before a URL: with its separator, or empty where the
    /// host names no folder.
    struct Root {
        std::string raw;
        std::string normalised;
    };

    static Root MakeRoot(const du::Symbol& folder);
    static void Resolve(const Root& root, std::string_view url, std::string& resolved);

    Root m_base;
    Root m_shared;
};

} // namespace lusymbols
