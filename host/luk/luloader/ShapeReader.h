#pragma once

#include <du/SmartPtr.h>
#include <luk/Mesh.h>

#include <string>

namespace luloader
{

/// Reads shapes from files.
///
/// Threads: called from several workers at once.
class LUHOST_API ShapeReader
{
public:
    virtual ~ShapeReader();

    /// @param path of a regular file of this system
    /// @param[out] problem why there is no shape
    /// @return null when the file holds no shape that can be shown; never throws but std::bad_alloc
    virtual du::SmartPtr<luk::Mesh> Read(const std::string& path, std::string& problem) const = 0;

protected:
    ShapeReader() = default;
    ShapeReader(const ShapeReader&) = default;
    ShapeReader& operator=(const ShapeReader&) = default;
};

} // namespace luloader
