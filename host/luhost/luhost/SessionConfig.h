#pragma once

#include <dg/Color.h>
#include <luloader/Loader.h>

#include <string>
#include <utility>
#include <vector>

namespace luhost
{

/// What a session is made from. Folders are absolute UTF-8 paths; a separator at the end does no harm.
struct SessionConfig {
    /// Holds "SymbolsLibrary"; relative URLs of library entries start here.
    std::string baseFolder;

    bool sharedSymbolLibraryEnabled = false;
    /// Holds the shared "SymbolsLibrary"; empty: the shared cache folder.
    std::string sharedSymbolLibraryFolder;
    /// Relative URLs of shared entries start here; empty: the shared library folder.
    std::string sharedCacheFolder;

    /// Used and left as it is; empty: a fresh private folder, deleted at the end of the session.
    std::string temporaryDirectory;

    /// Documents are authored: their pictures are in the temporary folder. False: they are only shown, and found through
    /// the document's anchor.
    bool authoring = true;

    /// Workers, bounds and decoders of the loader; without decoders no picture can be read.
    luloader::Loader::Config loader;

    /// As in the message file, such as "de"; empty: the file's default.
    std::string language;
    /// Messages to install; empty: the built-in ones alone.
    std::string messageFile;

    /// Colours that the user has set, by preference key.
    std::vector<std::pair<std::string, dg::Color>> colors;
};

} // namespace luhost
