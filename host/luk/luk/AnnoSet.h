#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/Observable.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace luk
{

class Annotation;

/// The annotations of a scene, in the order in which they are listed, saved and drawn.
///
/// Ownership: holds its members; a member knows its set by a plain pointer, which the set clears when it lets go.
///
/// Threads: belongs to the host thread.
///
/// Cost: constant for each annotation that comes, goes or changes.
class LUHOST_API AnnoSet : public Observable, public virtual du::RefCounted
{
public:
    AnnoSet();
    ~AnnoSet() override;
    AnnoSet(const AnnoSet&) = delete;
    AnnoSet& operator=(const AnnoSet&) = delete;

    /// Puts an annotation at the end, taking it out of another set. @return false for null and for one that is a member
    bool AddAnnotation(const du::SmartPtr<Annotation>& annotation);

    /// Detaches the annotation from its scene and lets go of it, which may be its end.
    /// @return false when it was no member
    bool RemoveAnnotationFromSet(const du::SmartPtr<Annotation>& annotation);

    /// Says that an annotation has changed; observers are told EVENT_ANNOTATION_MODIFIED.
    /// @param notify false to count the change without telling anyone
    void AnnotationModified(const du::SmartPtr<Annotation>& annotation, bool notify);

    bool Contains(const Annotation* annotation) const;
    std::size_t GetCount() const noexcept;
    std::vector<du::SmartPtr<Annotation>> GetAnnotations() const;
    /// Null when there is none.
    du::SmartPtr<Annotation> GetFirst() const;

    /// How often a member was added, removed or modified.
    std::size_t GetChangeCount() const noexcept { return m_changeCount; }

private:
    class Members;
    std::unique_ptr<Members> m_members;
    std::size_t m_changeCount = 0;
};

} // namespace luk
