#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lusym
{

/// Tells contents apart, in 64 bits; no protection against somebody who wants two to look alike.
class ContentHash
{
public:
    void Add(std::string_view bytes) noexcept;
    std::uint64_t Get() const noexcept { return m_hash; }

private:
    std::uint64_t m_hash = 0xCBF29CE484222325U;
};

/// What a thumbnail shows, as a text in the PNG file itself, so that nothing has to lie beside it: the hash of the file that
/// it was made from and of the way in which it is shown.
std::string AddThumbnailMark(std::string png, std::uint64_t shown);

/// What lies in the place of a thumbnail.
struct FoundThumbnail {
    enum class Kind {
        Nothing, ///< no file, or a PNG file that is not whole
        Marked,  ///< made by this program
        Foreign  ///< anything else
    };
    Kind kind = Kind::Nothing;
    std::uint64_t shown = 0; ///< where it is marked
};

/// Reads no more than the beginning and the end of the file.
FoundThumbnail FindThumbnail(const std::string& path);

} // namespace lusym
