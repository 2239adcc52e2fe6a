#include <luk/illustration/SequencerTag.h>

#include <algorithm>

namespace luk::illustration
{

SequencerTag::SequencerTag() = default;
SequencerTag::SequencerTag(const SequencerTag&) = default;
SequencerTag& SequencerTag::operator=(const SequencerTag&) = default;
SequencerTag::~SequencerTag() = default;

// A tag without a type is written with an empty keyword and must come back equal.
SequencerTag::Type SequencerTag::GetTypeForSymbol(const du::Symbol& keyword)
{
    return keyword.IsEmpty() ? Type() : keyword;
}

du::Symbol SequencerTag::GetSymbolForType(const Type& type) { return type; }

bool SequencerTag::IsKnownType(const Type& type) noexcept
{
    const std::vector<Type>& known = GetKnownTypes();
    return std::find(known.begin(), known.end(), type) != known.end();
}

const std::vector<SequencerTag::Type>& SequencerTag::GetKnownTypes()
{
    static const auto* const s_types =
        new std::vector<Type>{Type("TYPE"), Type("TORQUE"), Type("FORCE"),       Type("LENGTH"),   Type("ANGLE"),
                              Type("MASS"), Type("SPEED"),  Type("TEMPERATURE"), Type("PRESSURE"), Type("VOLUME"),
                              Type("TIME"), Type("COUNT"),  Type("TOOL"),        Type("MATERIAL"), Type("WARNING")};
    return *s_types;
}

bool SequencerTag::operator==(const SequencerTag& other) const noexcept
{
    return m_type == other.m_type && m_name == other.m_name && m_description == other.m_description &&
           m_units == other.m_units && m_quantity == other.m_quantity;
}

} // namespace luk::illustration
