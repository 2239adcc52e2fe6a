#include "ModelFormat.h"

#include <dg/XmlElem.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <memory>
#include <string_view>
#include <utility>
#include <zip.h>

namespace luhost::io
{

namespace
{

struct Discard {
    void operator()(zip_t* archive) const noexcept { zip_discard(archive); }
};
struct CloseEntry {
    void operator()(zip_file_t* entry) const noexcept { zip_fclose(entry); }
};

constexpr std::array<std::pair<std::string_view, double>, 6> kUnitsOf3mf = {
    {{"micron", 0.001}, {"millimeter", 1.0}, {"centimeter", 10.0}, {"inch", 25.4}, {"foot", 304.8}, {"meter", 1000.0}}};

/// The first model in a 3MF package, piece by piece.
class ModelOf3mf
{
public:
    explicit ModelOf3mf(const std::string& path) : m_archive(zip_open(path.c_str(), ZIP_RDONLY, nullptr))
    {
        const zip_int64_t count = m_archive ? zip_get_num_entries(m_archive.get(), 0) : 0;
        for (zip_int64_t i = 0; i < count && !m_entry; ++i) {
            const auto index = static_cast<zip_uint64_t>(i);
            const char* const name = zip_get_name(m_archive.get(), index, 0);
            if (name && std::string_view(name).ends_with(".model")) {
                m_entry.reset(zip_fopen_index(m_archive.get(), index, 0));
            }
        }
    }

    /// @return false at the end
    bool Append(std::string& text)
    {
        constexpr zip_uint64_t kPiece = 65536;
        const std::size_t before = text.size();
        text.resize(before + kPiece);
        const zip_int64_t size = m_entry ? zip_fread(m_entry.get(), text.data() + before, kPiece) : 0;
        text.resize(before + static_cast<std::size_t>(size > 0 ? size : 0));
        return size > 0;
    }

private:
    std::unique_ptr<zip_t, Discard> m_archive;
    std::unique_ptr<zip_file_t, CloseEntry> m_entry;
};

/// @param tag from its '<' to its '>'
void TakeName(std::string_view tag, std::unordered_map<std::string, std::string>& names)
{
    const bool isClosed = tag.ends_with("/>");
    tag.remove_suffix(isClosed ? 2 : 1);
    const std::unique_ptr<dg::XmlElem, dg::XmlFreer> object(
        dg::ParseXml(std::string(tag).append("/>"), false, nullptr));
    if (object && object->GetName() == "object" && !object->GetAttribute("name").empty()) {
        const std::string id(object->GetAttribute("id"));
        const std::string name(object->GetAttribute("name"));
        // So the importer calls the node and the mesh of an object.
        names.try_emplace("Object_" + id, name);
        names.try_emplace(id, name);
    }
}

std::unordered_map<std::string, std::string> NamesOf3mf(const std::string& path)
{
    constexpr std::string_view kTag = "<object";
    constexpr std::size_t kLongestTag = 65536;
    std::unordered_map<std::string, std::string> names;
    ModelOf3mf model(path);
    for (std::string text; model.Append(text);) {
        std::size_t from = 0;
        std::size_t begin = text.find(kTag);
        for (std::size_t end = text.find('>', begin); begin != text.npos && end != text.npos;
             end = text.find('>', begin)) {
            TakeName(std::string_view(text).substr(begin, end + 1 - begin), names);
            from = end + 1;
            begin = text.find(kTag, from);
        }
        // What may be the front of a tag stays for the next piece.
        const std::size_t kept = begin != text.npos ? text.size() - begin : std::min(text.size() - from, kTag.size());
        text.erase(0, kept > kLongestTag ? text.size() : text.size() - kept);
    }
    return names;
}

double UnitOf3mf(const std::string& path)
{
    std::string front;
    ModelOf3mf(path).Append(front);
    const std::size_t tag = front.find("<model");
    const std::size_t end = front.find('>', tag);
    const std::string_view attributes =
        tag == std::string::npos ? std::string_view() : std::string_view(front).substr(tag, end - tag);
    for (const auto& [unit, millimetres] : kUnitsOf3mf) {
        for (const char quote : {'"', '\''}) {
            const std::string text = std::string(" unit=").append(1, quote).append(unit).append(1, quote);
            if (attributes.find(text) != std::string_view::npos) {
                return millimetres;
            }
        }
    }
    return 1.0;
}

} // namespace

bool ModelFormat::Find(const std::string& extension, const std::string& path, ModelFormat& format)
{
    constexpr double kMetre = 1000.0;
    if (extension == ".gltf" || extension == ".glb") {
        format = {kMetre, false, true, {}};
    } else if (extension == ".dae") {
        format = {kMetre, true, false, {}};
    } else if (extension == ".3mf") {
        format = {UnitOf3mf(path), false, false, NamesOf3mf(path)};
    } else if (extension == ".obj" || extension == ".stl" || extension == ".ply") {
        format = {};
    } else {
        return false;
    }
    return true;
}

std::string ModelFormat::FindTrap(const std::string& extension, const std::string& path)
{
    constexpr std::size_t kLongestHeader = std::size_t{1} << 20;
    if (extension != ".ply") {
        return {};
    }
    std::string front(kLongestHeader, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(front.data(), static_cast<std::streamsize>(front.size()));
    front.resize(static_cast<std::size_t>(file.gcount()));
    return front.find("end_header") == front.npos ? "its header has no end" : std::string();
}

} // namespace luhost::io
