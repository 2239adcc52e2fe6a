#pragma once

namespace dg
{

/// Single-precision triple: the size of a markup, a corner of a box. Starts as (0, 0, 0).
struct FVec3 {
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;

    constexpr FVec3() noexcept = default;
    constexpr FVec3(float xValue, float yValue, float zValue) noexcept : x(xValue), y(yValue), z(zValue) {}

    friend constexpr bool operator==(const FVec3&, const FVec3&) noexcept = default;
};

} // namespace dg
