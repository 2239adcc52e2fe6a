#include "AttachOrder.h"

#include <du/PlaceMap.h>
#include <luk/SerializedContentElement.h>

#include <algorithm>
#include <string>

namespace luhost
{

namespace
{

using luk::SerializedContentElement;

/// Keys of the saved content that decide.
struct Keys {
    du::Symbol id{"ID"};
    du::Symbol part{"attachedToPart"};
    du::Symbol partId{"attachedToPartId"};

    static const Keys& Get()
    {
        static const Keys s_keys;
        return s_keys;
    }
};

du::Symbol TextOf(const SerializedContentElement& element, const du::Symbol& key)
{
    for (const SerializedContentElement::Property& property : element.GetProperties()) {
        const auto* const text = std::get_if<du::Symbol>(&property.value);
        if (text && property.key == key) {
            return *text;
        }
    }
    return {};
}

/// The id of a node below the root, by its path; null when nobody has such an id.
du::Symbol IdOf(const du::Symbol& path)
{
    const std::string_view text = path.GetText();
    return text.starts_with('/') ? du::Symbol::Find(text.substr(1)) : du::Symbol();
}

} // namespace

void AttachOrder::Add(const SerializedContentElement& content)
{
    const Keys& keys = Keys::Get();
    for (std::size_t i = 0; i < content.GetChildCount(); ++i) {
        if (const SerializedContentElement& child = content.GetChild(i); child.GetName() == keys.part) {
            m_parts.push_back(TextOf(child, keys.partId));
        }
    }
    m_contents.push_back({TextOf(content, keys.id), m_parts.size()});
}

void AttachOrder::Append(const AttachOrder& other)
{
    for (const Content& content : other.m_contents) {
        m_contents.push_back({content.id, m_parts.size() + content.partsEnd});
    }
    m_parts.insert(m_parts.end(), other.m_parts.begin(), other.m_parts.end());
}

std::vector<std::size_t> AttachOrder::Get() const
{
    du::PlaceMap<du::Symbol, std::size_t> byId;
    byId.Reserve(m_parts.empty() ? 0 : m_contents.size());
    for (std::size_t i = 0; i < m_contents.size() && !m_parts.empty(); ++i) {
        if (!m_contents[i].id.IsEmpty()) {
            byId.TryEmplace(m_contents[i].id, i);
        }
    }
    std::vector<std::size_t> order;
    order.reserve(m_contents.size());
    std::vector<bool> isSeen(m_contents.size());
    std::vector<Step> due;
    const auto visit = [&](std::size_t index) {
        if (!isSeen[index]) {
            isSeen[index] = true;
            due.push_back({index, index == 0 ? 0 : m_contents[index - 1].partsEnd});
        }
    };
    for (std::size_t i = 0; i < m_contents.size(); ++i) {
        visit(i);
        while (!due.empty()) {
            Step& step = due.back();
            if (step.nextPart == m_contents[step.index].partsEnd) {
                order.push_back(step.index);
                due.pop_back();
            } else if (const std::size_t* const other = byId.Find(IdOf(m_parts[step.nextPart++]))) {
                visit(*other);
            }
        }
    }
    return order;
}

bool AttachOrder::IsThatOfFile() const
{
    const std::vector<std::size_t> order = Get();
    return std::is_sorted(order.begin(), order.end());
}

} // namespace luhost
