#pragma once

#include "annotations3d/SymbolInfoBase.h"

#include <luannotations/Annotation.h>

namespace luannotations
{

/// What live and flattened 3D symbols have in common: their texts, their file, their id, and how these are saved.
///
/// Threads and locks: belongs to the host thread. Its fields are guarded by the annotation's lock: applying a record and
/// reading saved content take it for writing, describing and saving for reading. One-field accessors take none.
class LUSYMBOLS_API SymbolAnnotationBase : public Annotation
{
public:
    ~SymbolAnnotationBase() override;

    bool IsZoomable() const override;
    bool AllowGroupDrag() const override;
    du::Symbol GetIconName() const override;
    std::string GetObjectDescription() const override;
    /// Writes a child of the annotation's class when there is content.
    void Visit(luk::SerializedContentElement& element) override;
    void OnViewActivated() override;
    void OnViewDeactivated() override;
    unsigned int NumberOfMarkups() const override;
    std::string GetMarkupName(unsigned int index) const override;

    void SetName(const du::Symbol& fileName, const du::Symbol& name);
    const du::Symbol& GetFileName() const noexcept { return m_fileName; }
    const du::Symbol& GetName() const noexcept { return m_name; }
    const std::string& GetTitle() const noexcept { return m_title.GetText(); }
    const std::string& GetDescription() const noexcept { return m_description.GetText(); }
    bool ShowTooltipTitle() const noexcept { return m_showTooltipTitle; }
    bool ShowTooltipDescription() const noexcept { return m_showTooltipDescription; }

    /// The key under which the file name is saved.
    static const du::Symbol& GetSymbolFileName();
    /// Number of the mark by which a node of the product is known to be a 3D symbol's.
    static unsigned int GetUserDataId();

protected:
    SymbolAnnotationBase();
    SymbolAnnotationBase(const SymbolAnnotationBase& other);
    SymbolAnnotationBase& operator=(const SymbolAnnotationBase&) = delete;

    /// [caller holds the write lock] A record without a title gives the annotation the name that it had before, since an
    /// edit that names nothing keeps the label that people know.
    void _SetSymbolInfo(const SymbolInfoBase& info);

    /// [caller holds the read lock] Writes on the annotation's own element.
    virtual void SerializeContent(luk::SerializedContentElement& element);

    du::Symbol m_title;
    du::Symbol m_description;
    bool m_showTooltipTitle = false;
    bool m_showTooltipDescription = false;
    du::Symbol m_fileName;
    du::Symbol m_name;
    du::Symbol m_id;
};

} // namespace luannotations
