#pragma once

#include "DocumentFile.h"

#include <du/SymbolMap.h>
#include <luhost/Package.h>
#include <luhost/ProductModel.h>
#include <luhost/ServiceModel.h>
#include <luk/ComponentNode.h>
#include <luk/illustration/Illustration3dScene.h>
#include <luk/Structure.h>
#include <luk/Tree.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace luhost
{

/// The product in a document: its structure and both trees, where its parts stand in the view and how they look there.
/// In the file it is the element "product" and the meshes in "product/mesh-N.ply".
///
///     <product>
///       <components>
///         <component name="Bolt" mesh="1"/>
///         <component name="Pump"><use id="bolt-1" component="0" location="..."/></component>
///       </components>
///       <parts><part path="/bolt-1" hidden="true"/></parts>
///       <service><node id="fixing" name="Fixing" part="/bolt-1"/></service>
///     </product>
///
/// Errors: a product that is not sound is kept as it is and the document has none.
class DocumentProduct
{
public:
    DocumentProduct();
    ~DocumentProduct();
    DocumentProduct(const DocumentProduct&) = delete;
    DocumentProduct& operator=(const DocumentProduct&) = delete;

    static bool IsMeshEntry(std::string_view name) noexcept;

    /// Takes the meshes that it uses out of the entries. Once, before anybody asks for the tree or the scene: both are made
    /// anew.
    void Read(const dg::XmlElem& product, std::vector<PackageEntry>& entries, DocumentProblems& problems);

    /// See the operations of Document.
    bool SetProduct(const ProductModel& model, std::string& problem);
    bool SetService(const ServiceModel& model, std::string& problem);
    ServiceModel GetService() const;

    /// Appends the element, and nothing for a document without a product. @return false with the reason
    bool Write(std::string& xml, int depth, std::vector<PackageEntry>& entries, std::string& error) const;

    const du::SmartPtr<luk::Structure>& GetStructure() const noexcept { return m_structure; }
    const du::SmartPtr<luk::Tree>& GetTree() const noexcept { return m_tree; }
    const du::SmartPtr<luk::illustration::SbomTree>& GetSbomTree() const noexcept { return m_sbomTree; }
    const du::SmartPtr<luk::illustration::Illustration3dScene>& GetScene() const noexcept { return m_scene; }

private:
    /// What is not understood of a component and of its uses of others.
    struct KeptOf {
        du::SmartPtr<luk::ComponentNode> node;
        KeptXml kept;
        std::unordered_map<std::string, KeptXml> uses;
    };
    class ComponentReader;
    class Writer;

    void MakeScene();
    void CloseScene();
    bool ReadComponents(const dg::XmlElem& product, std::vector<PackageEntry>& entries, std::string& problem,
                        DocumentProblems& problems);
    void ReadParts(const dg::XmlElem& parts, DocumentProblems& problems);
    bool ReadPart(const dg::XmlElem& part, std::string& problem, DocumentProblems& problems);
    void ReadService(const dg::XmlElem& service, DocumentProblems& problems);
    void FillService(const ServiceModel& service);
    /// Whether a use in the root is a symbol's.
    bool IsMarked(const luk::ComponentInstance& use) const;

    du::SmartPtr<luk::Structure> m_structure;
    du::SmartPtr<luk::Tree> m_tree;
    du::SmartPtr<luk::illustration::SbomTree> m_sbomTree;
    du::SmartPtr<luk::illustration::Illustration3dScene> m_scene;

    std::string m_refused; ///< the XML of a product that is not sound
    KeptXml m_kept;
    KeptXml m_keptInComponents;
    KeptXml m_keptInParts; ///< with states of parts that are not there
    std::unordered_map<const luk::ComponentNode*, KeptOf> m_keptOf;
    du::SymbolMap<KeptXml> m_keptInPart;                          ///< by id path
    std::unordered_map<std::string, std::string> m_foreignOfNode; ///< attributes of service nodes, by id path
    std::string m_foreignOfService;
    std::unordered_map<std::string, std::string> m_absentParts; ///< id paths of parts, by that of the service node
};

} // namespace luhost
