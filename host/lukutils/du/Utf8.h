#pragma once

#include <du/Export.h>

#include <string>
#include <string_view>

namespace du
{

/// Conversions between UTF-8 and the platform's wide text (UTF-32 on Linux, UTF-16 on Windows).
///
/// Errors: none. Ill-formed input becomes U+FFFD, one for each longest beginning of a character that breaks off, as
/// browsers and editors do it; NUL is a character like any other.
///
/// Cost: linear; runs of ASCII go eight at a time.
LUHOST_API std::wstring Utf8ToWideStr(std::string_view text);

/// The same, at the end of a text that is there already; saves the temporary where texts are put together.
LUHOST_API void AppendUtf8AsWide(std::wstring& out, std::string_view text);

LUHOST_API std::string WideStrToUtf8(std::wstring_view text);

} // namespace du
