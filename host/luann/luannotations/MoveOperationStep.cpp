#include <luannotations/MoveOperationStep.h>

namespace luannotations
{

MoveOperationStep::MoveOperationStep(const du::SmartPtr<luk::Annotation>& annotation, unsigned int markupIndex,
                                     const dg::Location& before, const dg::Location& after, bool recordable)
    : m_annotation(annotation), m_before(before), m_after(after), m_markupIndex(markupIndex), m_recordable(recordable)
{
}

MoveOperationStep::~MoveOperationStep() = default;

bool MoveOperationStep::Recordable() const { return m_recordable; }

int MoveOperationStep::Type() const { return kType; }

void MoveOperationStep::Undo()
{
    if (m_annotation) {
        m_annotation->SetMarkupLocation(m_markupIndex, m_before);
    }
}

void MoveOperationStep::Redo()
{
    if (m_annotation) {
        m_annotation->SetMarkupLocation(m_markupIndex, m_after);
    }
}

} // namespace luannotations
