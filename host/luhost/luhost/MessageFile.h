#pragma once

#include <du/Export.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace du
{
class MessageTable;
}

namespace luhost
{

/// Reads a message table:
///
///     <messages table="lubase:lumodulesStrings" default="en">
///       <message key="K"><text lang="en">...</text><text lang="de">...</text></message>
///     </messages>
///
/// Text is taken whole; "%1" in it is the place of an argument. Elements and attributes of other names are skipped.
///
/// Errors: a file that cannot be read, is ill-formed, or breaks the form above gives no table, and the line and reason
/// of the first fault. Nothing is thrown.
///
/// Cost: linear in the bytes. A file of more than kMaxBytes, or with more than kMaxLanguages, is refused: whoever asks
/// what is missing in which language would pay for each of them.
class LUHOST_API MessageFile
{
public:
    static constexpr std::size_t kMaxBytes = std::size_t{64} * 1024 * 1024;
    static constexpr std::size_t kMaxLanguages = 500;

    struct Result {
        std::shared_ptr<const du::MessageTable> table; ///< null after an error
        std::size_t line = 0;                          ///< from 1; 0 when the fault has no place
        std::string reason;                            ///< empty when all went well

        explicit operator bool() const noexcept { return table != nullptr; }
    };

    static Result Read(const std::string& path);
    static Result Parse(std::string_view text);

    MessageFile() = delete;
};

} // namespace luhost
