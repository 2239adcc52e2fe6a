#pragma once

#include <functional>
#include <map>
#include <string>

namespace luk
{
class SerializedContentElement;
}

namespace luhost
{

/// Attributes in the content of an annotation that this program does not understand: of its element, of its properties, and
/// of its child elements with theirs. The annotation reads past them, so that they are kept here.
class ForeignAttributes
{
public:
    ForeignAttributes() = default;
    explicit ForeignAttributes(const luk::SerializedContentElement& content);

    bool IsEmpty() const noexcept { return m_byPlace.empty(); }

    /// Those whose property or child element is still there, beside what has attributes already. A child element is known
    /// again by its name and the first of its texts.
    void PutBack(luk::SerializedContentElement& content) const;

    /// @param look told what has them, such as "sequencerTag" or "title", and the attributes as XML
    void ForEach(const std::function<void(const std::string& holder, const std::string& attributes)>& look) const;

private:
    struct Kept {
        std::string holder;
        std::string attributes;
    };
    template <class Element, class Look>
    static void Walk(Element& content, const Look& look);

    std::map<std::string, Kept> m_byPlace;
};

} // namespace luhost
