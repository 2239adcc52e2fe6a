#include "ForeignAttributes.h"

#include <luk/SerializedContentElement.h>
#include <luk/SerializedContentXml.h>

#include <memory>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace luhost
{

namespace
{

using luk::SerializedContentElement;
using luk::SerializedContentXml;
using Property = SerializedContentElement::Property;

std::string WordsOf(const Property& property)
{
    return std::string(SerializedContentXml::GetTypeName(property.value)).append(" ").append(property.key.GetText());
}

std::string WordsOf(const SerializedContentElement& child)
{
    std::string words = "element " + child.GetName().GetText();
    for (const Property& property : child.GetProperties()) {
        if (const auto* const text = std::get_if<du::Symbol>(&property.value); text && !property.IsForeign()) {
            return words.append(" ").append(text->GetText());
        }
    }
    return words;
}

bool HasAttributes(const SerializedContentElement& element)
{
    for (const Property& property : element.GetProperties()) {
        if (property.foreign && !property.IsForeign()) {
            return true;
        }
    }
    return !element.GetForeign().empty() && !element.IsForeign();
}

/// Tells things that are called alike from one another.
class Places
{
public:
    explicit Places(std::string above) : m_above(std::move(above)) {}

    std::string Next(const std::string& words)
    {
        return m_above + '\0' + words + '\0' + std::to_string(m_counts[words]++);
    }

private:
    std::string m_above;
    std::unordered_map<std::string, std::size_t> m_counts;
};

} // namespace

/// @param look told the place, the name of what is there, and the property or the element
template <class Element, class Look>
void ForeignAttributes::Walk(Element& content, const Look& look)
{
    const auto walkProperties = [&look](auto& element, const std::string& place) {
        Places places(place);
        for (auto& property : element.GetProperties()) {
            if (!property.IsForeign()) {
                look(places.Next(WordsOf(property)), property.key.GetText(), property);
            }
        }
    };
    look(std::string(), std::string("element"), content);
    walkProperties(content, {});
    Places places({});
    for (std::size_t i = 0; i < content.GetChildCount(); ++i) {
        auto& child = content.GetChild(i);
        if (!child.IsForeign()) {
            const std::string place = places.Next(WordsOf(child));
            look(place, child.GetName().GetText(), child);
            walkProperties(child, place);
        }
    }
}

ForeignAttributes::ForeignAttributes(const SerializedContentElement& content)
{
    bool hasAny = HasAttributes(content);
    for (std::size_t i = 0; i < content.GetChildCount() && !hasAny; ++i) {
        hasAny = HasAttributes(content.GetChild(i));
    }
    if (!hasAny) {
        return;
    }
    Walk(content, [this](const std::string& place, const std::string& name, const auto& thing) {
        if constexpr (std::is_same_v<std::decay_t<decltype(thing)>, Property>) {
            if (thing.foreign) {
                m_byPlace[place] = {name, *thing.foreign};
            }
        } else if (!thing.GetForeign().empty()) {
            m_byPlace[place] = {name, thing.GetForeign()};
        }
    });
}

void ForeignAttributes::PutBack(SerializedContentElement& content) const
{
    if (m_byPlace.empty()) {
        return;
    }
    Walk(content, [this](const std::string& place, const std::string&, auto& thing) {
        const auto kept = m_byPlace.find(place);
        if (kept == m_byPlace.end()) {
            return;
        }
        if constexpr (std::is_same_v<std::decay_t<decltype(thing)>, Property>) {
            if (!thing.foreign) {
                thing.foreign = std::make_shared<const std::string>(kept->second.attributes);
            }
        } else if (thing.GetForeign().empty()) {
            thing.SetForeign(kept->second.attributes);
        }
    });
}

void ForeignAttributes::ForEach(
    const std::function<void(const std::string& holder, const std::string& attributes)>& look) const
{
    for (const auto& [place, kept] : m_byPlace) {
        look(kept.holder, kept.attributes);
    }
}

} // namespace luhost
