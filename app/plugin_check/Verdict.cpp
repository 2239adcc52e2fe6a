#include "Verdict.h"

#include <algorithm>
#include <cstddef>

namespace lusym::check
{

namespace
{

constexpr std::string_view kOutcomes[] = {"pass", "skip", "warn", "fail", "time-out", "crash"};
constexpr std::string_view kSides[] = {"plug-in", "host", "test"};

/// The word up to the next tabulator, which it is taken off with.
std::string_view TakeWord(std::string_view& line)
{
    const std::size_t end = std::min(line.find('\t'), line.size());
    const std::string_view word = line.substr(0, end);
    line.remove_prefix(std::min(end + 1, line.size()));
    return word;
}

} // namespace

std::string_view NameOf(Outcome outcome) { return kOutcomes[static_cast<std::size_t>(outcome)]; }

std::string_view NameOf(Side side) { return kSides[static_cast<std::size_t>(side)]; }

std::string LineOf(const Note& note)
{
    std::string text = note.text;
    std::ranges::replace_if(
        text, [](char c) { return c == '\n' || c == '\r'; }, ' ');
    std::string line(NameOf(note.outcome));
    line.append(1, '\t').append(NameOf(note.side)).append(1, '\t').append(text).append(1, '\n');
    return line;
}

std::optional<Note> NoteOf(std::string_view line)
{
    const auto outcome = std::ranges::find(kOutcomes, TakeWord(line));
    const auto side = std::ranges::find(kSides, TakeWord(line));
    if (outcome == std::end(kOutcomes) || side == std::end(kSides)) {
        return std::nullopt;
    }
    return Note{static_cast<Outcome>(outcome - std::begin(kOutcomes)), static_cast<Side>(side - std::begin(kSides)),
                std::string(line)};
}

} // namespace lusym::check
