#pragma once

#include "NearestPart.h"

#include <dg/DBox.h>
#include <du/SmartPtr.h>
#include <luk/ShapeInstance.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace luhost
{
class Document;
}

namespace lusym
{

/// The parts of a document's product as people name them: by the id path in the product or in the service tree, by the last
/// id of the path, or by the name of the component, where that is unique.
///
/// Cost: a path is constant; the first word that is none goes through the product once.
class PartLookup
{
public:
    using Part = du::SmartPtr<luk::ShapeInstance>;

    /// @param document has to outlive this
    explicit PartLookup(const luhost::Document& document) : m_document(document) {}

    struct Found {
        Part part;         ///< null when there is none
        std::string fault; ///< why, and which parts were probably meant
    };
    Found Find(const std::string& word);

    /// The part that most likely is what once had a path: called alike, and nearest to where that one was.
    /// @return null when none is called alike
    Part FindHeir(const std::string& path, const dg::DPoint3D& lastPosition);

private:
    using Parts = std::vector<Part>;

    void ReadProduct();
    const Parts& PartsCalled(const std::string& word) const;
    std::string Proposal(const std::string& word);

    const luhost::Document& m_document;
    bool m_isRead = false;
    std::unordered_map<std::string, Parts> m_byId;           ///< last ids of both paths
    std::unordered_map<std::string, Parts> m_byName;         ///< names of components, where they are no id
    std::unordered_map<std::string, Parts> m_byStem;         ///< both, without the number at their end
    std::unordered_map<const Parts*, NearestPart> m_nearest; ///< of the lists that were searched
    int m_proposals = 0;
};

/// The path by which a symbol is attached to a part: in the service tree where it has one.
std::string AttachmentPathOf(const luk::ShapeInstance& part);

/// Around the shape of a part, where it stands; empty for an assembly.
dg::DBox BoxOf(const luk::ShapeInstance& part);

/// The middle of the box around a part and all that is in it; its position when it shows nothing.
dg::DPoint3D MiddleOf(const luhost::Document& document, const luk::ShapeInstance& part);

} // namespace lusym
