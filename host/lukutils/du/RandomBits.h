#pragma once

#include <cstdint>

namespace du
{

/// 64 bits from the system's source of randomness; where that fails, from clock and counter, still different each time.
std::uint64_t RandomBits() noexcept;

} // namespace du
