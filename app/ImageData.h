#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lusym
{

/// The kinds of pictures that every browser shows.
enum class ImageType { Unknown, Png, Jpeg, Gif, Webp, Svg };

/// Recognises a picture by its first bytes; the name of a file says nothing about what is in it.
ImageType DetectImageType(std::string_view bytes) noexcept;

/// "image/png" and so on; empty for an unknown type.
std::string_view GetMediaType(ImageType type) noexcept;

struct PixelSize {
    std::uint32_t width;
    std::uint32_t height;
};

/// The size of a PNG or GIF picture, which stands at a fixed place; nothing for other types and for broken ones.
std::optional<PixelSize> GetPixelSize(ImageType type, std::string_view bytes) noexcept;

/// The bytes of a regular file; nothing for other things, unreadable files, and files of more than `maxBytes`.
std::optional<std::string> ReadRegularFile(const std::string& path, std::size_t maxBytes);

void AppendBase64(std::string& out, std::string_view bytes);

/// Appends "data:TYPE;base64,BYTES".
void AppendDataUri(std::string& out, ImageType type, std::string_view bytes);

} // namespace lusym
