#include <du/UserData.h>
#include <lug/Appearance.h>
#include <luk/ComponentInstance.h>
#include <luk/Instance.h>
#include <luk/SameValue.h>
#include <luk/Shape.h>
#include <luk/ShapeInstance.h>
#include <luk/ShapeScene.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace luk
{

namespace
{

/// @param fallback what NaN counts as
float ClampFraction(float fraction, float fallback)
{
    if (fraction >= 0.0F && fraction <= 1.0F) {
        return fraction;
    }
    return fraction < 0.0F ? 0.0F : fraction > 1.0F ? 1.0F : fallback;
}

bool IsSameMaterial(const lug::Material* a, const lug::Material* b)
{
    if (!a || !b) {
        return a == b;
    }
    return IsSame(a->GetAmbient(), b->GetAmbient()) && IsSame(a->GetDiffuse(), b->GetDiffuse()) &&
           IsSame(a->GetEmissive(), b->GetEmissive()) && IsSame(a->GetSpecular(), b->GetSpecular()) &&
           IsSame(a->GetShininess(), b->GetShininess());
}

bool IsSameAppearance(const lug::Appearance* a, const lug::Appearance* b)
{
    return a == b || (a && b && IsSameMaterial(a->GetMaterial(), b->GetMaterial()));
}

} // namespace

ShapeInstance::ShapeInstance(ShapeScene& scene, const du::SmartPtr<Instance>& instance)
    : m_scene(&scene), m_instance(instance)
{
}

ShapeInstance::~ShapeInstance() = default;

du::SmartPtr<ShapeScene> ShapeInstance::GetShapeScene() const { return du::SmartPtr<ShapeScene>(m_scene); }

dg::Location ShapeInstance::GetOriginalLocation() const
{
    std::vector<const Instance*> fromBelow;
    for (const Instance* at = m_instance.get(); at; at = at->GetParent()) {
        fromBelow.push_back(at);
    }
    // From above, in the order in which the scene places its parts, so that both round alike.
    dg::Location location = dg::Location::IDENTITY;
    for (auto at = fromBelow.rbegin(); at != fromBelow.rend(); ++at) {
        if (const auto& use = (*at)->GetComponentInstance()) {
            location = location * use->GetLocation();
        }
    }
    return location;
}

void ShapeInstance::SetLocation(const dg::Location& location, bool notify)
{
    m_placed = true;
    if (m_scene) {
        m_scene->Place(*this, dg::Location(location), notify);
    } else {
        m_location = location;
    }
}

void ShapeInstance::SetVisibility(bool visible, bool notify)
{
    if (m_scene) {
        m_scene->Show(*this, visible, notify);
    } else {
        m_shown = visible;
        m_visible = visible;
    }
}

void ShapeInstance::SetVisibilityFraction(float fraction, bool notify)
{
    const float clamped = ClampFraction(fraction, 1.0F);
    if (std::exchange(m_visibilityFraction, clamped) == clamped || !m_scene) {
        return;
    }
    m_scene->Changed(*this, notify, [](ShapeSceneObserver& observer, const du::SmartPtr<ShapeInstance>& part) {
        observer.OnShapeInstanceVisibilityFractionChanged(part, part->GetVisibilityFraction());
    });
}

void ShapeInstance::SetColor(const dg::Color& color)
{
    const lug::Material material(color, color, dg::Color::BLACK, dg::Color::BLACK, 0.0F);
    SetAppearance(du::MakeCounted<lug::Appearance>(material), true);
}

void ShapeInstance::OverrideAppearance(const du::SmartPtr<lug::Appearance>& appearance)
{
    SetAppearance(appearance, false);
}

void ShapeInstance::SetAppearance(const du::SmartPtr<lug::Appearance>& appearance, bool isColor)
{
    if (IsSameAppearance(appearance.get(), m_appearance.get())) {
        return;
    }
    m_appearance = appearance;
    if (m_scene) {
        m_scene->Changed(*this, true,
                         isColor ? &ShapeSceneObserver::OnShapeInstanceColorChanged
                                 : &ShapeSceneObserver::OnShapeInstanceAppearanceChanged);
    }
}

void ShapeInstance::RestoreAppearanceOverride(bool colors, bool transparency)
{
    const du::SmartPtr<ShapeInstance> keptAlive(this);
    const du::SmartPtr<ShapeScene> scene = GetShapeScene();
    if (colors) {
        SetAppearance(nullptr, false);
    }
    if (transparency) {
        SetTransparency(false, 0.0F);
    }
}

void ShapeInstance::OverrideTransparency(float transparency)
{
    SetTransparency(true, ClampFraction(transparency, 0.0F));
}

void ShapeInstance::SetTransparency(bool overridden, float transparency)
{
    const bool sameOverride = std::exchange(m_hasTransparency, overridden) == overridden;
    const bool sameValue = std::exchange(m_transparency, transparency) == transparency;
    if ((sameOverride && sameValue) || !m_scene) {
        return;
    }
    m_scene->Changed(*this, true, &ShapeSceneObserver::OnShapeInstanceTransparencyChanged);
}

void ShapeInstance::SetSelected(bool selected)
{
    if (std::exchange(m_selected, selected) == selected || !m_scene) {
        return;
    }
    m_scene->Changed(*this, true, &ShapeSceneObserver::OnShapeInstanceSelectionChanged);
}

void ShapeInstance::SetUserData(unsigned int id, const du::SmartPtr<du::RefCounted>& data)
{
    // What was there goes last, since its end may come back here.
    du::SmartPtr<du::RefCounted> before;
    const auto known = std::find_if(m_userData.begin(), m_userData.end(),
                                    [id](const UserData& userData) { return userData.first == id; });
    if (known == m_userData.end()) {
        if (data) {
            m_userData.emplace_back(id, data);
        }
        return;
    }
    before = std::move(known->second);
    if (data) {
        known->second = data;
    } else {
        m_userData.erase(known);
    }
}

const ShapeInstance::UserData* ShapeInstance::FindUserData(unsigned int id) const
{
    for (const UserData& userData : m_userData) {
        if (userData.first == id) {
            return &userData;
        }
    }
    return nullptr;
}

du::SmartPtr<du::RefCounted> ShapeInstance::GetUserData(unsigned int id) const
{
    const UserData* const found = FindUserData(id);
    return found ? found->second : nullptr;
}

bool ShapeInstance::HasUserData(unsigned int id) const { return FindUserData(id) != nullptr; }

bool ShapeInstance::IsOfSymbol() const
{
    static const unsigned int s_mark = du::UserData::GetId("drellin::Drellin3DSymbolUserDataId");
    return HasUserData(s_mark);
}

/// Where it stands and what it looks like, and nothing else.
void ShapeInstance::TakeOver(const ShapeInstance& other)
{
    m_appearance = other.m_appearance;
    m_location = other.m_location;
    m_visibilityFraction = other.m_visibilityFraction;
    m_transparency = other.m_transparency;
    m_hasTransparency = other.m_hasTransparency;
    m_placed = other.m_placed;
    m_shown = other.m_shown;
    m_visible = other.m_visible;
}

} // namespace luk
