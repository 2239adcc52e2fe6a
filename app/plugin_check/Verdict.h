#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lusym::check
{

/// How a check ends, the worse the later.
enum class Outcome : std::uint8_t {
    Pass,
    Skip, ///< it could not be found out here
    Warn, ///< kept, and yet not as it should be
    Fail,
    TimeOut,
    Crash,
};

/// Who misbehaved.
enum class Side : std::uint8_t { Plugin, Host, Test };

/// Something that a check has to say.
struct Note {
    Outcome outcome = Outcome::Fail;
    Side side = Side::Plugin;
    std::string text; ///< a sentence without a full stop
};

constexpr bool IsFinding(Outcome outcome) { return outcome >= Outcome::Fail; }

std::string_view NameOf(Outcome outcome);
std::string_view NameOf(Side side);

/// A note as one line, with its line feed, and back. @return nothing for what is no such line
std::string LineOf(const Note& note);
std::optional<Note> NoteOf(std::string_view line);

} // namespace lusym::check
