#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace fuzz
{

/// Ends the program, so that the fuzzer keeps the input, when something does not hold that always has to.
void Require(bool holds, std::string_view what);

/// The same for two texts, which are shown when they differ.
void RequireSame(std::string_view first, std::string_view second, std::string_view what);

/// Requires at its end that as many counted objects are alive as at its beginning.
class Balance
{
public:
    Balance();
    ~Balance();
    Balance(const Balance&) = delete;
    Balance& operator=(const Balance&) = delete;

private:
    std::size_t m_before;
};

/// A folder of this process, in memory where the system has such a place; it is deleted when the process ends.
const std::string& GetFolder();

/// Puts the bytes into a file of that folder. @return its path
std::string FillFile(const std::string& name, std::string_view bytes);

std::string ReadFile(const std::string& path);

inline std::string_view AsText(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

} // namespace fuzz

/// What libFuzzer calls with each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
