#include <du/RandomBits.h>
#include <du/UuidGen.h>

#include <atomic>
#include <chrono>
#include <exception>
#include <random>

namespace du
{

namespace
{

std::uint64_t DistinctBits() noexcept
{
    static std::atomic<std::uint64_t> s_calls{0};
    const auto now = static_cast<std::uint64_t>(std::chrono::system_clock::now().time_since_epoch().count());
    std::uint64_t bits = now + s_calls.fetch_add(1, std::memory_order_relaxed) * 0x9E3779B97F4A7C15U;
    bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBU;
    return bits ^ (bits >> 31);
}

void AppendHex(std::string& text, std::uint64_t bits, int digits)
{
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
        text += "0123456789abcdef"[(bits >> shift) & 0xF];
    }
}

} // namespace

std::uint64_t RandomBits() noexcept
{
    try {
        // Asking the processor what it has, as each new device does, takes longer than a hundred numbers.
        thread_local std::random_device source;
        return (static_cast<std::uint64_t>(source()) << 32) | source();
    } catch (const std::exception&) {
        return DistinctBits();
    }
}

void UuidGen::GetUuidString(std::string& uuid)
{
    const std::uint64_t high = (RandomBits() & ~std::uint64_t{0xF000}) | 0x4000;
    const std::uint64_t low = (RandomBits() & (~std::uint64_t{0} >> 2)) | (std::uint64_t{2} << 62);

    uuid.clear();
    uuid.reserve(36);
    AppendHex(uuid, high >> 32, 8);
    uuid += '-';
    AppendHex(uuid, high >> 16, 4);
    uuid += '-';
    AppendHex(uuid, high, 4);
    uuid += '-';
    AppendHex(uuid, low >> 48, 4);
    uuid += '-';
    AppendHex(uuid, low, 12);
}

} // namespace du
