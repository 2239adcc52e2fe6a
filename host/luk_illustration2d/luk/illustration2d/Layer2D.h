#pragma once

#include <du/RefCounted.h>
#include <luk/Object.h>

#include <string>
#include <utility>

namespace luk::illustration2d
{

/// A sheet of a 2D document: its elements are shown and hidden together.
///
/// Threads: belongs to the host thread.
class LUHOST_API Layer2D : public luk::Object, public virtual du::RefCounted
{
public:
    explicit Layer2D(std::string name) : m_name(std::move(name)) {}
    ~Layer2D() override;

    const std::string& GetName() const noexcept { return m_name; }
    bool IsVisible() const noexcept { return m_visible; }
    void SetVisible(bool visible) noexcept { m_visible = visible; }

private:
    std::string m_name;
    bool m_visible = true;
};

} // namespace luk::illustration2d
