#pragma once

#include <dg/Color.h>

namespace lug
{

/// How a surface answers to light. A value.
class Material
{
public:
    constexpr Material() noexcept = default;
    constexpr Material(const dg::Color& ambient, const dg::Color& diffuse, const dg::Color& emissive,
                       const dg::Color& specular, float shininess) noexcept
        : m_ambient(ambient), m_diffuse(diffuse), m_emissive(emissive), m_specular(specular), m_shininess(shininess)
    {
    }

    constexpr const dg::Color& GetAmbient() const noexcept { return m_ambient; }
    constexpr const dg::Color& GetDiffuse() const noexcept { return m_diffuse; }
    constexpr const dg::Color& GetEmissive() const noexcept { return m_emissive; }
    constexpr const dg::Color& GetSpecular() const noexcept { return m_specular; }
    constexpr float GetShininess() const noexcept { return m_shininess; }

    friend constexpr bool operator==(const Material&, const Material&) noexcept = default;

private:
    dg::Color m_ambient = dg::Color::BLACK;
    dg::Color m_diffuse = dg::Color::BLACK;
    dg::Color m_emissive = dg::Color::BLACK;
    dg::Color m_specular = dg::Color::BLACK;
    float m_shininess = 0.0F;
};

} // namespace lug
