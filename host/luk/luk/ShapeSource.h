#pragma once

#include <dg/FBox.h>
#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/Mesh.h>
#include <luk/Object.h>

#include <string>

namespace luk
{

class Shape;

/// Where the shape of a component comes from: a file, or a mesh that is there already.
///
/// Ownership: holds the shape that was fetched from it.
///
/// Threads: belongs to the host thread.
class LUHOST_API ShapeSource : public Object, public virtual du::RefCounted
{
public:
    /// @param[out] source the new source
    /// @param path "file:///" and a path of this system, or a plain path
    /// @param box extents if known, else FBox::EMPTY
    /// @param flags kept, without effect
    /// @return false for an empty path; the source is made all the same, and loading it fails
    static bool Create(du::SmartPtr<ShapeSource>& source, const std::string& path, const dg::FBox& box,
                       unsigned int flags);
    static du::SmartPtr<ShapeSource> CreateFromMesh(const du::SmartPtr<Mesh>& mesh);

    ~ShapeSource() override;

    /// Empty for a mesh that is there already.
    const std::string& GetPath() const noexcept { return m_path.GetText(); }
    const dg::FBox& GetBox() const noexcept { return m_box; }

private:
    friend class Shape;

    ShapeSource() = default;

    du::Symbol m_path;
    dg::FBox m_box;
    unsigned int m_flags = 0;
    du::SmartPtr<Shape> m_shape;
};

} // namespace luk
