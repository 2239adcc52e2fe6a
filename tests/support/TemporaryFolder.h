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
        return name.empty() ? m_path.string() : (m_path / name).string();
    }

    /// Makes the folders on the way.
    std::string Write(std::string_view name, std::string_view content) const
    {
        const std::filesystem::path path = m_path / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
        return path.string();
    }

    std::string Read(std::string_view name) const { return ReadFile(Path(name)); }

    static std::string ReadFile(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::filesystem::path m_path;
};

} // namespace test
