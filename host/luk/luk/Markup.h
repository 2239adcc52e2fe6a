#pragma once

#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/Object.h>

#include <cstdint>

namespace luk
{

class MarkupController;
class MarkupShadow;

/// Something drawn over a scene. The drawing takes what it shows from here; nothing is drawn until a scene holds it.
///
/// Ownership: a scene holds its markups. The controller is not owned: it takes itself out before it goes.
///
/// Threads: belongs to the host thread.
class LUHOST_API Markup : public Object, public virtual du::RefCounted
{
public:
    ~Markup() override;

    bool IsVisible() const noexcept { return m_visible; }
    void SetVisibility(bool visible) noexcept;

    int GetPageNum() const noexcept { return m_pageNum; }
    void SetPageNum(int pageNum) noexcept;

    /// Who is told what the user does with the markup; null when nobody is.
    MarkupController* GetController() const noexcept { return m_controller; }
    void SetController(MarkupController* controller) noexcept { m_controller = controller; }

    /// Brings the shadow up to what the markup now shows.
    virtual void UpdateShadow();
    /// Null for a markup that cannot be dragged.
    virtual du::SmartPtr<MarkupShadow> GetShadow() const;

    /// What is drawn has changed.
    void NotifyContentChanged() noexcept { ++m_contentVersion; }
    /// Grows with every change of what is drawn.
    std::uint64_t GetContentVersion() const noexcept { return m_contentVersion; }

protected:
    Markup() = default;

private:
    MarkupController* m_controller = nullptr;
    std::uint64_t m_contentVersion = 0;
    int m_pageNum = 0;
    bool m_visible = true;
};

} // namespace luk
