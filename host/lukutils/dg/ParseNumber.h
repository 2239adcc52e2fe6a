#pragma once

#include <du/Export.h>

#include <string_view>

namespace dg
{

/// Numbers in texts of documents, read exactly as a stream of the classic locale extracts them.
///
/// Leading white space is skipped and what follows the number is ignored. A text without a number gives 0, and so do
/// "nan", "inf" and a number that breaks off in its exponent ("1e"); a number out of range gives the limit of its type,
/// one too small to tell from 0 gives 0. No hexadecimal, no grouping. Never fails otherwise, and does not depend on any
/// locale.
///
/// Cost: a few nanoseconds for a short integral text, some twenty otherwise.
LUHOST_API int ParseInt(std::string_view text) noexcept;
LUHOST_API float ParseFloat(std::string_view text) noexcept;
LUHOST_API double ParseDouble(std::string_view text) noexcept;

/// Exactly "true", "1", "false" or "0"; anything else leaves the fallback.
LUHOST_API bool ParseBool(std::string_view text, bool fallback) noexcept;

} // namespace dg
