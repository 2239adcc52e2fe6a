#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace lusym
{

/// What may stand in a library document, as a table for whoever examines one. The words are those of
/// xml/LibraryFormat.h; what a value means is left to the loader.
enum class ValueKind : std::uint8_t {
    Text,
    Keyed,
    Boolean,
    Integer,
    Real,
    Url,
    Csys,
    Flip,
    Rotate,
    Camera,
    Tags,
    Quantity
};

enum class AttributeKind : std::uint8_t { Text, Boolean, Integer, Float, Real, ExactReal, Location };

struct ChildRule {
    std::string_view name;
    ValueKind kind;
};

struct AttributeRule {
    std::string_view name;
    AttributeKind kind;
};

std::span<const std::string_view> SectionNames();
std::span<const ChildRule> CategoryChildren();
std::span<const ChildRule> ShapeChildren();
std::span<const ChildRule> SymbolChildren();
std::span<const ChildRule> TagChildren();

std::span<const AttributeRule> CategoryAttributes();
std::span<const AttributeRule> ShapeAttributes();
std::span<const AttributeRule> SymbolAttributes();
std::span<const AttributeRule> TagAttributes();
std::span<const AttributeRule> AttributesOf(ValueKind kind);

/// Whether an element of the kind has text of its own.
bool HasText(ValueKind kind);

/// The name in the list that a slip of the keyboard could have turned into this one; empty when none is near.
std::string_view NearestName(std::string_view name, std::span<const std::string_view> known);

/// What the loader makes of a text that should be a number.
enum class NumberFault : std::uint8_t {
    None,
    NoNumber, ///< reads as 0
    CutOff,   ///< something of it does not count
    Rounded,  ///< the writer writes fewer digits
};

NumberFault ExamineNumber(std::string_view text, AttributeKind kind);
/// The number that the loader reads, as text.
std::string ReadNumber(std::string_view text, AttributeKind kind);

} // namespace lusym
