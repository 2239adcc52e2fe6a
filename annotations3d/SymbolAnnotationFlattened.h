#pragma once

#include "annotations3d/SymbolAnnotationBase.h"
#include "annotations3d/SymbolInfoFlattened.h"

namespace luannotations
{

/// A 3D symbol baked into a 2D drawing: its texts and a transform in the drawing, and no shape any more.
///
/// Threads and locks: as SymbolAnnotationBase.
class LUSYMBOLS_API SymbolAnnotationFlattened : public SymbolAnnotationBase
{
public:
    SymbolAnnotationFlattened();
    ~SymbolAnnotationFlattened() override;

    du::SmartPtr<luk::Annotation> Clone() override;
    bool AttachScene(const du::SmartPtr<luk::Scene>& scene) override;
    bool InitializeFromSerializedContent(const luk::SerializedContentElement* element) override;
    bool InitializeFromSerializedContent(const luk::SerializedContentElement* element,
                                         du::SmartPtr<luk::AnnoIdPathMapper> mapper) override;
    bool IsVisible() const override;
    /// Puts an element for the symbol on the page of a 2D scene: as large as the transform makes a unit square.
    void CreateAnnotation2D(const du::SmartPtr<luk::Scene>& scene) override;

    void SetSymbolInfo(const SymbolInfoFlattened& info);
    dg::FMat33 GetXform() const;

protected:
    SymbolAnnotationFlattened(const SymbolAnnotationFlattened& other);
    void SerializeContent(luk::SerializedContentElement& element) override;

private:
    dg::FMat33 m_xform = dg::FMat33::IDENTITY;
};

} // namespace luannotations
