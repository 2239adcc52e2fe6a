#include <luk/SerializedContentElement.h>
#include <luk/SerializedContentVisitor.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace luk
{

namespace
{

using Property = SerializedContentElement::Property;

template <class Real>
bool SameReals(std::initializer_list<Real> a, std::initializer_list<Real> b) noexcept
{
    return std::equal(a.begin(), a.end(), b.begin(),
                      [](Real x, Real y) { return x == y || (std::isnan(x) && std::isnan(y)); });
}

/// For values of the same type.
struct Sameness {
    bool operator()(float a, float b) const noexcept { return SameReals({a}, {b}); }
    bool operator()(const dg::DPoint3D& a, const dg::DPoint3D& b) const noexcept
    {
        return SameReals({a.x, a.y, a.z}, {b.x, b.y, b.z});
    }
    bool operator()(const dg::DVec3& a, const dg::DVec3& b) const noexcept
    {
        return SameReals({a.x, a.y, a.z}, {b.x, b.y, b.z});
    }
    bool operator()(const dg::Quaternion<float>& a, const dg::Quaternion<float>& b) const noexcept
    {
        return SameReals({a.w, a.x, a.y, a.z}, {b.w, b.x, b.y, b.z});
    }
    bool operator()(const dg::Color& a, const dg::Color& b) const noexcept
    {
        return SameReals({a.red, a.green, a.blue, a.alpha}, {b.red, b.green, b.blue, b.alpha});
    }
    bool operator()(const dg::Location& a, const dg::Location& b) const noexcept
    {
        const std::array<float, 9>& left = a.GetMat().GetEntries();
        const std::array<float, 9>& right = b.GetMat().GetEntries();
        return std::equal(left.begin(), left.end(), right.begin(), *this) && (*this)(a.GetPosition(), b.GetPosition());
    }
    /// The types whose values equal themselves.
    template <class T>
    bool operator()(const T& a, const T& b) const noexcept
    {
        return a == b;
    }
};

bool SameValues(const SerializedContentElement::Value& a, const SerializedContentElement::Value& b)
{
    return a.index() == b.index() &&
           std::visit([&b](const auto& value) { return Sameness()(value, std::get<std::decay_t<decltype(value)>>(b)); },
                      a);
}

bool SameProperties(const Property& a, const Property& b)
{
    const bool sameForeign = a.foreign && b.foreign ? *a.foreign == *b.foreign : a.foreign == b.foreign;
    return a.key == b.key && sameForeign && SameValues(a.value, b.value);
}

/// Calls the operation of the visitor for the type of a value.
class Presentation
{
public:
    Presentation(SerializedContentVisitor& visitor, const du::Symbol& key) noexcept : m_visitor(visitor), m_key(key) {}

    bool operator()(const du::Symbol& value) const { return m_visitor.VisitSymbol(m_key, value); }
    bool operator()(bool value) const { return m_visitor.VisitBool(m_key, value); }
    bool operator()(std::int32_t value) const { return m_visitor.VisitInt32(m_key, value); }
    bool operator()(float value) const { return m_visitor.VisitFloat(m_key, value); }
    bool operator()(std::uint64_t value) const { return m_visitor.VisitUint64(m_key, value); }
    bool operator()(const dg::DPoint3D& value) const { return m_visitor.VisitPoint(m_key, value); }
    bool operator()(const dg::DVec3& value) const { return m_visitor.VisitVector(m_key, value); }
    bool operator()(const dg::Quaternion<float>& value) const { return m_visitor.VisitQuaternion(m_key, value); }
    bool operator()(const dg::Color& value) const { return m_visitor.VisitColor(m_key, value); }
    bool operator()(const dg::Location& value) const { return m_visitor.VisitLocation(m_key, value); }

private:
    SerializedContentVisitor& m_visitor;
    const du::Symbol& m_key;
};

void VisitProperties(SerializedContentVisitor& visitor, const std::vector<Property>& properties)
{
    for (const Property& property : properties) {
        if (property.IsForeign() || !std::visit(Presentation(visitor, property.key), property.value)) {
            visitor.OnRefused(property);
        }
    }
}

} // namespace

SerializedContentElement::SerializedContentElement(const du::Symbol& name) : m_name(name) {}

SerializedContentElement::SerializedContentElement(const SerializedContentElement& other)
{
    std::vector<std::pair<const SerializedContentElement*, SerializedContentElement*>> pending = {{&other, this}};
    while (!pending.empty()) {
        const auto [source, copy] = pending.back();
        pending.pop_back();
        copy->m_name = source->m_name;
        copy->m_foreign = source->m_foreign;
        copy->m_properties = source->m_properties;
        copy->m_children.reserve(source->m_children.size());
        for (const auto& child : source->m_children) {
            pending.emplace_back(child.get(), &copy->StartChild(du::Symbol()));
        }
    }
}

SerializedContentElement::SerializedContentElement(SerializedContentElement&& other) noexcept = default;

SerializedContentElement& SerializedContentElement::operator=(const SerializedContentElement& other)
{
    return *this = SerializedContentElement(other);
}

SerializedContentElement& SerializedContentElement::operator=(SerializedContentElement&& other) noexcept
{
    // What this element held goes last: the other may be a part of it.
    SerializedContentElement taken(std::move(other));
    std::swap(m_name, taken.m_name);
    m_foreign.swap(taken.m_foreign);
    m_properties.swap(taken.m_properties);
    m_children.swap(taken.m_children);
    return *this;
}

SerializedContentElement::~SerializedContentElement()
{
    for (std::unique_ptr<SerializedContentElement>& child : m_children) {
        EndBelow(std::move(child));
    }
}

/// With neither recursion, since elements may lie deep, nor memory: on the way down the place of the child that is gone into
/// holds the element above.
void SerializedContentElement::EndBelow(std::unique_ptr<SerializedContentElement> current) noexcept
{
    std::unique_ptr<SerializedContentElement> above;
    while (current) {
        if (!current->m_children.empty()) {
            above.swap(current->m_children.back());
            above.swap(current);
            continue;
        }
        current = std::exchange(above, nullptr);
        if (current) {
            above = std::move(current->m_children.back());
            current->m_children.pop_back();
        }
    }
}

void SerializedContentElement::AddProperty(const du::Symbol& key, const du::Symbol& value)
{
    AddProperty(Property{key, value});
}

void SerializedContentElement::AddProperty(const du::Symbol& key, bool value) { AddProperty(Property{key, value}); }

void SerializedContentElement::AddProperty(const du::Symbol& key, std::int32_t value)
{
    AddProperty(Property{key, value});
}

void SerializedContentElement::AddProperty(const du::Symbol& key, float value) { AddProperty(Property{key, value}); }

void SerializedContentElement::AddProperty(const du::Symbol& key, std::uint64_t value)
{
    AddProperty(Property{key, value});
}

void SerializedContentElement::AddProperty(const du::Symbol& key, const dg::DPoint3D& value)
{
    AddProperty(Property{key, value});
}

void SerializedContentElement::AddProperty(const du::Symbol& key, const dg::DVec3& value)
{
    AddProperty(Property{key, value});
}

void SerializedContentElement::AddProperty(const du::Symbol& key, const dg::Quaternion<float>& value)
{
    AddProperty(Property{key, value});
}

void SerializedContentElement::AddProperty(const du::Symbol& key, const dg::Color& value)
{
    AddProperty(Property{key, value});
}

void SerializedContentElement::AddProperty(const du::Symbol& key, const dg::Location& value)
{
    AddProperty(Property{key, value});
}

void SerializedContentElement::AddProperty(Property property)
{
    constexpr std::size_t kFirstRoom = 8;
    if (m_properties.capacity() == 0) {
        m_properties.reserve(kFirstRoom);
    }
    m_properties.push_back(std::move(property));
}

SerializedContentElement& SerializedContentElement::StartChild(const du::Symbol& name)
{
    return *m_children.emplace_back(std::make_unique<SerializedContentElement>(name));
}

SerializedContentElement& SerializedContentElement::AddChild(SerializedContentElement child)
{
    return *m_children.emplace_back(std::make_unique<SerializedContentElement>(std::move(child)));
}

void SerializedContentElement::Visit(SerializedContentVisitor& visitor, bool withChildren) const
{
    VisitProperties(visitor, m_properties);
    struct Level {
        const SerializedContentElement* element;
        std::size_t next;
    };
    std::vector<Level> levels;
    if (withChildren) {
        levels.push_back({this, 0});
    }
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.element->m_children.size()) {
            levels.pop_back();
            continue;
        }
        const SerializedContentElement& child = *level.element->m_children[level.next++];
        if (child.IsForeign() || !visitor.StartElement(child.m_name)) {
            visitor.OnRefused(child);
            continue;
        }
        VisitProperties(visitor, child.m_properties);
        levels.push_back({&child, 0});
    }
}

bool operator==(const SerializedContentElement& a, const SerializedContentElement& b)
{
    std::vector<std::pair<const SerializedContentElement*, const SerializedContentElement*>> pending = {{&a, &b}};
    while (!pending.empty()) {
        const auto [left, right] = pending.back();
        pending.pop_back();
        if (!(left->m_name == right->m_name) || left->m_foreign != right->m_foreign ||
            left->m_children.size() != right->m_children.size() ||
            !std::equal(left->m_properties.begin(), left->m_properties.end(), right->m_properties.begin(),
                        right->m_properties.end(), SameProperties)) {
            return false;
        }
        for (std::size_t i = 0; i < left->m_children.size(); ++i) {
            pending.emplace_back(left->m_children[i].get(), right->m_children[i].get());
        }
    }
    return true;
}

} // namespace luk
