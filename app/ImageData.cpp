#include "ImageData.h"

#include "FileText.h"

#include <filesystem>
#include <system_error>

namespace lusym
{

namespace
{

constexpr std::string_view kPngSignature("\x89PNG\r\n\x1a\n", 8);
constexpr std::string_view kSpaces = " \t\r\n";

std::uint32_t ByteAt(std::string_view bytes, std::size_t i) noexcept { return static_cast<unsigned char>(bytes[i]); }

/// Removes `start`, and all up to and including `end`, from the front.
bool SkipEnclosed(std::string_view& text, std::string_view start, std::string_view end) noexcept
{
    if (!text.starts_with(start)) {
        return false;
    }
    const std::size_t found = text.find(end, start.size());
    text.remove_prefix(found == std::string_view::npos ? text.size() : found + end.size());
    return true;
}

/// Drawing programs define entities within the document type, so its end is the first ">" outside "[...]" and quotes.
bool SkipDocumentType(std::string_view& text) noexcept
{
    if (!text.starts_with("<!DOCTYPE")) {
        return false;
    }
    bool isInSubset = false;
    char quote = '\0';
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quote != '\0') {
            quote = c == quote ? '\0' : quote;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '[' || c == ']') {
            isInSubset = c == '[';
        } else if (c == '>' && !isInSubset) {
            text.remove_prefix(i + 1);
            return true;
        }
    }
    text = {};
    return true;
}

void SkipSpaces(std::string_view& text) noexcept
{
    const std::size_t found = text.find_first_not_of(kSpaces);
    text.remove_prefix(found == std::string_view::npos ? text.size() : found);
}

/// True where the first element is an svg element, with or without a namespace prefix.
bool IsSvg(std::string_view text) noexcept
{
    if (text.starts_with("\xEF\xBB\xBF")) {
        text.remove_prefix(3);
    }
    do {
        SkipSpaces(text);
    } while (SkipEnclosed(text, "<?", "?>") || SkipEnclosed(text, "<!--", "-->") || SkipDocumentType(text));
    if (!text.starts_with('<')) {
        return false;
    }
    std::string_view name = text.substr(1, text.find_first_of(" \t\r\n/>") - 1);
    if (const std::size_t colon = name.find(':'); colon != std::string_view::npos) {
        name.remove_prefix(colon + 1);
    }
    return name == "svg" && text.size() > name.size() + 1;
}

} // namespace

ImageType DetectImageType(std::string_view bytes) noexcept
{
    if (bytes.starts_with(kPngSignature)) {
        return ImageType::Png;
    }
    if (bytes.starts_with("\xFF\xD8\xFF")) {
        return ImageType::Jpeg;
    }
    if (bytes.starts_with("GIF87a") || bytes.starts_with("GIF89a")) {
        return ImageType::Gif;
    }
    if (bytes.starts_with("RIFF") && bytes.size() >= 12 && bytes.substr(8, 4) == "WEBP") {
        return ImageType::Webp;
    }
    return IsSvg(bytes) ? ImageType::Svg : ImageType::Unknown;
}

std::string_view GetMediaType(ImageType type) noexcept
{
    switch (type) {
    case ImageType::Png:
        return "image/png";
    case ImageType::Jpeg:
        return "image/jpeg";
    case ImageType::Gif:
        return "image/gif";
    case ImageType::Webp:
        return "image/webp";
    case ImageType::Svg:
        return "image/svg+xml";
    case ImageType::Unknown:
        break;
    }
    return {};
}

std::optional<PixelSize> GetPixelSize(ImageType type, std::string_view bytes) noexcept
{
    if (type == ImageType::Png && bytes.size() >= 24) {
        const auto number = [bytes](std::size_t i) {
            return ByteAt(bytes, i) << 24 | ByteAt(bytes, i + 1) << 16 | ByteAt(bytes, i + 2) << 8 |
                   ByteAt(bytes, i + 3);
        };
        return PixelSize{number(16), number(20)};
    }
    if (type == ImageType::Gif && bytes.size() >= 10) {
        const auto number = [bytes](std::size_t i) { return ByteAt(bytes, i) | ByteAt(bytes, i + 1) << 8; };
        return PixelSize{number(6), number(8)};
    }
    return std::nullopt;
}

std::optional<std::string> ReadRegularFile(const std::string& path, std::size_t maxBytes)
{
    std::error_code unknown;
    const std::uintmax_t size = std::filesystem::file_size(path, unknown);
    if (unknown || size > maxBytes || path.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    std::string bytes;
    std::string reason;
    if (!ReadFileText(path, bytes, reason)) {
        return std::nullopt;
    }
    return bytes;
}

void AppendBase64(std::string& out, std::string_view bytes)
{
    static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t oldSize = out.size();
    out.resize(oldSize + (bytes.size() + 2) / 3 * 4, '=');
    char* target = out.data() + oldSize;
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const std::uint32_t group = ByteAt(bytes, i) << 16 | ByteAt(bytes, i + 1) << 8 | ByteAt(bytes, i + 2);
        *target++ = kDigits[group >> 18];
        *target++ = kDigits[group >> 12 & 63];
        *target++ = kDigits[group >> 6 & 63];
        *target++ = kDigits[group & 63];
    }
    if (const std::size_t rest = bytes.size() - i; rest > 0) {
        const std::uint32_t group = ByteAt(bytes, i) << 16 | (rest == 2 ? ByteAt(bytes, i + 1) << 8 : 0U);
        *target++ = kDigits[group >> 18];
        *target++ = kDigits[group >> 12 & 63];
        if (rest == 2) {
            *target = kDigits[group >> 6 & 63];
        }
    }
}

void AppendDataUri(std::string& out, ImageType type, std::string_view bytes)
{
    out.append("data:").append(GetMediaType(type)).append(";base64,");
    AppendBase64(out, bytes);
}

} // namespace lusym
