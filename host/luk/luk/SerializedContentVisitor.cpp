#include <luk/SerializedContentVisitor.h>

namespace luk
{

SerializedContentVisitor::~SerializedContentVisitor() = default;

bool SerializedContentVisitor::StartElement(const du::Symbol&) { return false; }

bool SerializedContentVisitor::VisitSymbol(const du::Symbol&, const du::Symbol&) { return false; }

bool SerializedContentVisitor::VisitBool(const du::Symbol&, bool) { return false; }

bool SerializedContentVisitor::VisitInt32(const du::Symbol&, std::int32_t) { return false; }

bool SerializedContentVisitor::VisitFloat(const du::Symbol&, float) { return false; }

bool SerializedContentVisitor::VisitUint64(const du::Symbol&, std::uint64_t) { return false; }

bool SerializedContentVisitor::VisitPoint(const du::Symbol&, const dg::DPoint3D&) { return false; }

bool SerializedContentVisitor::VisitVector(const du::Symbol&, const dg::DVec3&) { return false; }

bool SerializedContentVisitor::VisitQuaternion(const du::Symbol&, const dg::Quaternion<float>&) { return false; }

bool SerializedContentVisitor::VisitColor(const du::Symbol&, const dg::Color&) { return false; }

bool SerializedContentVisitor::VisitLocation(const du::Symbol&, const dg::Location&) { return false; }

void SerializedContentVisitor::OnRefused(const SerializedContentElement::Property&) {}

void SerializedContentVisitor::OnRefused(const SerializedContentElement&) {}

} // namespace luk
