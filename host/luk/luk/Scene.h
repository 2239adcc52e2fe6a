#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/MarkupHolder.h>
#include <luk/Observable.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace luk
{

class AnnoSet;
class Annotation;
class View;

/// What views show: annotations attach to it and add their markups.
///
/// Use: the host puts an annotation into the scene's set and calls its AttachScene; the annotation registers itself,
/// and adds its markup once it has something to show.
///
/// Ownership: a scene holds its set, its views, its markups and the annotations registered with it, and these hold the
/// scene: Close breaks the ring. The session closes the scenes that are left at its end.
///
/// Threads: belongs to the host thread.
///
/// Cost: constant for each annotation and markup that comes or goes.
class LUHOST_API Scene : public Observable, public MarkupHolder, public virtual du::RefCounted
{
public:
    Scene();
    ~Scene() override;

    /// Called by an annotation when it is attached; repeating is without effect. An annotation that is registered with
    /// another scene moves over. The base of Annotation::DetachScene takes it out again. One that the opened document
    /// brought along does not make the scene count as changed.
    /// @return false for null, and once the scene is closed
    bool RegisterAnnotation(const du::SmartPtr<Annotation>& annotation);
    /// @return false when it was not registered here
    bool UnregisterAnnotation(Annotation& annotation);
    std::vector<du::SmartPtr<Annotation>> GetRegisteredAnnotations() const;

    /// Shows a new markup; repeating is without effect. @return false for null, and once the scene is closed
    bool AddMarkup(const du::SmartPtr<Markup>& markup);
    /// The same for a markup that the opened document brought along: the scene does not count as changed by it.
    bool AddAnnotationMarkup(const du::SmartPtr<Markup>& markup);

    /// Whether anything was added or removed since SetModified(false).
    bool IsModified() const noexcept { return m_modified; }
    void SetModified(bool modified) noexcept { m_modified = modified; }

    /// Null once the scene is closed.
    const du::SmartPtr<AnnoSet>& GetAnnoSet() const noexcept { return m_annoSet; }

    /// Null when there is no such view.
    du::SmartPtr<View> GetView(std::size_t index) const;
    std::size_t GetViewCount() const noexcept { return m_views.size(); }
    void AddView(const du::SmartPtr<View>& view);

    /// Detaches every annotation and lets go of everything. A closed scene takes nothing in any more.
    void Close();
    bool IsClosed() const noexcept { return m_annoSet == nullptr; }

protected:
    /// The scene is being closed: annotations are detached, the rest is still there.
    virtual void OnClose() {}
    void MarkViewsDirty();

private:
    friend class World;
    class Registry;

    /// Closes every scene of the process that is still open.
    static void CloseAll();

    void OnMarkupRemoved() override;
    void DetachRegistered();
    void ForgetRegistered();

    du::SmartPtr<AnnoSet> m_annoSet;
    std::vector<du::SmartPtr<View>> m_views;
    std::unique_ptr<Registry> m_registry;
    bool m_modified = false;
};

} // namespace luk
