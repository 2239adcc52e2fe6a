#pragma once

#include "catalog/PartslibraryItem.h"
#include "LibrarySource.h"
#include "ThumbnailDrawing.h"
#include "ThumbnailMark.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace lusym
{

/// One thumbnail of an entry.
struct ThumbnailFile {
    enum class State {
        Current, ///< shows what the entry is
        Missing,
        Changed, ///< shows what the entry was
        Own      ///< somebody else's, which stays
    };

    std::string path; ///< absolute
    int side = 0;     ///< in pixels
    FoundThumbnail found;
    State state = State::Own;
    bool isMade = false;

    bool IsToBeMade() const { return state == State::Missing || state == State::Changed; }
};

/// The thumbnails of one entry, and what they are made from.
struct EntryThumbnails {
    du::SmartPtr<lusymbols::PartslibraryItem> item;
    bool isShape = false;
    std::string source; ///< the file of the picture or shape
    PictureLook pictureLook;
    ShapeLook shapeLook;
    std::uint64_t shown = 0; ///< hash of the source and the look
    std::vector<ThumbnailFile> files;
    std::string oldUrl;     ///< of the gallery's thumbnail, as the entry has it
    bool namesNone = false; ///< whether that is the URL of no file
    std::string newUrl;     ///< where the entry names none
    std::string problem;
    std::string remark;

    bool IsToBeMade() const;
    bool HasAll() const;
};

/// Which thumbnails a library needs. A thumbnail that this program made tells what it shows; others are left alone, and so
/// is whatever lies outside the library's folder.
///
/// Cost: reads each source once.
class LibraryThumbnails
{
public:
    /// @param up of shapes that have no camera
    /// @param isForced whether all thumbnails are made anew, those of others too
    LibraryThumbnails(const LibraryReading& reading, luhost::render::UpAxis up, bool isForced);

    std::vector<EntryThumbnails>& GetEntries() { return m_entries; }
    const std::vector<EntryThumbnails>& GetEntries() const { return m_entries; }

    /// As the library names it: "SymbolsLibrary/2D/a_64x64.png".
    std::string NameOf(const std::string& path) const;

private:
    void Judge(EntryThumbnails& entry);
    void JudgeFile(EntryThumbnails& entry, ThumbnailFile& file);
    void NameFiles(EntryThumbnails& entry);
    bool IsFree(const ThumbnailFile& file, std::uint64_t shown) const;
    std::string FaultOfPlace(const std::string& path);

    LibraryPlace m_place;
    std::filesystem::path m_folder; ///< in which thumbnails may lie, without links
    bool m_isForced;
    std::vector<EntryThumbnails> m_entries;
    std::unordered_set<std::string> m_sources;
    std::unordered_map<std::string, std::uint64_t> m_shown; ///< what each thumbnail is to show, by its path
    std::unordered_map<std::string, bool> m_isInside;       ///< of folders in which thumbnails are to lie
    std::unordered_map<std::string, int> m_nextNumbers;     ///< of names that are given, by what they begin with
};

/// Makes the files of an entry, atomically each. Problems and remarks go into the entry.
class ThumbnailMaker
{
public:
    ThumbnailMaker();
    ~ThumbnailMaker();
    ThumbnailMaker(const ThumbnailMaker&) = delete;
    ThumbnailMaker& operator=(const ThumbnailMaker&) = delete;

    /// PNG files with their marks, in the order of the entry's files; empty where none is to be made. [any thread]
    std::vector<std::string> Draw(EntryThumbnails& entry) const;
    static void Write(EntryThumbnails& entry, const std::vector<std::string>& pngs);

private:
    PictureDecoders m_decoders;
    std::unique_ptr<luhost::io::ModelReader> m_reader;
};

} // namespace lusym
