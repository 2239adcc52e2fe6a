#pragma once

#include <dg/Color.h>
#include <dg/DPoint3D.h>
#include <dg/DVec3.h>
#include <dg/Location.h>
#include <dg/Quaternion.h>
#include <du/Symbol.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace luk
{

class SerializedContentVisitor;

/// Saved content: a named element with typed properties and child elements, both in the order in which they were added.
/// Neither keys nor names need to be unique.
///
/// Ownership: an element owns its children. A reference to a child holds for as long as its parent.
///
/// Threads: no lock of its own.
///
/// Cost: adding is constant; nothing here recurses, whatever the depth.
class LUHOST_API SerializedContentElement
{
public:
    using Value = std::variant<du::Symbol, bool, std::int32_t, float, std::uint64_t, dg::DPoint3D, dg::DVec3,
                               dg::Quaternion<float>, dg::Color, dg::Location>;

    struct Property {
        du::Symbol key;
        Value value;
        /// XML that another program has written here and this one does not understand: further attributes of the property,
        /// or, beginning with '<', a whole element, and then there is neither key nor value. Null when there is none.
        std::shared_ptr<const std::string> foreign = nullptr;

        bool IsForeign() const noexcept { return foreign && foreign->starts_with('<'); }
    };

    explicit SerializedContentElement(const du::Symbol& name = du::Symbol());
    SerializedContentElement(const SerializedContentElement& other);
    SerializedContentElement(SerializedContentElement&& other) noexcept;
    SerializedContentElement& operator=(const SerializedContentElement& other);
    SerializedContentElement& operator=(SerializedContentElement&& other) noexcept;
    ~SerializedContentElement();

    const du::Symbol& GetName() const noexcept { return m_name; }

    void AddProperty(const du::Symbol& key, const du::Symbol& value);
    void AddProperty(const du::Symbol& key, bool value);
    void AddProperty(const du::Symbol& key, std::int32_t value);
    void AddProperty(const du::Symbol& key, float value);
    void AddProperty(const du::Symbol& key, std::uint64_t value);
    void AddProperty(const du::Symbol& key, const dg::DPoint3D& value);
    void AddProperty(const du::Symbol& key, const dg::DVec3& value);
    void AddProperty(const du::Symbol& key, const dg::Quaternion<float>& value);
    void AddProperty(const du::Symbol& key, const dg::Color& value);
    void AddProperty(const du::Symbol& key, const dg::Location& value);
    /// A text literal would become a bool.
    void AddProperty(const du::Symbol& key, const char* value) = delete;
    /// Saved numbers are single precision.
    void AddProperty(const du::Symbol& key, double value) = delete;
    void AddProperty(Property property);

    /// Starts a child, which the caller writes on; it ends with the caller's interest in it.
    SerializedContentElement& StartChild(const du::Symbol& name);
    SerializedContentElement& AddChild(SerializedContentElement child);

    const std::vector<Property>& GetProperties() const noexcept { return m_properties; }
    std::vector<Property>& GetProperties() noexcept { return m_properties; }
    std::size_t GetChildCount() const noexcept { return m_children.size(); }
    const SerializedContentElement& GetChild(std::size_t index) const { return *m_children.at(index); }
    SerializedContentElement& GetChild(std::size_t index) { return *m_children.at(index); }

    /// The same as Property::foreign, for this element; empty when there is none.
    const std::string& GetForeign() const noexcept { return m_foreign; }
    void SetForeign(std::string xml) { m_foreign = std::move(xml); }
    bool IsForeign() const noexcept { return m_foreign.starts_with('<'); }

    /// Shows the content to a visitor: own properties first, then the children, each with its name and its content. What
    /// the visitor refuses it is shown once more, as refused; the content of a refused child is passed over. What is foreign
    /// is shown as refused only.
    /// @param withChildren false for the own properties alone
    void Visit(SerializedContentVisitor& visitor, bool withChildren) const;

    /// Component by component, where NaN equals NaN.
    friend LUHOST_API bool operator==(const SerializedContentElement& a, const SerializedContentElement& b);

private:
    static void EndBelow(std::unique_ptr<SerializedContentElement> current) noexcept;

    du::Symbol m_name;
    std::string m_foreign;
    std::vector<Property> m_properties;
    std::vector<std::unique_ptr<SerializedContentElement>> m_children;
};

} // namespace luk
