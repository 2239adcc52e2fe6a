#include "RecordedLibraries.h"

#include "xml/LibraryFormat.h"

#include <dg/XmlElem.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace lusym
{

namespace
{

namespace fs = std::filesystem;

constexpr std::string_view kInstruction = "<?lusym-library ";
constexpr std::string_view kEnd = "?>";
constexpr std::size_t kMostLibraries = 64;

std::string Decoded(std::string_view text)
{
    constexpr std::pair<std::string_view, char> kEntities[] = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
    std::string decoded;
    while (!text.empty()) {
        const auto* const entity =
            std::ranges::find_if(kEntities, [&](const auto& known) { return text.starts_with(known.first); });
        const bool isEntity = entity != std::end(kEntities);
        decoded += isEntity ? entity->second : text.front();
        text.remove_prefix(isEntity ? entity->first.size() : 1);
    }
    return decoded;
}

/// Value of an attribute of an instruction; empty when it has none.
std::string AttributeOf(std::string_view instruction, const std::string& name)
{
    const std::string start = " " + name + "=\"";
    const std::size_t found = instruction.find(start);
    if (found == instruction.npos) {
        return {};
    }
    instruction.remove_prefix(found + start.size());
    const std::size_t end = instruction.find('"');
    return end == instruction.npos ? std::string() : Decoded(instruction.substr(0, end));
}

std::string Absolute(const std::string& path, const fs::path& folder)
{
    const bool isUsable = !path.empty() && path.find('\0') == path.npos;
    return isUsable ? (folder / path).lexically_normal().string() : std::string();
}

std::string Relative(const std::string& path, const fs::path& folder)
{
    const fs::path target(path);
    const auto first = [](const fs::path& whole) {
        const fs::path below = whole.relative_path();
        return below.empty() ? fs::path() : *below.begin();
    };
    const fs::path relative = target.lexically_relative(folder);
    return first(target) == first(folder) && !relative.empty() ? relative.generic_string() : path;
}

void AppendAttribute(std::string& text, std::string_view name, const std::string& path, const fs::path& folder)
{
    if (!path.empty()) {
        text.append(" ").append(name).append("=\"");
        dg::AppendXmlEncoded(text, Relative(path, folder));
        text += '"';
    }
}

void SkipBlanks(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

} // namespace

std::vector<RecordedLibrary> ReadRecordedLibraries(std::string_view libraryText, const std::string& documentFolder)
{
    std::vector<RecordedLibrary> libraries;
    if (libraryText.starts_with(lusymbols::format::kInlineDocumentStart)) {
        libraryText.remove_prefix(std::min(libraryText.find(kEnd), libraryText.size() - kEnd.size()) + kEnd.size());
    }
    SkipBlanks(libraryText);
    while (libraryText.starts_with(kInstruction) && libraries.size() < kMostLibraries) {
        const std::size_t end = libraryText.find(kEnd);
        if (end == libraryText.npos) {
            break;
        }
        const std::string_view instruction = libraryText.substr(kInstruction.size() - 1, end - kInstruction.size() + 1);
        RecordedLibrary library{Absolute(AttributeOf(instruction, "href"), documentFolder),
                                Absolute(AttributeOf(instruction, "root"), documentFolder),
                                Absolute(AttributeOf(instruction, "messages"), documentFolder)};
        if (!library.path.empty() && std::ranges::find(libraries, library) == libraries.end()) {
            libraries.push_back(std::move(library));
        }
        libraryText.remove_prefix(end + kEnd.size());
        SkipBlanks(libraryText);
    }
    return libraries;
}

std::string RecordLibraries(const std::string& libraryText, const std::vector<RecordedLibrary>& libraries,
                            const std::string& documentFolder)
{
    std::string instructions;
    for (std::size_t index = 0; index < std::min(libraries.size(), kMostLibraries); ++index) {
        const RecordedLibrary& library = libraries[index];
        instructions.append(kInstruction.substr(0, kInstruction.size() - 1));
        AppendAttribute(instructions, "href", library.path, documentFolder);
        AppendAttribute(instructions, "root", library.root, documentFolder);
        AppendAttribute(instructions, "messages", library.messages, documentFolder);
        instructions.append(kEnd).append("\n");
    }
    const bool hasDeclaration = libraryText.starts_with(lusymbols::format::kDeclaration);
    std::string text = libraryText;
    return text.insert(hasDeclaration ? lusymbols::format::kDeclaration.size() : 0, instructions);
}

} // namespace lusym
