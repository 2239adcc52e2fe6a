#include "AttachOrder.h"

#include <luk/SerializedContentElement.h>

#include <string>
#include <unordered_map>

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

class AttachOrder
{
public:
    explicit AttachOrder(const std::vector<const SerializedContentElement*>& contents)
        : m_contents(contents), m_isSeen(contents.size(), false)
    {
        const du::Symbol idKey("ID");
        for (std::size_t i = 0; i < contents.size(); ++i) {
            if (const du::Symbol id = TextOf(*contents[i], idKey); !id.IsEmpty()) {
                m_byPath.emplace(du::Symbol("/" + id.GetText()), i);
            }
        }
    }

    std::vector<std::size_t> Get()
    {
        for (std::size_t i = 0; i < m_contents.size(); ++i) {
            Visit(i);
            while (!m_due.empty()) {
                Go();
            }
        }
        return std::move(m_order);
    }

private:
    struct Step {
        std::size_t index;
        std::size_t nextChild = 0;
    };

    void Visit(std::size_t index)
    {
        if (!m_isSeen[index]) {
            m_isSeen[index] = true;
            m_due.push_back({index});
        }
    }

    void Go()
    {
        Step& step = m_due.back();
        const SerializedContentElement& content = *m_contents[step.index];
        if (step.nextChild == content.GetChildCount()) {
            m_order.push_back(step.index);
            m_due.pop_back();
            return;
        }
        const SerializedContentElement& child = content.GetChild(step.nextChild++);
        const auto other = child.GetName() == m_part ? m_byPath.find(TextOf(child, m_partId)) : m_byPath.end();
        if (other != m_byPath.end()) {
            Visit(other->second);
        }
    }

    const std::vector<const SerializedContentElement*>& m_contents;
    const du::Symbol m_part{"attachedToPart"};
    const du::Symbol m_partId{"attachedToPartId"};
    std::unordered_map<du::Symbol, std::size_t> m_byPath; ///< by the path of its node
    std::vector<bool> m_isSeen;
    std::vector<Step> m_due;
    std::vector<std::size_t> m_order;
};

} // namespace

std::vector<std::size_t> AttachOrderOf(const std::vector<const SerializedContentElement*>& contents)
{
    return AttachOrder(contents).Get();
}

} // namespace luhost
