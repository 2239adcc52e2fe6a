#include <dg/XmlElem.h>
#include <du/FileSystem.h>
#include <du/MessageTable.h>
#include <du/SystemPath.h>
#include <luhost/MessageFile.h>

#include <fstream>
#include <utility>

namespace luhost
{

namespace
{

using Result = MessageFile::Result;
using Table = std::unique_ptr<dg::XmlElem, dg::XmlFreer>;

Result Fault(std::size_t line, std::string reason) { return {nullptr, line, std::move(reason)}; }

/// At most one byte more than the limit, by which the caller sees that there is too much.
bool ReadBounded(const std::string& path, std::string& bytes)
{
    std::ifstream file(du::SystemPath(path), std::ios::binary);
    constexpr std::size_t kBlock = 1U << 16U;
    while (file && bytes.size() <= MessageFile::kMaxBytes) {
        const std::size_t size = bytes.size();
        bytes.resize(size + kBlock);
        file.read(bytes.data() + size, static_cast<std::streamsize>(kBlock));
        bytes.resize(size + static_cast<std::size_t>(file.gcount()));
    }
    return file.eof() || bytes.size() > MessageFile::kMaxBytes;
}

/// @return a fault, or no reason when the message is in the table
Result ReadMessage(const dg::XmlElem& message, du::MessageTable& table)
{
    const std::string_view key = message.GetAttribute("key");
    if (key.empty()) {
        return Fault(message.GetLine(), "a message has no key");
    }
    for (dg::XmlElem text = message.FirstChild(); text; text = text.NextSibling()) {
        if (text.GetName() != "text") {
            continue;
        }
        const std::string_view language = text.GetAttribute("lang");
        if (language.empty()) {
            return Fault(text.GetLine(), "a text of message \"" + std::string(key) + "\" has no language");
        }
        std::string spare;
        table.Add(key, language, text.GetTextView(spare));
        if (table.GetLanguages().size() > MessageFile::kMaxLanguages) {
            return Fault(text.GetLine(), "more than " + std::to_string(MessageFile::kMaxLanguages) + " languages");
        }
    }
    return {};
}

Result ReadTable(const dg::XmlElem& root)
{
    if (root.GetName() != "messages") {
        return Fault(root.GetLine(), "the top-level element is not \"messages\"");
    }
    const std::string_view name = root.GetAttribute("table");
    if (name.empty()) {
        return Fault(root.GetLine(), "\"messages\" does not name its table");
    }
    const std::string_view language = root.GetAttribute("default");
    const auto table = std::make_shared<du::MessageTable>(name, language.empty() ? "en" : language);
    for (dg::XmlElem message = root.FirstChild(); message; message = message.NextSibling()) {
        if (message.GetName() == "message") {
            Result fault = ReadMessage(message, *table);
            if (!fault.reason.empty()) {
                return fault;
            }
        }
    }
    return {table, 0, {}};
}

} // namespace

Result MessageFile::Read(const std::string& path)
{
    if (!du::FileSystem::FileReadable(path)) {
        return Fault(0, "no readable file");
    }
    std::string bytes;
    return ReadBounded(path, bytes) ? Parse(bytes) : Fault(0, "the file could not be read to its end");
}

Result MessageFile::Parse(std::string_view text)
{
    if (text.size() > kMaxBytes) {
        return Fault(0, "larger than " + std::to_string(kMaxBytes) + " bytes");
    }
    dg::XmlParseError error;
    const Table table(dg::ParseXml(std::string(text), true, &error));
    return table ? ReadTable(*table) : Fault(error.line, error.reason);
}

} // namespace luhost
