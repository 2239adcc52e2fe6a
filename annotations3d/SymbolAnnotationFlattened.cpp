#include "annotations3d/SymbolAnnotationFlattened.h"

#include "annotations3d/SymbolContentVisitor.h"
#include "annotations3d/SymbolKeys.h"

#include <dp/ReadLockGuard.h>
#include <dp/WriteLockGuard.h>
#include <luannotations/ConstStrings.h>
#include <luk/illustration2d/Document2D.h>
#include <luk/illustration2d/Kernel2D.h>
#include <luk/illustration2d/Scene2D.h>
#include <luk/SerializedContentElement.h>

namespace luannotations
{

SymbolAnnotationFlattened::SymbolAnnotationFlattened() { SetClass(ConstStrings::luSymbol3DFlattened); }

SymbolAnnotationFlattened::SymbolAnnotationFlattened(const SymbolAnnotationFlattened& other) = default;

SymbolAnnotationFlattened::~SymbolAnnotationFlattened() = default;

du::SmartPtr<luk::Annotation> SymbolAnnotationFlattened::Clone()
{
    const dp::ReadLockGuard lock(GetLock());
    return du::SmartPtr<luk::Annotation>(new SymbolAnnotationFlattened(*this));
}

bool SymbolAnnotationFlattened::AttachScene(const du::SmartPtr<luk::Scene>& scene)
{
    return luk::Annotation::AttachScene(scene);
}

bool SymbolAnnotationFlattened::IsVisible() const { return luk::Annotation::IsVisible(); }

bool SymbolAnnotationFlattened::InitializeFromSerializedContent(const luk::SerializedContentElement* element)
{
    const dp::WriteLockGuard lock(GetLock());
    FlattenedSerializedContentVisitor visitor(*this);
    if (element) {
        element->Visit(visitor, true);
    }
    SetSymbolInfo(visitor.GetInfo());
    SetCreatedFromFile(true);
    return true;
}

bool SymbolAnnotationFlattened::InitializeFromSerializedContent(const luk::SerializedContentElement* element,
                                                                du::SmartPtr<luk::AnnoIdPathMapper>)
{
    return InitializeFromSerializedContent(element);
}

void SymbolAnnotationFlattened::CreateAnnotation2D(const du::SmartPtr<luk::Scene>& scene)
{
    const auto page = du::DynamicCast<luk::illustration2d::Scene2D>(scene);
    const auto kernel = luk::illustration2d::Kernel2D::GetSingleton();
    const auto factory = kernel ? kernel->GetFactory(luk::illustration2d::Kernel2D::BASE_KERNEL_FACTORY) : nullptr;
    if (!IsVisible() || !page || !factory) {
        return;
    }
    const dg::FMat33 xform = GetXform();
    const double x = static_cast<double>(xform.Get(0, 2));
    const double y = static_cast<double>(xform.Get(1, 2));
    const dg::DVec3 scale = xform.GetScale();

    const du::SmartPtr<luk::illustration2d::Stamp2D> stamp = factory->CreateStamp2D();
    stamp->SetExtents(dg::DBox2D({x - scale.x * 0.5, y - scale.y * 0.5}, {x + scale.x * 0.5, y + scale.y * 0.5}));
    stamp->SetTitle(GetTitle());
    stamp->SetUseTitle(ShowTooltipTitle());
    stamp->SetDescription(GetDescription());
    stamp->SetUseDescription(ShowTooltipDescription());
    stamp->SetIDPath(GetIDPath());
    stamp->SetDerivedFromSymbol(true);
    stamp->SetLayer(page->GetDocument()->GetCurrentLayer());
    page->GetDocument()->AppendNode(stamp);
}

void SymbolAnnotationFlattened::SetSymbolInfo(const SymbolInfoFlattened& info)
{
    const dp::WriteLockGuard lock(GetLock());
    _SetSymbolInfo(info);
    m_xform = info.xform;
}

dg::FMat33 SymbolAnnotationFlattened::GetXform() const
{
    const dp::ReadLockGuard lock(GetLock());
    return m_xform;
}

void SymbolAnnotationFlattened::SerializeContent(luk::SerializedContentElement& element)
{
    SymbolAnnotationBase::SerializeContent(element);
    element.AddProperty(symbol_keys::kXform, dg::Location(m_xform, dg::DPoint3D::BAD));
}

} // namespace luannotations
