#include <du/OrderedSet.h>
#include <luk/AnnoSet.h>
#include <luk/Annotation.h>

namespace luk
{

class AnnoSet::Members : public du::OrderedSet<du::SmartPtr<Annotation>>
{
};

AnnoSet::AnnoSet() : m_members(std::make_unique<Members>()) {}

AnnoSet::~AnnoSet()
{
    const auto members = m_members->TakeAll();
    for (const du::SmartPtr<Annotation>& member : members) {
        member->m_annoSet = nullptr;
    }
}

bool AnnoSet::AddAnnotation(const du::SmartPtr<Annotation>& annotation)
{
    if (!m_members->Add(annotation)) {
        return false;
    }
    if (AnnoSet* const before = std::exchange(annotation->m_annoSet, this)) {
        before->m_members->Take(annotation.get());
        ++before->m_changeCount;
    }
    ++m_changeCount;
    return true;
}

bool AnnoSet::RemoveAnnotationFromSet(const du::SmartPtr<Annotation>& annotation)
{
    const du::SmartPtr<Annotation> member = m_members->Take(annotation.get());
    if (!member) {
        return false;
    }
    member->m_annoSet = nullptr;
    ++m_changeCount;
    // The scene that is left here may have been the last to hold this set: nothing of it is touched from here on.
    member->DetachScene();
    return true;
}

void AnnoSet::AnnotationModified(const du::SmartPtr<Annotation>& annotation, bool notify)
{
    if (!Contains(annotation.get())) {
        return;
    }
    ++m_changeCount;
    if (notify) {
        PostObservableEvent(EVENT_ANNOTATION_MODIFIED, *this);
    }
}

bool AnnoSet::Contains(const Annotation* annotation) const { return m_members->Contains(annotation); }

std::size_t AnnoSet::GetCount() const noexcept { return m_members->GetCount(); }

std::vector<du::SmartPtr<Annotation>> AnnoSet::GetAnnotations() const { return m_members->GetAll(); }

du::SmartPtr<Annotation> AnnoSet::GetFirst() const
{
    const du::SmartPtr<Annotation>* const first = m_members->GetFirst();
    return first ? *first : nullptr;
}

} // namespace luk
