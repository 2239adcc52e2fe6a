#pragma once

#include <du/Symbol.h>
#include <du/SymbolMap.h>

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
/// Cost: linear. Of each content only what decides is kept, so that it can be looked at while somebody else reads it too.
class AttachOrder
{
public:
    void Add(const luk::SerializedContentElement& content);

    /// Numbers of the contents, from 0 in the order in which they were added.
    std::vector<std::size_t> Get() const;
    /// Whether no content hangs on one behind it, so that this holds for any choice of them too.
    bool IsThatOfFile() const;

private:
    struct Parts {
        std::size_t begin; ///< in m_parts
        std::size_t end;
    };
    struct Step {
        std::size_t index;
        std::size_t nextPart;
    };

    du::Symbol m_id{"ID"};
    du::Symbol m_part{"attachedToPart"};
    du::Symbol m_partId{"attachedToPartId"};
    std::vector<Parts> m_contents;
    std::vector<du::Symbol> m_parts;     ///< ids of all that the contents hang on
    du::SymbolMap<std::size_t> m_byPath; ///< contents by the path of their node
};

} // namespace luhost
