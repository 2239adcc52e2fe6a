#include "annotations3d/SymbolContentVisitor.h"

#include "annotations3d/SymbolKeys.h"

namespace luannotations
{

namespace keys = symbol_keys;

bool SerializedContentVisitorBase::VisitSymbol(const du::Symbol& key, const du::Symbol& value)
{
    SymbolInfoBase& info = GetInfoBase();
    if (key == keys::kTitle) {
        info.title = value.GetText();
    } else if (key == keys::kDescription) {
        info.description = value.GetText();
    } else if (key == keys::kName) {
        info.name = value;
    } else if (key == keys::kFileName) {
        info.fileName = value;
    } else if (key == keys::kId) {
        info.id = value;
    } else {
        return Base::VisitSymbol(key, value);
    }
    return true;
}

bool SerializedContentVisitorBase::VisitBool(const du::Symbol& key, bool value)
{
    SymbolInfoBase& info = GetInfoBase();
    if (key == keys::kShowTooltipTitle) {
        info.showTooltipTitle = value;
    } else if (key == keys::kShowTooltipDescription) {
        info.showTooltipDescription = value;
    } else {
        return Base::VisitBool(key, value);
    }
    return true;
}

bool SymbolContentVisitor::StartElement(const du::Symbol& name)
{
    if (name == keys::kSequencerTag) {
        m_currentTag = du::MakeCounted<luk::illustration::SequencerTag>();
        m_info.sequencerTags.push_back(m_currentTag);
    } else if (name == keys::kAttachedToPart) {
        m_info.connectedParts.emplace_back();
    } else {
        // Refused, so that its content is not mistaken for the symbol's own.
        return Base::StartElement(name);
    }
    return true;
}

bool SymbolContentVisitor::VisitSymbol(const du::Symbol& key, const du::Symbol& value)
{
    return VisitPartId(key, value) || VisitTagText(key, value) || SerializedContentVisitorBase::VisitSymbol(key, value);
}

bool SymbolContentVisitor::VisitPartId(const du::Symbol& key, const du::Symbol& value)
{
    const bool isPart = key == keys::kAttachedToPartId;
    if (!isPart && key != keys::kAttachedToAssemblyPartId) {
        return false;
    }
    if (!m_info.connectedParts.empty()) {
        ConnectedPartInfo& part = m_info.connectedParts.back();
        (isPart ? part.partId : part.assemblyPartId) = value;
    }
    return true;
}

bool SymbolContentVisitor::VisitTagText(const du::Symbol& key, const du::Symbol& value)
{
    using luk::illustration::SequencerTag;
    void (SequencerTag::*set)(const std::string&) = nullptr;
    if (key == keys::kSequencerTagDescription) {
        set = &SequencerTag::SetDescription;
    } else if (key == keys::kSequencerTagName) {
        set = &SequencerTag::SetName;
    } else if (key == keys::kSequencerTagUnits) {
        set = &SequencerTag::SetUnits;
    } else if (key == keys::kSequencerTagQuantity) {
        set = &SequencerTag::SetQuantityString;
    } else if (key != keys::kSequencerTagType) {
        return false;
    }
    if (m_currentTag && set) {
        ((*m_currentTag).*set)(value.GetText());
    } else if (m_currentTag) {
        m_currentTag->SetType(SequencerTag::GetTypeForSymbol(value));
    }
    return true;
}

bool SymbolContentVisitor::VisitBool(const du::Symbol& key, bool value)
{
    if (key == keys::kAppHasOverride) {
        m_info.hasAppearanceOverride = value;
    } else if (key == keys::kIsAnnotationSymbol) {
        m_info.isAnnotationSymbol = value;
    } else {
        return SerializedContentVisitorBase::VisitBool(key, value);
    }
    return true;
}

bool SymbolContentVisitor::VisitFloat(const du::Symbol& key, float value)
{
    if (key == keys::kLocScale) {
        m_info.locScale = static_cast<double>(value);
    } else if (key == keys::kAppTransp) {
        m_info.transparency = value;
    } else if (key == keys::kAppShininess) {
        m_info.shininess = value;
    } else {
        return Base::VisitFloat(key, value);
    }
    return true;
}

bool SymbolContentVisitor::VisitUint64(const du::Symbol& key, std::uint64_t value)
{
    if (key != keys::kTemplateIndex) {
        return Base::VisitUint64(key, value);
    }
    m_info.templateIndex = static_cast<std::size_t>(value);
    return true;
}

bool SymbolContentVisitor::VisitPoint(const du::Symbol& key, const dg::DPoint3D& value)
{
    if (key == keys::kLocPosition) {
        m_info.locPosition = value;
    } else if (key != keys::kAttachedToPartLastPos) {
        return Base::VisitPoint(key, value);
    } else if (!m_info.connectedParts.empty()) {
        m_info.connectedParts.back().lastPos = value;
    }
    return true;
}

bool SymbolContentVisitor::VisitVector(const du::Symbol& key, const dg::DVec3& value)
{
    if (key != keys::kAttachedToPartOffset) {
        return Base::VisitVector(key, value);
    }
    if (!m_info.connectedParts.empty()) {
        m_info.connectedParts.back().offset = value;
    }
    return true;
}

bool SymbolContentVisitor::VisitQuaternion(const du::Symbol& key, const dg::Quaternion<float>& value)
{
    if (key != keys::kLocOrientation) {
        return Base::VisitQuaternion(key, value);
    }
    m_info.locOrientation = value;
    return true;
}

bool SymbolContentVisitor::VisitColor(const du::Symbol& key, const dg::Color& value)
{
    if (key == keys::kAppAmbient) {
        m_info.ambient = value;
    } else if (key == keys::kAppSpecular) {
        m_info.specular = value;
    } else if (key == keys::kAppDiffuse) {
        m_info.diffuse = value;
    } else if (key == keys::kAppEmissive) {
        m_info.emissive = value;
    } else {
        return Base::VisitColor(key, value);
    }
    return true;
}

bool SymbolContentVisitor::VisitLocation(const du::Symbol& key, const dg::Location& value)
{
    if (key == keys::kSymbolCsysLocation) {
        m_info.symbolCsysLocation = value;
        m_info.hasSymbolCsysLocation = true;
    } else if (key == keys::kSymbolInitLocation) {
        m_info.symbolInitLocation = value;
        m_info.hasSymbolInitLocation = true;
    } else {
        return Base::VisitLocation(key, value);
    }
    return true;
}

bool FlattenedSerializedContentVisitor::VisitLocation(const du::Symbol& key, const dg::Location& value)
{
    if (key != keys::kXform) {
        return false;
    }
    m_info.xform = value.GetMat();
    return true;
}

} // namespace luannotations
