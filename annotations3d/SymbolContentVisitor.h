#pragma once

#include "annotations3d/SymbolInfo.h"
#include "annotations3d/SymbolInfoFlattened.h"

#include <luk/AnnotationContentVisitor.h>

namespace luannotations
{

/// Reads what live and flattened 3D symbols save alike. Keys that it does not know go to the host's visitor.
class SerializedContentVisitorBase : public luk::Annotation::SerializedContentVisitor
{
public:
    bool VisitSymbol(const du::Symbol& key, const du::Symbol& value) override;
    bool VisitBool(const du::Symbol& key, bool value) override;

protected:
    using Base = luk::Annotation::SerializedContentVisitor;
    using Base::Base;

    virtual SymbolInfoBase& GetInfoBase() = 0;
};

/// Reads a live symbol.
class SymbolContentVisitor : public SerializedContentVisitorBase
{
public:
    using SerializedContentVisitorBase::SerializedContentVisitorBase;

    const SymbolInfo& GetInfo() const noexcept { return m_info; }

    bool StartElement(const du::Symbol& name) override;
    bool VisitSymbol(const du::Symbol& key, const du::Symbol& value) override;
    bool VisitBool(const du::Symbol& key, bool value) override;
    bool VisitFloat(const du::Symbol& key, float value) override;
    bool VisitUint64(const du::Symbol& key, std::uint64_t value) override;
    bool VisitPoint(const du::Symbol& key, const dg::DPoint3D& value) override;
    bool VisitVector(const du::Symbol& key, const dg::DVec3& value) override;
    bool VisitQuaternion(const du::Symbol& key, const dg::Quaternion<float>& value) override;
    bool VisitColor(const du::Symbol& key, const dg::Color& value) override;
    bool VisitLocation(const du::Symbol& key, const dg::Location& value) override;

protected:
    SymbolInfoBase& GetInfoBase() override { return m_info; }

private:
    bool VisitTagText(const du::Symbol& key, const du::Symbol& value);
    bool VisitPartId(const du::Symbol& key, const du::Symbol& value);

    SymbolInfo m_info;
    du::SmartPtr<luk::illustration::SequencerTag> m_currentTag;
};

/// Reads a flattened symbol.
class FlattenedSerializedContentVisitor : public SerializedContentVisitorBase
{
public:
    using SerializedContentVisitorBase::SerializedContentVisitorBase;

    const SymbolInfoFlattened& GetInfo() const noexcept { return m_info; }

    bool VisitLocation(const du::Symbol& key, const dg::Location& value) override;

protected:
    SymbolInfoBase& GetInfoBase() override { return m_info; }

private:
    SymbolInfoFlattened m_info;
};

} // namespace luannotations
