#include "AttachOrder.h"

#include <luk/SerializedContentElement.h>

#include <algorithm>
#include <string>

namespace luhost
{

namespace
{

using luk::SerializedContentElement;

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

} // namespace

void AttachOrder::Add(const SerializedContentElement& content)
{
    if (const du::Symbol id = TextOf(content, m_id); !id.IsEmpty()) {
        m_byPath.emplace(du::Symbol("/" + id.GetText()), m_contents.size());
    }
    const std::size_t begin = m_parts.size();
    for (std::size_t i = 0; i < content.GetChildCount(); ++i) {
        if (const SerializedContentElement& child = content.GetChild(i); child.GetName() == m_part) {
            m_parts.push_back(TextOf(child, m_partId));
        }
    }
    m_contents.push_back({begin, m_parts.size()});
}

std::vector<std::size_t> AttachOrder::Get() const
{
    std::vector<std::size_t> order;
    order.reserve(m_contents.size());
    std::vector<bool> isSeen(m_contents.size());
    std::vector<Step> due;
    const auto visit = [&](std::size_t index) {
        if (!isSeen[index]) {
            isSeen[index] = true;
            due.push_back({index, m_contents[index].begin});
        }
    };
    for (std::size_t i = 0; i < m_contents.size(); ++i) {
        visit(i);
        while (!due.empty()) {
            Step& step = due.back();
            if (step.nextPart == m_contents[step.index].end) {
                order.push_back(step.index);
                due.pop_back();
            } else if (const auto other = m_byPath.find(m_parts[step.nextPart++]); other != m_byPath.end()) {
                visit(other->second);
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
