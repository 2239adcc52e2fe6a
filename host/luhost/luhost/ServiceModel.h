#pragma once

#include <du/Export.h>
#include <luk/illustration/SbomTree.h>
#include <luk/Tree.h>

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace dg
{
class XmlElem;
}

namespace luhost
{

/// The service tree of a product as plain data, and as XML: in documents, and in files that people write.
///
///     <service>
///       <node id="drive" name="Drive">
///         <node id="shaft" name="Input shaft" part="/input/shaft"/>
///       </node>
///     </service>
struct LUHOST_API ServiceModel {
    static constexpr std::size_t kNoParent = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t kMaxDepth = 200;
    static constexpr std::size_t kMaxNodes = 2'000'000;
    /// Texts of all id paths together.
    static constexpr std::size_t kMaxPathBytes = std::size_t{1} << 30;

    struct Node {
        std::string id; ///< unique among the nodes of one parent, not empty, without '/'
        std::string name;
        std::string part;               ///< id path of the part that it stands for; empty for a group
        std::size_t parent = kNoParent; ///< index of a node before this one
        std::string foreign;            ///< attributes that are not understood, as XML
    };

    /// As they stand in XML: what is below a node follows it at once.
    std::vector<Node> nodes;
    std::string foreign; ///< attributes of the whole that are not understood, as XML

    /// @param[out] problem why the XML is no service tree
    static bool Read(const dg::XmlElem& service, ServiceModel& model, std::string& problem);
    /// The same for a whole document, such as the text of a file.
    static bool Parse(const std::string& xml, ServiceModel& model, std::string& problem);

    /// Appends the element and all below it. @return false, with the reason, when it would not be read again
    bool Append(std::string& out, int depth, std::string& problem) const;

    struct Absent {
        std::size_t node;
        std::string path; ///< of the service node
    };

    /// Id paths of the nodes.
    std::vector<std::string> GetPaths() const;

    static ServiceModel Of(const luk::illustration::SbomTree& tree);

    /// Puts the nodes into an empty tree, each in the place of its part where the product has that.
    /// @return the nodes whose part is not there, or has another node already
    std::vector<Absent> Fill(luk::illustration::SbomTree& tree, const luk::Tree& product) const;
};

} // namespace luhost
