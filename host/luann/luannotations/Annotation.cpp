#include <dg/DMat33.h>
#include <dg/DMat44.h>
#include <luannotations/Annotation.h>
#include <luk/Scene.h>

namespace luannotations
{

Annotation::Annotation(std::uint32_t kind, std::uint32_t flags) : m_kind(kind), m_flags(flags) {}

Annotation::Annotation(const Annotation&) = default;
Annotation& Annotation::operator=(const Annotation&) = default;
Annotation::~Annotation() = default;

} // namespace luannotations
