#pragma once

#include <du/RefCounted.h>
#include <lug/Material.h>

#include <optional>

namespace lug
{

/// What something looks like; its material may be missing.
///
/// Ownership: counted and immutable.
class LUHOST_API Appearance : public du::RefCounted
{
public:
    Appearance() = default;
    explicit Appearance(const Material& material) : m_material(material) {}
    ~Appearance() override;

    /// Null when there is none.
    const Material* GetMaterial() const noexcept { return m_material ? &*m_material : nullptr; }

private:
    std::optional<Material> m_material;
};

} // namespace lug
