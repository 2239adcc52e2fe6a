#pragma once

#include <dg/FVec3.h>
#include <du/SmartPtr.h>
#include <luk/Annotation.h>
#include <luk/OperationStep.h>

namespace luannotations
{

/// The user sized one markup of an annotation.
///
/// Ownership: holds the annotation.
class LUHOST_API SizeOperationStep : public luk::OperationStep
{
public:
    static constexpr int kType = 2;

    /// @param recordable whether a recorded animation may show it
    SizeOperationStep(const du::SmartPtr<luk::Annotation>& annotation, unsigned int markupIndex,
                      const dg::FVec3& before, const dg::FVec3& after, bool recordable);
    ~SizeOperationStep() override;

    bool Recordable() const override;
    int Type() const override;
    void Undo() override;
    void Redo() override;

private:
    du::SmartPtr<luk::Annotation> m_annotation;
    dg::FVec3 m_before;
    dg::FVec3 m_after;
    unsigned int m_markupIndex;
    bool m_recordable;
};

} // namespace luannotations
