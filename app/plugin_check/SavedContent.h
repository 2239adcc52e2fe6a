#pragma once

#include <luk/SerializedContentElement.h>

#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lusym::check
{

/// A key of the saved content of annotations, and a value that it may have.
struct KeyRow {
    const char* key;
    luk::SerializedContentElement::Value sample; ///< of the type that the key has always
};

/// What annotations of a type save, in the order in which they do: what the host adds to every annotation, then their own. Of
/// the keys that are saved under a condition only those that SampleContent meets.
const std::vector<KeyRow>& KeysOf(const std::string& type);

/// What every annotation in space saves, live or flattened.
const std::vector<KeyRow>& CommonShapeKeys();
const std::vector<KeyRow>& AttachedPartKeys();
const std::vector<KeyRow>& SequencerTagKeys();

/// Content with every key of the type, with two tags, and for a shape in the scene with two parts that it is attached to.
luk::SerializedContentElement SampleContent(const std::string& type);

/// The same with values from the ends of what their types can hold: what is no number, infinities, the largest, the smallest.
luk::SerializedContentElement ExtremeContent(const std::string& type, std::mt19937_64& random);

const char* TypeNameOf(const luk::SerializedContentElement::Value& value);
/// Where two elements first differ, for people; empty when they do not.
std::string FirstDifference(const luk::SerializedContentElement& a, const luk::SerializedContentElement& b);

luk::SerializedContentElement::Property* FindProperty(luk::SerializedContentElement& element, std::string_view key);
const luk::SerializedContentElement::Property* FindProperty(const luk::SerializedContentElement& element,
                                                            std::string_view key);
/// Without the properties of this key.
luk::SerializedContentElement Without(const luk::SerializedContentElement& element, std::string_view key);

} // namespace lusym::check
