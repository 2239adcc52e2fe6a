#include "ModelFormat.h"

#include <array>
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

/// The front of the first model in a 3MF package.
std::string FrontOf3mf(const std::string& path)
{
    constexpr zip_uint64_t kFront = 65536;
    const std::unique_ptr<zip_t, Discard> archive(zip_open(path.c_str(), ZIP_RDONLY, nullptr));
    const zip_int64_t count = archive ? zip_get_num_entries(archive.get(), 0) : 0;
    for (zip_int64_t i = 0; i < count; ++i) {
        const char* const name = zip_get_name(archive.get(), static_cast<zip_uint64_t>(i), 0);
        if (!name || !std::string_view(name).ends_with(".model")) {
            continue;
        }
        const std::unique_ptr<zip_file_t, CloseEntry> entry(
            zip_fopen_index(archive.get(), static_cast<zip_uint64_t>(i), 0));
        std::string front(kFront, '\0');
        const zip_int64_t size = entry ? zip_fread(entry.get(), front.data(), kFront) : 0;
        front.resize(static_cast<std::size_t>(size > 0 ? size : 0));
        return front;
    }
    return {};
}

double UnitOf3mf(const std::string& path)
{
    const std::string front = FrontOf3mf(path);
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
        format = {kMetre, false, true};
    } else if (extension == ".dae") {
        format = {kMetre, true, false};
    } else if (extension == ".3mf") {
        format = {UnitOf3mf(path), false, false};
    } else if (extension == ".obj" || extension == ".stl" || extension == ".ply") {
        format = {};
    } else {
        return false;
    }
    return true;
}

} // namespace luhost::io
