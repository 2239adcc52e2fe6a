#include "annotations3d/SymbolAnnotation.h"
#include "annotations3d/SymbolContentVisitor.h"
#include "annotations3d/SymbolKeys.h"

#include <dp/ReadLockGuard.h>
#include <dp/WriteLockGuard.h>
#include <luannotations/ConstStrings.h>
#include <lug/Appearance.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/SerializedContentElement.h>
#include <luk/ShapeInstance.h>

#include <set>

namespace luannotations
{

namespace keys = symbol_keys;

namespace
{

void WriteAppearance(luk::SerializedContentElement& element, const luk::ShapeInstance& instance)
{
    const du::SmartPtr<lug::Appearance>& appearance = instance.GetAppearanceOverride();
    if (!appearance) {
        element.AddProperty(keys::kAppHasOverride, false);
        return;
    }
    // An override without a material says nothing at all, so that it reads back as none.
    if (const lug::Material* const material = appearance->GetMaterial()) {
        element.AddProperty(keys::kAppAmbient, material->GetAmbient());
        element.AddProperty(keys::kAppSpecular, material->GetSpecular());
        element.AddProperty(keys::kAppDiffuse, material->GetDiffuse());
        element.AddProperty(keys::kAppEmissive, material->GetEmissive());
        element.AddProperty(keys::kAppShininess, material->GetShininess());
        element.AddProperty(keys::kAppTransp, instance.GetTransparency());
        element.AddProperty(keys::kAppHasOverride, true);
    }
}

void WritePart(luk::SerializedContentElement& element, const ConnectedPartInfo& part)
{
    element.AddProperty(keys::kAttachedToPartId, part.partId);
    if (!part.assemblyPartId.IsNull()) {
        element.AddProperty(keys::kAttachedToAssemblyPartId, part.assemblyPartId);
    }
    element.AddProperty(keys::kAttachedToPartLastPos, part.lastPos);
    element.AddProperty(keys::kAttachedToPartOffset, part.offset);
}

void WriteTag(luk::SerializedContentElement& element, const luk::illustration::SequencerTag& tag)
{
    element.AddProperty(keys::kSequencerTagType, luk::illustration::SequencerTag::GetSymbolForType(tag.GetType()));
    element.AddProperty(keys::kSequencerTagDescription, du::Symbol(tag.GetDescription()));
    element.AddProperty(keys::kSequencerTagName, du::Symbol(tag.GetName()));
    element.AddProperty(keys::kSequencerTagUnits, du::Symbol(tag.GetUnits()));
    element.AddProperty(keys::kSequencerTagQuantity, du::Symbol(tag.GetQuantityString()));
}

void WriteTemplateIndex(luk::SerializedContentElement& element, const std::string& templateId)
{
    const auto& collection = luk::illustration::SymbolTemplateCollection::GetCollection();
    const std::set<std::uint64_t> indices =
        collection ? collection->AssociativeObjectIdToIndices(templateId) : std::set<std::uint64_t>();
    if (!indices.empty()) {
        element.AddProperty(keys::kTemplateIndex, *indices.begin());
    }
}

} // namespace

void SymbolAnnotation::SplitLocation(const dg::Location& location, dg::DPoint3D& position,
                                     dg::Quaternion<float>& orientation, double& scale) const
{
    location.Get(position, orientation, scale);
    dg::Location ofRecord;
    ofRecord.Set(position, m_recordOrientation, m_recordScale);
    if (ofRecord.GetMat() == location.GetMat()) {
        orientation = m_recordOrientation;
        scale = m_recordScale;
    }
}

void SymbolAnnotation::SerializeContent(luk::SerializedContentElement& element)
{
    SymbolAnnotationBase::SerializeContent(element);
    if (!m_shapeInstance) {
        return;
    }
    dg::DPoint3D position;
    dg::Quaternion<float> orientation;
    double scale = 1.0;
    // Saved before any part has placed it, it is still where it was read to be.
    const bool isWaiting = m_legacy && !m_shapeInstance->GetLocation().HasPosition();
    const dg::Location location = isWaiting ? m_location : m_shapeInstance->GetLocation();
    UpdateOffsetWithConnectedParts();
    SplitLocation(location, position, orientation, scale);

    WriteAppearance(element, *m_shapeInstance);
    element.AddProperty(keys::kLocPosition, position);
    element.AddProperty(keys::kLocOrientation, orientation);
    element.AddProperty(keys::kLocScale, static_cast<float>(scale));
    element.AddProperty(keys::kIsAnnotationSymbol, m_isAnnotationSymbol);
    element.AddProperty(keys::kSymbolCsysLocation, m_partCsys);
    element.AddProperty(keys::kSymbolInitLocation, m_initLocation);
    for (const ConnectedPartInfo& part : m_connectedParts) {
        WritePart(element.StartChild(keys::kAttachedToPart), part);
    }
    if (m_hasTemplate) {
        WriteTemplateIndex(element, m_templateId);
    }
    for (const du::SmartPtr<luk::illustration::SequencerTag>& tag : m_sequencerTags) {
        if (tag) {
            WriteTag(element.StartChild(keys::kSequencerTag), *tag);
        }
    }
}

bool SymbolAnnotation::InitializeFromSerializedContent(const luk::SerializedContentElement* element)
{
    const dp::WriteLockGuard lock(GetLock());
    SymbolContentVisitor visitor(*this);
    if (element) {
        element->Visit(visitor, true);
    }
    const SymbolInfo& info = visitor.GetInfo();
    SetSymbolInfo(info);
    m_overrideTransparency = info.hasAppearanceOverride ? info.transparency : 0.0F;
    SetCreatedFromFile(true);
    return true;
}

bool SymbolAnnotation::InitializeFromSerializedContent(const luk::SerializedContentElement* element,
                                                       du::SmartPtr<luk::AnnoIdPathMapper>)
{
    return InitializeFromSerializedContent(element);
}

bool SymbolAnnotation::Flatten(luk::SerializedContentElement& element, const FlattenMatrices&,
                               const luk::InstanceCheck&, const dg::Pipeline&)
{
    const dp::ReadLockGuard lock(GetLock());
    if (!HasContent()) {
        return false;
    }
    // The common part alone: it is read back as a flattened symbol.
    SymbolAnnotationBase::SerializeContent(element.StartChild(ConstStrings::luSymbol3DFlattened));
    return true;
}

} // namespace luannotations
