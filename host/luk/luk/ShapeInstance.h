#pragma once

#include <dg/Color.h>
#include <dg/Location.h>
#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <luk/Object.h>

#include <utility>
#include <vector>

namespace lug
{
class Appearance;
}

namespace luk
{

class Instance;
class Shape;
class ShapeScene;

/// One occurrence of a component in a scene: where it stands, whether it is seen, and what it looks like. Assemblies have
/// one as well, without a shape.
///
/// Frames: locations are absolute in the scene.
///
/// Ownership: the scene holds its shape instances; an instance knows its scene by a plain pointer and answers null once it
/// is no longer part of one.
///
/// Threads: belongs to the host thread.
///
/// Notifications: operations with a `notify` argument tell the scene's observers when it is true and something changed;
/// with false the scene marks its views dirty and nobody is told. Those without the argument tell. An unchanged value never
/// notifies.
class LUHOST_API ShapeInstance : public Object, public virtual du::RefCounted
{
public:
    ~ShapeInstance() override;

    const du::SmartPtr<Instance>& GetInstance() const noexcept { return m_instance; }
    /// Null for an assembly.
    const du::SmartPtr<Shape>& GetShape() const noexcept { return m_shape; }
    /// Null once the scene is gone, or the instance is no longer in it; while "removed" is told it is still answered.
    du::SmartPtr<ShapeScene> GetShapeScene() const;

    /// Where it stands.
    const dg::Location& GetLocation() const noexcept { return m_location; }
    /// Where the structure puts it.
    dg::Location GetOriginalLocation() const;
    /// Places it in the scene by itself: the placement that its structure gives no longer counts. What is below it moves
    /// along, unless placed by itself too. A location without a position is kept as it is given: "nowhere yet".
    void SetLocation(const dg::Location& location, bool notify);
    /// Whether SetLocation was called.
    bool IsPlaced() const noexcept { return m_placed; }

    /// Whether neither it nor anything above it is hidden.
    bool IsVisible() const noexcept { return m_visible; }
    /// Its own setting, whatever is above.
    bool IsShown() const noexcept { return m_shown; }
    void SetVisibility(bool visible, bool notify = true);

    /// 0 to 1; clamped, and NaN counts as 1.
    float GetVisibilityFraction() const noexcept { return m_visibilityFraction; }
    void SetVisibilityFraction(float fraction, bool notify);

    /// Overrides the appearance by a material of this colour, ambient and diffuse.
    void SetColor(const dg::Color& color);
    /// Null: its own appearance.
    const du::SmartPtr<lug::Appearance>& GetAppearanceOverride() const noexcept { return m_appearance; }
    void OverrideAppearance(const du::SmartPtr<lug::Appearance>& appearance);
    /// @param colors drop the appearance override
    /// @param transparency drop the transparency override as well
    void RestoreAppearanceOverride(bool colors, bool transparency);

    /// 0 opaque to 1 clear: the override, else 0. An override is clamped, and NaN counts as 0.
    float GetTransparency() const noexcept { return m_hasTransparency ? m_transparency : 0.0F; }
    bool HasTransparencyOverride() const noexcept { return m_hasTransparency; }
    float GetTransparencyOverride() const noexcept { return m_transparency; }
    void OverrideTransparency(float transparency);

    bool IsSelected() const noexcept { return m_selected; }
    void SetSelected(bool selected);

    /// Marks of the modules that use it, by du::UserData ids; null takes a mark away.
    void SetUserData(unsigned int id, const du::SmartPtr<du::RefCounted>& data);
    du::SmartPtr<du::RefCounted> GetUserData(unsigned int id) const;
    bool HasUserData(unsigned int id) const;
    /// Whether a symbol in space has marked it as its own, whatever its id.
    bool IsOfSymbol() const;

private:
    friend class ShapeScene;
    using UserData = std::pair<unsigned int, du::SmartPtr<du::RefCounted>>;

    const UserData* FindUserData(unsigned int id) const;
    void TakeOver(const ShapeInstance& other);
    void SetAppearance(const du::SmartPtr<lug::Appearance>& appearance, bool isColor);
    void SetTransparency(bool overridden, float transparency);

    ShapeInstance(ShapeScene& scene, const du::SmartPtr<Instance>& instance);

    ShapeScene* m_scene;
    du::SmartPtr<Instance> m_instance;
    du::SmartPtr<Shape> m_shape;
    du::SmartPtr<lug::Appearance> m_appearance;
    std::vector<UserData> m_userData; ///< of few modules
    dg::Location m_location = dg::Location::IDENTITY;
    float m_visibilityFraction = 1.0F;
    float m_transparency = 0.0F;
    bool m_hasTransparency = false;
    bool m_placed = false;
    bool m_shown = true;
    bool m_visible = true;
    bool m_selected = false;
    bool m_isPart = false; ///< of its scene, neither unloaded nor removed
};

} // namespace luk
