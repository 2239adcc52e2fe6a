#include <luannotations/SizeOperationStep.h>

namespace luannotations
{

SizeOperationStep::SizeOperationStep(const du::SmartPtr<luk::Annotation>& annotation, unsigned int markupIndex,
                                     const dg::FVec3& before, const dg::FVec3& after, bool recordable)
    : m_annotation(annotation), m_before(before), m_after(after), m_markupIndex(markupIndex), m_recordable(recordable)
{
}

SizeOperationStep::~SizeOperationStep() = default;

bool SizeOperationStep::Recordable() const { return m_recordable; }

int SizeOperationStep::Type() const { return kType; }

void SizeOperationStep::Undo()
{
    if (m_annotation) {
        m_annotation->SetMarkupSize(m_markupIndex, m_before);
    }
}

void SizeOperationStep::Redo()
{
    if (m_annotation) {
        m_annotation->SetMarkupSize(m_markupIndex, m_after);
    }
}

} // namespace luannotations
