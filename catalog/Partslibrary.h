#pragma once

#include "plugin/Export.h"

#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/illustration/SequencerTag.h>

#include <string>
#include <vector>

namespace lusymbols
{

class PartslibraryCategoryItem;
class PartslibraryImageItem;
class PartslibraryItem;
class PartslibraryOlItem;

/// Where the symbol library lies on disk, how its URLs resolve, and which entry of the host's collection has an id.
///
/// Use: static operations only. Folders, with BASE the folder that the illustration preferences name:
///
///     BASE/SymbolsLibrary/                 the user's library          GetLibraryPath
///     BASE/SymbolsLibrary/2D/, Shape/      its pictures and shapes     GetImagePath, GetOlPath
///     BASE/SymbolsLibrary/standard/        the delivered library, with a 2D/ and a Shape/ of its own
///     TEMP/Symbols/                        files embedded into the open document
///
/// Folder paths end with the platform's separator.
///
/// Threads and locks: host thread; no lock. Two embeddings of equally named files at once would race for one target.
///
/// Errors: without preferences the library path is "" and the others are bare relative names. Without a temporary folder
/// "GetTemp dir failed\n" goes to standard output. Look-ups give null for what they do not find. Nothing throws but the
/// allocator.
class LUSYMBOLS_API Partslibrary
{
public:
    static std::string GetLibraryPath();
    static std::string GetImagePath();
    static std::string GetOlPath();

    /// Makes the user's library folder with its two folders inside. Nothing happens where the library folder exists,
    /// even if a folder inside is missing.
    static void CreateLibraryFolderIfNedded();
    /// The same for the delivered library. Call it after CreateLibraryFolderIfNedded: only one level is made at a time.
    static void CreateStandardFolderIfNedded();

    /// Names the place in the temporary "Symbols" folder to which a symbol file would be copied.
    ///
    /// @param useUuidName a fresh unique name with the source's extension instead of the source's own name
    /// @return false, with the outputs untouched, when the application has no temporary folder
    static bool GetTargetFilePath(const std::string& sourceFile, std::string& targetFile, std::string& tempDir,
                                  bool useUuidName);

    /// Copies a symbol file into the temporary "Symbols" folder, which it makes when needed.
    ///
    /// A file that is already there is kept: the first copy wins. Whether the copy itself succeeded is not told.
    /// @param targetFile the path of the copy; empty when there is no temporary folder
    /// @return false when there is no temporary folder, when "Symbols" cannot be made, or when source or copy would have no
    ///         file name that means the same on every platform (none, or one with a colon)
    static bool EmbedSymbol(const du::Symbol& sourceFile, du::Symbol& targetFile, bool useUuidName);

    /// Joins a relative URL to the library's base folder, with forward slashes only; an absolute URL stays as it is.
    static void CheckRelativeUrlAndConcatIfNeeded(std::string& url);

    /// Replaces every `from` in the text.
    static void replaceAll(std::string& text, char from, char to);

    /// The first category with this id (name), in collection order; null when that one is no category of the library.
    static du::SmartPtr<PartslibraryCategoryItem> GetCategoryFromCollectionById(const std::string& id);
    static du::SmartPtr<PartslibraryCategoryItem> GetCategoryFromCollectionByName(const std::string& name);

    static du::SmartPtr<PartslibraryImageItem> GetImageFromCollection(const std::string& id);
    static du::SmartPtr<PartslibraryOlItem> GetOlFromCollection(const std::string& id);
    static du::SmartPtr<PartslibraryItem> GetItemFromCollection(const std::string& id);

    /// @param tags becomes the entry's list, the tags shared; untouched when there is no such entry
    static bool GetItemSequencerTagsByID(const std::string& id,
                                         std::vector<du::SmartPtr<luk::illustration::SequencerTag>>& tags);

private:
    static std::string GetStandardFolderPath();
    static std::string GetStandardSymbolPath(bool is2D);
};

} // namespace lusymbols
