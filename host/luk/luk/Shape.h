#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/Mesh.h>
#include <luk/Object.h>

#include <string>

namespace luk
{

class ShapeSource;

/// A shape, loaded or to be loaded; all that show the same source share it.
///
/// Threads: belongs to the host thread.
class LUHOST_API Shape : public Object, public virtual du::RefCounted
{
public:
    /// The shape of a source, always the same one. Null for null.
    static du::SmartPtr<Shape> Get(const du::SmartPtr<ShapeSource>& source);

    ~Shape() override;

    /// As the source has it.
    const std::string& GetPath() const noexcept { return m_path.GetText(); }
    const du::Symbol& GetPathSymbol() const noexcept { return m_path; }

    bool IsLoaded() const noexcept { return m_mesh != nullptr; }
    /// Null until it is loaded.
    const du::SmartPtr<Mesh>& GetMesh() const noexcept { return m_mesh; }
    void SetMesh(const du::SmartPtr<Mesh>& mesh) { m_mesh = mesh; }

    /// Why the last load failed; empty when it did not.
    const std::string& GetProblem() const noexcept { return m_problem; }
    void SetProblem(std::string problem) { m_problem = std::move(problem); }

private:
    explicit Shape(const du::Symbol& path) noexcept : m_path(path) {}

    du::Symbol m_path;
    du::SmartPtr<Mesh> m_mesh;
    std::string m_problem;
};

} // namespace luk
