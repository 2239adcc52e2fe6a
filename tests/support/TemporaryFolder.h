#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

namespace test
{

/// A folder of its own for one test, deleted with all that it holds.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::random_device random;
        do {
            m_path = std::filesystem::temp_directory_path() / ("lusymbols-test-" + std::to_string(random()));
        } while (!std::filesystem::create_directory(m_path));
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string Path(std::string_view name = {}) const
    {
        return name.empty() ? TextOf(m_path.u8string()) : TextOf((m_path / PathOf(name)).make_preferred().u8string());
    }

    /// The same with slashes, as URLs have them.
    std::string Url(std::string_view name) const { return TextOf((m_path / PathOf(name)).generic_u8string()); }

    /// Makes the folders on the way.
    std::string Write(std::string_view name, std::string_view content) const
    {
        const std::filesystem::path path = (m_path / PathOf(name)).make_preferred();
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
        return TextOf(path.u8string());
    }

    std::string Read(std::string_view name) const { return ReadFile(Path(name)); }

    static std::string ReadFile(const std::string& path)
    {
        std::ifstream file(PathOf(path), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    /// Names in tests are UTF-8 on every platform.
    static std::filesystem::path PathOf(std::string_view name)
    {
        return std::filesystem::path(std::u8string(name.begin(), name.end()));
    }
    static std::string TextOf(const std::u8string& text) { return {text.begin(), text.end()}; }

    std::filesystem::path m_path;
};

} // namespace test
