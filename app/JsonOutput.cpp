#include "JsonOutput.h"

#include "Printable.h"

#include <nlohmann/json.hpp>

namespace lusym
{

std::string JsonText(const nlohmann::ordered_json& document)
{
    return PrintableJson(document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace)) + "\n";
}

} // namespace lusym
