#pragma once

#include <du/SymbolMap.h>
#include <luhost/Package.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace luk
{
class SerializedContentElement;
}

namespace luhost
{

/// The pictures of a document: entries below "Symbols/" of its package, files in "Symbols" of the session's temporary
/// folder while it is open.
class SymbolFiles
{
public:
    /// The component that an entry names below "Symbols/"; empty when it names none, or one that another system could take
    /// for something else.
    static std::string_view NameOfEntry(std::string_view entryName) noexcept;

    /// Makes the file anew, whatever lay there; follows no link. @return false when it could not be written
    static bool Unpack(const std::string& temporaryFolder, std::string_view name, const std::string& bytes);

    /// @param temporaryFolder may be empty, then there are no files
    explicit SymbolFiles(const std::string& temporaryFolder);

    /// Marks the files that saved content names.
    void Use(const luk::SerializedContentElement& content);
    /// The same for XML that is not understood: whatever it has in quotes may be such a name.
    void UseForeign(std::string_view xml);

    /// Appends the marked files. @return false, with the reason, when one cannot be read
    bool Pack(std::vector<PackageEntry>& entries, std::string& error) const;

private:
    void UseOwn(const luk::SerializedContentElement& element);

    std::string m_folder;
    std::unordered_map<std::string_view, bool> m_files; ///< whether each is marked, by the texts of m_names
    std::unordered_set<std::string> m_names;
    du::SymbolMap<bool*> m_bySymbol;
};

} // namespace luhost
