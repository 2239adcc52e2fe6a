#pragma once

#include <luk/SerializedContentElement.h>

namespace luk
{

/// Reads saved content: one operation for each type of value. Each base operation refuses.
///
/// Every operation says whether it knew what it was given, and so whether it took it.
class LUHOST_API SerializedContentVisitor
{
public:
    virtual ~SerializedContentVisitor();

    /// A child element begins; what follows is its content. @return false to have the content passed over
    virtual bool StartElement(const du::Symbol& name);

    virtual bool VisitSymbol(const du::Symbol& key, const du::Symbol& value);
    virtual bool VisitBool(const du::Symbol& key, bool value);
    virtual bool VisitInt32(const du::Symbol& key, std::int32_t value);
    virtual bool VisitFloat(const du::Symbol& key, float value);
    virtual bool VisitUint64(const du::Symbol& key, std::uint64_t value);
    virtual bool VisitPoint(const du::Symbol& key, const dg::DPoint3D& value);
    virtual bool VisitVector(const du::Symbol& key, const dg::DVec3& value);
    virtual bool VisitQuaternion(const du::Symbol& key, const dg::Quaternion<float>& value);
    virtual bool VisitColor(const du::Symbol& key, const dg::Color& value);
    virtual bool VisitLocation(const du::Symbol& key, const dg::Location& value);

    /// What was refused, for those who keep it.
    virtual void OnRefused(const SerializedContentElement::Property& property);
    virtual void OnRefused(const SerializedContentElement& child);

protected:
    SerializedContentVisitor() = default;
    SerializedContentVisitor(const SerializedContentVisitor&) = default;
    SerializedContentVisitor& operator=(const SerializedContentVisitor&) = default;
};

} // namespace luk
