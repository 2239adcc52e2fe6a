#pragma once

#include <du/Export.h>
#include <du/Symbol.h>

#include <string>
#include <string_view>

namespace du
{

/// Texts of one message table in the user's language.
///
/// Use: `Localizer localizer("lubase:lumodulesStrings"); localizer.LocalizeMessage("5601", "%d", index + 1);`
///
/// Ownership: knows its table by name and looks it up at every call, so that a localizer kept in a static never outlives
/// its messages.
///
/// Threads: every call is safe on any thread.
///
/// Errors: an unknown key gives the key.
class LUHOST_API Localizer
{
public:
    explicit Localizer(std::string_view tableName) : m_tableName(tableName) {}

    std::string LocalizeMessage(std::string_view key) const;

    /// The message with each "%1" replaced by the formatted argument, of which at most 1023 bytes are used.
    std::string LocalizeMessage(std::string_view key, const char* format, ...) const LUHOST_PRINTF_LIKE(3, 4);

private:
    Symbol m_tableName;
};

} // namespace du
