#pragma once

#include <du/Symbol.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace luk
{

/// Symbols of texts that came before: what many contents have in common is looked up once for all.
///
/// Cost: a known text a few nanoseconds; another what du::Symbol takes. Its size is fixed; a text may push out another.
class KnownSymbols
{
public:
    const du::Symbol& Get(std::string_view text)
    {
        du::Symbol& place = m_places[PlaceOf(text)];
        if (place.IsNull() || place.GetText() != text) {
            place = du::Symbol(text);
        }
        return place;
    }

private:
    static constexpr std::size_t kPlaces = 1024;

    /// By the length and the bytes at both ends.
    static std::size_t PlaceOf(std::string_view text) noexcept
    {
        constexpr std::uint64_t kMixer = 0x9E3779B97F4A7C15U;
        std::uint64_t front = 0;
        std::uint64_t back = 0;
        if (text.size() >= sizeof(front)) {
            std::memcpy(&front, text.data(), sizeof(front));
            std::memcpy(&back, text.data() + text.size() - sizeof(back), sizeof(back));
        } else {
            for (const char letter : text) {
                front = front << 8U | static_cast<unsigned char>(letter);
            }
        }
        return ((front * kMixer ^ back) + text.size()) * kMixer >> 54U;
    }

    std::array<du::Symbol, kPlaces> m_places;
};

} // namespace luk
