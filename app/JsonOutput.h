#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace lusym
{

/// The text of a JSON document, with its line feed, as it may go to a terminal. Bytes that are not UTF-8 are replaced, so
/// that every file can be told of.
std::string JsonText(const nlohmann::ordered_json& document);

} // namespace lusym
