#pragma once

namespace dg
{

/// Red, green, blue and alpha, each from 0 to 1. Starts as BLACK.
struct Color {
    float red = 0.0F;
    float green = 0.0F;
    float blue = 0.0F;
    float alpha = 1.0F;

    /// Opaque black.
    static const Color BLACK;

    constexpr Color() noexcept = default;
    constexpr Color(float redValue, float greenValue, float blueValue, float alphaValue) noexcept
        : red(redValue), green(greenValue), blue(blueValue), alpha(alphaValue)
    {
    }

    friend constexpr bool operator==(const Color&, const Color&) noexcept = default;
};

inline constexpr Color Color::BLACK{0.0F, 0.0F, 0.0F, 1.0F};

} // namespace dg
