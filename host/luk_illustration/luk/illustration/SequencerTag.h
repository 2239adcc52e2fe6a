#pragma once

#include <du/RefCounted.h>
#include <du/Symbol.h>

#include <string>
#include <string_view>
#include <vector>

namespace luk::illustration
{

/// A fact about a work step that travels with a symbol: "25 Nm of torque".
///
/// Ownership: counted; shared between an entry of the library and the symbols made from it.
///
/// Threads: filled by whoever makes it, then only read.
class LUHOST_API SequencerTag : public du::RefCounted
{
public:
    /// The kind of fact, as the keyword that it is saved under.
    using Type = du::Symbol;

    SequencerTag();
    SequencerTag(const SequencerTag&);
    SequencerTag& operator=(const SequencerTag&);
    ~SequencerTag() override;

    const std::string& GetName() const noexcept { return m_name; }
    void SetName(const std::string& name) { m_name = name; }
    const std::string& GetDescription() const noexcept { return m_description; }
    void SetDescription(const std::string& description) { m_description = description; }
    const std::string& GetUnits() const noexcept { return m_units; }
    void SetUnits(const std::string& units) { m_units = units; }
    const std::string& GetQuantityString() const noexcept { return m_quantity; }
    void SetQuantityString(const std::string& quantity) { m_quantity = quantity; }
    const std::string& GetLocIdDesc() const noexcept { return m_locIdDesc; }
    void SetLocIdDesc(const std::string& locId) { m_locIdDesc = locId; }
    const std::string& GetLocIdUnits() const noexcept { return m_locIdUnits; }
    void SetLocIdUnits(const std::string& locId) { m_locIdUnits = locId; }
    const Type& GetType() const noexcept { return m_type; }
    void SetType(const Type& type) { m_type = type; }

    /// The type of a keyword. One that is in no table is kept as it is, so that it is written back unchanged.
    static Type GetTypeForSymbol(const du::Symbol& keyword);
    static du::Symbol GetSymbolForType(const Type& type);

    /// Whether this host knows the type, and the types that it knows.
    static bool IsKnownType(const Type& type) noexcept;
    static const std::vector<Type>& GetKnownTypes();

    /// Compares what is said: name, description, units, quantity and type. Message keys are left out, since the same
    /// texts may come from keys or be written out.
    bool operator==(const SequencerTag& other) const noexcept;

private:
    std::string m_name;
    std::string m_description;
    std::string m_units;
    std::string m_quantity;
    std::string m_locIdDesc;
    std::string m_locIdUnits;
    Type m_type;
};

} // namespace luk::illustration
