#include "ModelFiles.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <system_error>
#include <utility>

namespace luhost::io
{

namespace
{

namespace fs = std::filesystem;

/// A file in memory; what lies beyond its end cannot be reached.
class Bytes : public Assimp::IOStream
{
public:
    explicit Bytes(std::string bytes) : m_bytes(std::move(bytes)) {}

    std::size_t Read(void* buffer, std::size_t size, std::size_t count) override
    {
        const std::size_t whole = size == 0 ? 0 : std::min(count, (m_bytes.size() - m_at) / size);
        if (whole != 0) {
            std::memcpy(buffer, m_bytes.data() + m_at, whole * size);
            m_at += whole * size;
        }
        return whole;
    }

    std::size_t Write(const void*, std::size_t, std::size_t) override { return 0; }

    aiReturn Seek(std::size_t offset, aiOrigin origin) override
    {
        // Offsets from the end and backward steps wrap around, which is what they are meant to do.
        const std::size_t start = origin == aiOrigin_SET ? 0 : origin == aiOrigin_END ? m_bytes.size() : m_at;
        const std::size_t to = start + offset;
        if (to > m_bytes.size()) {
            return aiReturn_FAILURE;
        }
        m_at = to;
        return aiReturn_SUCCESS;
    }

    std::size_t Tell() const override { return m_at; }
    std::size_t FileSize() const override { return m_bytes.size(); }
    void Flush() override {}

private:
    const std::string m_bytes;
    std::size_t m_at = 0;
};

std::string LowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

} // namespace

ModelFiles::ModelFiles(const std::string& modelPath, std::uint64_t maximumBytes)
    : m_model(modelPath), m_maximumBytes(maximumBytes), m_extension(LowerCase(m_model.extension().string())),
      m_modelName("model" + m_extension)
{
    std::error_code error;
    m_folder = fs::canonical(m_model, error).parent_path();
}

ModelFiles::~ModelFiles() = default;

fs::path ModelFiles::Resolve(const std::string& name) const
{
    if (name == m_modelName) {
        return m_model;
    }
    std::string relative = name;
    std::replace(relative.begin(), relative.end(), '\\', '/');
    std::error_code error;
    const fs::path path = fs::canonical(m_folder / relative, error);
    const auto inside = std::mismatch(m_folder.begin(), m_folder.end(), path.begin(), path.end());
    const bool isInside = !error && !m_folder.empty() && inside.first == m_folder.end();
    return isInside && fs::is_regular_file(path, error) ? path : fs::path();
}

bool ModelFiles::Exists(const char* file) const { return file && !Resolve(file).empty(); }

Assimp::IOStream* ModelFiles::Open(const char* file, const char* mode)
{
    if (!file || !mode || std::strchr(mode, 'w') || std::strchr(mode, 'a') || std::strchr(mode, '+')) {
        return nullptr;
    }
    const fs::path path = Resolve(file);
    std::error_code error;
    const std::uintmax_t size = path.empty() ? 0 : fs::file_size(path, error);
    std::ifstream stream(path, std::ios::binary);
    if (path.empty() || error || !stream || size > m_maximumBytes) {
        if (m_problem.empty()) {
            m_problem = std::string("it needs the file \"").append(file).append("\", which is not beside it");
        }
        return nullptr;
    }
    std::string bytes(static_cast<std::size_t>(size), '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return new Bytes(std::move(bytes));
}

void ModelFiles::Close(Assimp::IOStream* stream) { delete stream; }

} // namespace luhost::io
