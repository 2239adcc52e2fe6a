#pragma once

#include <du/SmartPtr.h>
#include <luk/Markup.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace luk
{

/// Holds markups in the order in which they came.
///
/// Threads: belongs to the host thread.
///
/// Cost: constant for each markup that comes or goes.
class LUHOST_API MarkupHolder
{
public:
    virtual ~MarkupHolder();

    /// @return false for a markup that is not held here
    bool RemoveMarkup(const du::SmartPtr<Markup>& markup);
    bool HoldsMarkup(const Markup* markup) const;
    std::size_t GetMarkupCount() const noexcept;
    std::vector<du::SmartPtr<Markup>> GetMarkups() const;

protected:
    MarkupHolder();
    MarkupHolder(const MarkupHolder&) = delete;
    MarkupHolder& operator=(const MarkupHolder&) = delete;

    /// @return false for null and for a markup that is held already
    bool HoldMarkup(const du::SmartPtr<Markup>& markup);
    void RemoveAllMarkups();

    /// After RemoveMarkup has taken one out.
    virtual void OnMarkupRemoved();

private:
    class Content;
    std::unique_ptr<Content> m_content;
};

} // namespace luk
