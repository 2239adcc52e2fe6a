#pragma once

#include <assimp/IOStream.hpp>
#include <assimp/IOSystem.hpp>
#include <cstdint>
#include <filesystem>
#include <string>

namespace luhost::io
{

/// What the importers may see of the file system: the model, under a name of ours, and regular files in its folder or below
/// it that the model names.
class ModelFiles : public Assimp::IOSystem
{
public:
    ModelFiles(const std::string& modelPath, std::uint64_t maximumBytes);
    ~ModelFiles() override;

    /// In which the model lies.
    const std::filesystem::path& GetFolder() const noexcept { return m_folder; }
    /// By which the model is asked for: "model" with its extension, in small letters.
    const std::string& GetModelName() const noexcept { return m_modelName; }
    /// With the dot; empty for none.
    const std::string& GetExtension() const noexcept { return m_extension; }
    /// Why a file could not be had; empty when all could.
    const std::string& GetProblem() const noexcept { return m_problem; }

    bool Exists(const char* file) const override;
    char getOsSeparator() const override { return '/'; }
    Assimp::IOStream* Open(const char* file, const char* mode) override;
    void Close(Assimp::IOStream* stream) override;

private:
    /// Empty for a file that must not be seen.
    std::filesystem::path Resolve(const std::string& name) const;

    std::filesystem::path m_model;
    std::filesystem::path m_folder;
    std::uint64_t m_maximumBytes;
    std::string m_extension;
    std::string m_modelName;
    std::string m_problem;
};

} // namespace luhost::io
