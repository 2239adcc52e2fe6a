#include "Progress.h"

#include "Printable.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <unistd.h>

namespace lusym
{

namespace
{

void Put(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); }

} // namespace

void Progress::SetMode(Mode mode)
{
    const bool isTerminal = isatty(STDERR_FILENO) == 1;
    m_form = mode == Mode::Json ? Form::Json : mode == Mode::Automatic && isTerminal ? Form::Line : Form::None;
}

void Progress::Step(std::string_view what, std::size_t done, std::size_t total)
{
    if (m_form == Form::Json) {
        nlohmann::ordered_json line = {{"progress", what}};
        if (total != 0) {
            line["done"] = done;
            line["total"] = total;
        }
        Put(PrintableJson(line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)) + "\n");
    } else if (m_form == Form::Line) {
        Clear();
        std::string line = Printable(what);
        if (total != 0) {
            line += " (" + std::to_string(done) + "/" + std::to_string(total) + ")";
        }
        Put(line);
        m_isLineShown = true;
    }
}

void Progress::Tell(std::string_view message)
{
    Clear();
    Put(message);
}

void Progress::Clear()
{
    if (m_isLineShown) {
        Put("\r\x1b[K");
        m_isLineShown = false;
    }
}

} // namespace lusym
