#include "annotations3d/SymbolAnnotationBase.h"

#include "annotations3d/SymbolKeys.h"

#include <dp/ReadLockGuard.h>
#include <du/Localizer.h>
#include <du/UserData.h>
#include <luannotations/ConstStrings.h>
#include <luk/SerializedContentElement.h>

namespace luannotations
{

namespace
{

const du::Localizer& Messages()
{
    static const auto* const s_messages = new du::Localizer("lubase:lumodulesStrings");
    return *s_messages;
}

} // namespace

SymbolAnnotationBase::SymbolAnnotationBase() : Annotation(0x100000, 0)
{
    SetPreselectionCursor(ConstStrings::luDistancePreselectionCursor);
}

SymbolAnnotationBase::SymbolAnnotationBase(const SymbolAnnotationBase& other) = default;

SymbolAnnotationBase::~SymbolAnnotationBase() = default;

bool SymbolAnnotationBase::IsZoomable() const { return true; }

bool SymbolAnnotationBase::AllowGroupDrag() const { return false; }

du::Symbol SymbolAnnotationBase::GetIconName() const { return ConstStrings::luDistanceIcon; }

std::string SymbolAnnotationBase::GetObjectDescription() const
{
    const dp::ReadLockGuard lock(GetLock());
    std::string description = Messages().LocalizeMessage("2047") + "-";
    if (!GetObjectName().IsNull()) {
        description += GetObjectName().GetText();
    }
    return description;
}

void SymbolAnnotationBase::Visit(luk::SerializedContentElement& element)
{
    const dp::ReadLockGuard lock(GetLock());
    if (HasContent()) {
        SerializeContent(element.StartChild(GetClass()));
    }
}

void SymbolAnnotationBase::OnViewActivated() {}

void SymbolAnnotationBase::OnViewDeactivated() {}

unsigned int SymbolAnnotationBase::NumberOfMarkups() const { return 0; }

std::string SymbolAnnotationBase::GetMarkupName(unsigned int index) const
{
    return Messages().LocalizeMessage("5601", "%d", static_cast<int>(index + 1));
}

void SymbolAnnotationBase::SetName(const du::Symbol& fileName, const du::Symbol& name)
{
    m_fileName = fileName;
    m_name = name;
}

const du::Symbol& SymbolAnnotationBase::GetSymbolFileName() { return symbol_keys::kFileName; }

unsigned int SymbolAnnotationBase::GetUserDataId()
{
    static const unsigned int s_id = du::UserData::GetId("drellin::Drellin3DSymbolUserDataId");
    return s_id;
}

void SymbolAnnotationBase::_SetSymbolInfo(const SymbolInfoBase& info)
{
    m_title = info.title.empty() ? m_name : du::Symbol(info.title);
    // An empty text and none are the same to a reader; none is what an annotation without a record has.
    m_description = info.description.empty() ? du::Symbol() : du::Symbol(info.description);
    m_showTooltipTitle = info.showTooltipTitle;
    m_showTooltipDescription = info.showTooltipDescription;
    m_fileName = info.fileName;
    m_name = info.name;
    m_id = info.id;
}

void SymbolAnnotationBase::SerializeContent(luk::SerializedContentElement& element)
{
    namespace keys = symbol_keys;
    luk::Annotation::Visit(element);
    element.AddProperty(keys::kTitle, m_title);
    element.AddProperty(keys::kDescription, m_description);
    element.AddProperty(keys::kShowTooltipTitle, m_showTooltipTitle);
    element.AddProperty(keys::kShowTooltipDescription, m_showTooltipDescription);
    element.AddProperty(keys::kName, m_name);
    element.AddProperty(keys::kFileName, m_fileName);
    element.AddProperty(keys::kId, m_id);
}

} // namespace luannotations
