#pragma once

#include <du/Export.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace du
{

/// Messages of one table by key and language.
///
/// Use: fill it, then install it in the MessageCatalog, from where on it is only read.
///
/// Threads: reading is safe on any thread, filling belongs to one.
///
/// Cost: a look-up takes the same time however many keys and languages there are, and allocates nothing.
class LUHOST_API MessageTable
{
public:
    explicit MessageTable(std::string_view name, std::string_view defaultLanguage = "en");
    ~MessageTable();
    MessageTable(const MessageTable&) = delete;
    MessageTable& operator=(const MessageTable&) = delete;

    const std::string& GetName() const noexcept;
    const std::string& GetDefaultLanguage() const noexcept;
    std::size_t GetKeyCount() const noexcept;

    /// The last text given for a key and a language stands. In it "%1" is the place of an argument.
    void Add(std::string_view key, std::string_view language, std::string_view text);

    /// The text in this language, else in the default language, else null. Valid until the next Add.
    const std::string* Find(std::string_view key, std::string_view language) const noexcept;

    /// The default language first, the others in the order in which they were added.
    const std::vector<std::string>& GetLanguages() const noexcept;

    /// Keys that have no text of their own in this language, sorted.
    std::vector<std::string> GetMissingKeys(std::string_view language) const;

private:
    struct Content;
    std::unique_ptr<Content> m_content;
};

} // namespace du
