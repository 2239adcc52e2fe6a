#include <luk/illustration2d/Scene2D.h>

namespace luk::illustration2d
{

Scene2D::Scene2D(const du::SmartPtr<Document2D>& document)
    : m_document(document ? document : du::MakeCounted<Document2D>(0.0, 0.0))
{
}

Scene2D::~Scene2D() = default;

} // namespace luk::illustration2d
