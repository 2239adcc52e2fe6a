#include <luk/Shape.h>
#include <luk/ShapeSource.h>

namespace luk
{

ShapeSource::~ShapeSource() = default;

bool ShapeSource::Create(du::SmartPtr<ShapeSource>& source, const std::string& path, const dg::FBox& box,
                         unsigned int flags)
{
    const du::SmartPtr<ShapeSource> made(new ShapeSource);
    made->m_path = du::Symbol(path);
    made->m_box = box;
    made->m_flags = flags;
    source = made;
    return !path.empty();
}

du::SmartPtr<ShapeSource> ShapeSource::CreateFromMesh(const du::SmartPtr<Mesh>& mesh)
{
    du::SmartPtr<ShapeSource> made(new ShapeSource);
    if (mesh) {
        made->m_box = mesh->GetBox();
    }
    Shape::Get(made)->SetMesh(mesh);
    return made;
}

} // namespace luk
