#pragma once

#include <luhost/ProductModel.h>
#include <luloader/ShapeReader.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace luhost::io
{

/// Bounds of one import; the memory and the time are those of the process that reads the file.
struct ImportLimits {
    unsigned int seconds = 120; ///< of processor time; by the clock three times as many
    std::uint64_t memoryBytes = std::uint64_t{4} << 30;
    std::uint64_t maximumFileBytes = std::uint64_t{2} << 30;
    std::size_t maximumTriangles = 50'000'000;
    std::size_t maximumUses = ProductModel::kMaxInstances;
};

/// Reads models (glTF, GLB, OBJ, STL, PLY, 3MF, DAE), each in a process of its own that has no more than its input, the
/// files beside it that the model names, its time and its memory: a file that crashes or stops the reader is an error like
/// any other. What the process answers is checked as if it came from the file.
///
/// Errors: in words, without the name of the file.
///
/// Threads: every operation may be called on any thread.
class ModelReader : public luloader::ShapeReader
{
public:
    /// @param program path of lusym-import
    explicit ModelReader(std::string program, const ImportLimits& limits = {});
    ~ModelReader() override;

    /// The hierarchy of the file with its names; meshes and subassemblies that it uses several times are shared. Vertices at
    /// one place are one vertex. Names that cannot be ids are changed so that they can.
    /// @param millimetresPerUnit 0: as the file says, and 1 where its format does not say
    bool ReadProduct(const std::string& path, double millimetresPerUnit, ProductModel& model,
                     std::string& problem) const;

    /// The whole file as one mesh.
    du::SmartPtr<luk::Mesh> Read(const std::string& path, std::string& problem) const override;

private:
    std::string m_program;
    ImportLimits m_limits;
};

} // namespace luhost::io
