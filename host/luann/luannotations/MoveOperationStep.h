#pragma once

#include <dg/Location.h>
#include <du/SmartPtr.h>
#include <luk/Annotation.h>
#include <luk/OperationStep.h>

namespace luannotations
{

/// The user moved one markup of an annotation.
///
/// Ownership: holds the annotation.
class LUHOST_API MoveOperationStep : public luk::OperationStep
{
public:
    static constexpr int kType = 1;

    /// @param recordable whether a recorded animation may show it
    MoveOperationStep(const du::SmartPtr<luk::Annotation>& annotation, unsigned int markupIndex,
                      const dg::Location& before, const dg::Location& after, bool recordable);
    ~MoveOperationStep() override;

    bool Recordable() const override;
    int Type() const override;
    void Undo() override;
    void Redo() override;

private:
    du::SmartPtr<luk::Annotation> m_annotation;
    dg::Location m_before;
    dg::Location m_after;
    unsigned int m_markupIndex;
    bool m_recordable;
};

} // namespace luannotations
