#pragma once

#include "Printable.h"
#include "TextValues.h"

#include <CLI/CLI.hpp>

#include <map>
#include <string>
#include <utility>

namespace lusym
{

/// An option that takes one of a few words, in large or small letters.
///
/// *Rationale:* CLI11 would take the numbers that the words stand for too, and tells them when it takes none.
/// @param value outlives the program's command line
template <class Value>
CLI::Option* AddChoice(CLI::App& verb, const std::string& name, Value& value, const std::string& help,
                       std::map<std::string, Value> choices)
{
    const auto take = [&value, name, choices = std::move(choices)](const std::string& text) {
        const auto chosen = choices.find(CLI::detail::to_lower(text));
        if (chosen == choices.end()) {
            std::string words;
            for (const auto& [word, ignored] : choices) {
                words.append(words.empty() ? "" : ", ").append(word);
            }
            throw CLI::ValidationError(name, Quote(text) + " is unknown. Write one of " + words);
        }
        value = chosen->second;
    };
    return verb.add_option_function<std::string>(name, take, help);
}

/// A check for an option that takes a number, which "nan" is not.
inline auto NumberBetween(double least, double most)
{
    return [least, most](const std::string& text) {
        const std::optional<double> number = ParseNumber(text);
        return number && *number >= least && *number <= most
                   ? std::string()
                   : Quote(text) + " is no number from " + NumberText(least) + " to " + NumberText(most);
    };
}

} // namespace lusym
