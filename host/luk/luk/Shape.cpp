#include <luk/Shape.h>
#include <luk/ShapeSource.h>

namespace luk
{

Shape::~Shape() = default;

du::SmartPtr<Shape> Shape::Get(const du::SmartPtr<ShapeSource>& source)
{
    if (!source) {
        return {};
    }
    if (!source->m_shape) {
        source->m_shape = du::SmartPtr<Shape>(new Shape(source->m_path));
    }
    return source->m_shape;
}

} // namespace luk
