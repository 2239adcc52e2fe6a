#pragma once

#include <du/Export.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace du
{

/// Interned, immutable text: equal texts share one entry, so that comparison and copy cost as much as a pointer's.
///
/// Use: names, keys, id paths and file names that are compared and handed around often. A null symbol holds no text at
/// all and differs from the symbol of the empty text; its text reads as "".
///
/// Ownership: entries live until the process ends and are never torn down, since constants of plug-ins outlive every
/// session. Do not intern texts that are seen once and thrown away.
///
/// Threads: every call is safe on any thread; finding a text that is already known takes no lock.
///
/// Cost: comparison, copy and hash about a nanosecond; making one from known text a hash and a look-up.
class LUHOST_API Symbol
{
public:
    Symbol() noexcept = default;
    explicit Symbol(std::string_view text) : m_entry(Intern(text)) {}

    Symbol(const Symbol&) noexcept = default;
    Symbol& operator=(const Symbol&) noexcept = default;
    Symbol(Symbol&& other) noexcept : m_entry(std::exchange(other.m_entry, nullptr)) {}
    Symbol& operator=(Symbol&& other) noexcept
    {
        m_entry = std::exchange(other.m_entry, nullptr);
        return *this;
    }
    ~Symbol() = default;

    /// The symbol of a text that is already known, else null. Interns nothing.
    static Symbol Find(std::string_view text) noexcept;

    bool IsNull() const noexcept { return m_entry == nullptr; }
    /// True for null and for the empty text.
    bool IsEmpty() const noexcept { return m_entry == nullptr || m_entry->text.empty(); }

    /// Valid for ever.
    const std::string& GetText() const noexcept { return m_entry ? m_entry->text : EmptyText(); }

    std::size_t Hash() const noexcept { return m_entry ? m_entry->hash : 0; }

    friend bool operator==(const Symbol& a, const Symbol& b) noexcept { return a.m_entry == b.m_entry; }

private:
    friend class SymbolTable;
    struct Entry {
        std::size_t hash;
        std::string text;
    };

    explicit Symbol(const Entry* entry) noexcept : m_entry(entry) {}
    static const Entry* Intern(std::string_view text);
    static const std::string& EmptyText() noexcept;

    const Entry* m_entry = nullptr;
};

} // namespace du

template <>
struct std::hash<du::Symbol> {
    std::size_t operator()(const du::Symbol& symbol) const noexcept { return symbol.Hash(); }
};
