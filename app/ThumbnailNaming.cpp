#include "ThumbnailNaming.h"

#include "catalog/PartslibraryImageItem.h"
#include "catalog/PartslibraryOlItem.h"
#include "FileText.h"
#include "LibraryWriting.h"
#include "OutputFile.h"
#include "TemporaryFolder.h"
#include "xml/LibraryFormat.h"

#include <dg/XmlElem.h>

#include <algorithm>
#include <string_view>
#include <unordered_set>

namespace lusym
{

namespace
{

using lusymbols::PartslibraryImageItem;
using lusymbols::PartslibraryOlItem;

void SetUrl(const EntryThumbnails& entry, const std::string& url)
{
    if (auto* const shape = dynamic_cast<PartslibraryOlItem*>(entry.item.get())) {
        shape->SetOlGalleryThumbnailUrl(url);
    } else if (auto* const image = dynamic_cast<PartslibraryImageItem*>(entry.item.get())) {
        image->SetImageGalleryThumbnailUrl(url);
    }
}

bool IsToBeNamed(const EntryThumbnails& entry) { return !entry.newUrl.empty() && entry.problem.empty(); }

std::string_view WithoutIndent(std::string_view line)
{
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    return line;
}

/// Cuts the first line off, with its line feed.
std::string_view TakeLine(std::string_view& text)
{
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end == text.npos ? end : end + 1);
    text.remove_prefix(line.size());
    return line;
}

/// Whether the new text is the old one but for lines that name these thumbnails, in the place of another or of none.
bool DiffersInThumbnailsAlone(std::string_view oldText, std::string_view newText,
                              const std::unordered_set<std::string>& namingLines)
{
    const std::string start = std::string("<").append(lusymbols::format::kGalleryThumbnail);
    while (!newText.empty()) {
        const std::string_view newLine = TakeLine(newText);
        std::string_view restOfOld = oldText;
        const std::string_view oldLine = TakeLine(restOfOld);
        const bool isSame = newLine == oldLine;
        if (!isSame && namingLines.count(std::string(WithoutIndent(newLine))) == 0) {
            return false;
        }
        if (isSame || WithoutIndent(oldLine).starts_with(start)) {
            oldText = restOfOld;
        }
    }
    return oldText.empty();
}

} // namespace

void ThumbnailNaming::Try(LibraryThumbnails& thumbnails) const
{
    std::vector<EntryThumbnails>& entries = thumbnails.GetEntries();
    if (std::ranges::none_of(entries, &IsToBeNamed)) {
        return;
    }
    const TemporaryFolder folder;
    std::string error = folder.GetError();
    if (error.empty()) {
        MakeText(folder.GetFilePath(), thumbnails, error);
    }
    if (!error.empty()) {
        for (EntryThumbnails& entry : entries) {
            entry.problem =
                IsToBeNamed(entry) ? "it names none, and no name can be given to it: " + error : entry.problem;
        }
    }
}

bool ThumbnailNaming::Write(LibraryThumbnails& thumbnails, std::string& error) const
{
    if (std::ranges::none_of(thumbnails.GetEntries(), &IsToBeNamed)) {
        return false;
    }
    OutputFile file(m_reading.place.path);
    if (file.GetPathToFill().empty()) {
        error = file.GetError();
        return false;
    }
    MakeText(file.GetPathToFill(), thumbnails, error);
    std::string current;
    std::string unread;
    if (error.empty() && (!ReadFileText(m_reading.place.path, current, unread) || current != m_text)) {
        error = "the library has changed meanwhile; run this again";
    }
    if (error.empty() && !file.Commit()) {
        error = file.GetError();
    }
    return error.empty();
}

void ThumbnailNaming::MakeText(const std::string& path, const LibraryThumbnails& thumbnails, std::string& error) const
{
    std::unordered_set<std::string> lines;
    for (const EntryThumbnails& entry : thumbnails.GetEntries()) {
        if (IsToBeNamed(entry)) {
            SetUrl(entry, entry.newUrl);
            std::string line = std::string("<").append(lusymbols::format::kGalleryThumbnail).append(" url=\"");
            dg::AppendXmlEncoded(line, entry.newUrl);
            lines.insert(line.append("\"/> \n"));
        }
    }
    bool fits = WriteText(path, lines, error);
    if (!fits && error.empty()) {
        // URLs of no file were resolved to a folder, which is not what the library says when it leaves them empty.
        for (const EntryThumbnails& entry : thumbnails.GetEntries()) {
            if (entry.namesNone && !IsToBeNamed(entry)) {
                SetUrl(entry, {});
            }
        }
        fits = WriteText(path, lines, error);
    }
    if (!fits && error.empty()) {
        error = "the library is not in canonical form; run \"lusym library format\" on it first";
    }
    for (const EntryThumbnails& entry : thumbnails.GetEntries()) {
        SetUrl(entry, entry.oldUrl);
    }
}

bool ThumbnailNaming::WriteText(const std::string& path, const std::unordered_set<std::string>& lines,
                                std::string& error) const
{
    std::string text;
    return WriteLibraryFile(ContentOf(m_reading.examination), false, path, error) && ReadFileText(path, text, error) &&
           DiffersInThumbnailsAlone(m_text, text, lines);
}

} // namespace lusym
