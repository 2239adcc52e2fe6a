#pragma once

#include <du/SmartPtr.h>
#include <luk/Mesh.h>
#include <luloader/ShapeReader.h>

#include <string>
#include <string_view>

namespace luhost
{

/// Meshes in the files of documents: binary PLY, little endian, with vertices, triangles and the runs of one colour as
/// elements, in the one form that MeshToPly writes. Other programs read it; other PLY files are refused here.
///
/// Errors: trusts nothing; what is read is sound as CheckProductMesh means it.
///
/// Cost: linear; a mesh has its size checked against the bytes before memory is asked for.
LUHOST_API std::string MeshToPly(const luk::Mesh& mesh);

/// @param[out] problem why there is no mesh
LUHOST_API du::SmartPtr<luk::Mesh> MeshFromPly(std::string_view bytes, std::string& problem);

/// Reads such files for the loader, without another process.
class LUHOST_API ProductMeshReader : public luloader::ShapeReader
{
public:
    ProductMeshReader();
    ~ProductMeshReader() override;

    du::SmartPtr<luk::Mesh> Read(const std::string& path, std::string& problem) const override;
};

} // namespace luhost
