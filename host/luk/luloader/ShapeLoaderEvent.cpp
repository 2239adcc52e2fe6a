#include <luloader/ShapeLoaderEvent.h>

namespace luloader
{

ShapeLoaderEvent::~ShapeLoaderEvent() = default;

du::Symbol ShapeLoaderEvent::GetObjectClass() const
{
    static const du::Symbol s_class("luloader::ShapeLoaderEvent");
    return s_class;
}

} // namespace luloader
