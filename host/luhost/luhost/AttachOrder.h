#pragma once

#include <du/Symbol.h>

#include <cstddef>
#include <vector>

namespace luk
{
class SerializedContentElement;
}

namespace luhost
{

/// The order in which the annotations of an opened scene are attached to it: one that hangs on the node of another comes
/// after that one, since an annotation lets go of parts that are not there. Otherwise, and where a ring leaves no choice,
/// the order of the file.
///
/// Cost: linear. Of each content only what decides is kept, so that it can be looked at while it is read.
class AttachOrder
{
public:
    void Add(const luk::SerializedContentElement& content);
    /// What has been added to another comes behind.
    void Append(const AttachOrder& other);

    /// Numbers of the contents, from 0 in the order in which they were added.
    std::vector<std::size_t> Get() const;
    /// Whether no content hangs on one behind it, so that this holds for any choice of them too.
    bool IsThatOfFile() const;

private:
    struct Content {
        du::Symbol id;        ///< of its node; empty for none
        std::size_t partsEnd; ///< in m_parts; they begin where those of the content before end
    };
    struct Step {
        std::size_t index;
        std::size_t nextPart;
    };

    std::vector<Content> m_contents;
    std::vector<du::Symbol> m_parts; ///< paths of all that the contents hang on
};

} // namespace luhost
