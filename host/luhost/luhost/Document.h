#pragma once

#include <dg/Camera3D.h>
#include <du/RefCounted.h>
#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luhost/Package.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace luk
{
class Annotation;
class Scene;
class SerializedContentElement;
class ShapeScene;
class Structure;
} // namespace luk

namespace luk::illustration2d
{
class Scene2D;
}

namespace luhost
{

struct ProductModel;
struct ServiceModel;

/// An open document: a product with a view of it in space, pages, and the annotations on them. In a file it is a package
/// with "document.xml", the meshes of the product below "product/", the pictures and shapes of symbols below "Symbols/" and
/// "library.xml", the entries of the symbol library that it uses.
///
/// Use:
///
///     std::string error;
///     auto document = luhost::Document::Open(path, setup, error);
///     ... load document->GetLibraryText() into the session's symbol library ...
///     document->AttachAnnotations();
///     loader->WaitForLoads();
///     ... document->Save(path, error)
///
/// Pictures are unpacked into "Symbols" of the session's temporary folder. Each annotation is made by its class word
/// through the factory, reads its content, and is attached to its scene.
///
/// Ownership: owns its scenes, and these their annotations; the session's world is given a container and a tree, and its
/// application a service tree, for as long as the document is open. Closes them at its end. One document is open in a
/// session at a time.
///
/// Errors: a file that is no document is refused as a whole, with the reason. Content that is not understood is kept and
/// written again in its place: annotations of an unknown class, unknown properties, unknown elements and package entries.
/// GetUnknown tells which. What else could not be read well is told by GetProblems. A lack of memory is thrown as
/// std::bad_alloc: Create and Open leave nothing behind then, Save the file as it was; when AttachAnnotations throws, the
/// document does not show all that is in the file and is to be closed.
///
/// Threads: belongs to the host thread.
class LUHOST_API Document
{
public:
    struct Setup {
        /// Makes an annotation by its class word; null when it knows none.
        std::function<du::SmartPtr<du::RefCounted>(const std::string& classWord)> createAnnotation;
        std::shared_ptr<const PackageFormat> packages;
    };

    struct PageSize {
        double width = 210.0;  ///< in millimetres
        double height = 297.0; ///< in millimetres
    };

    /// A document with an empty view and no page.
    static std::unique_ptr<Document> Create(Setup setup);

    /// @return null, with the reason, when the file cannot be read or is no document
    static std::unique_ptr<Document> Open(const std::string& path, Setup setup, std::string& error);

    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    /// The scene of the product, a luk::illustration::Illustration3dScene; its view 0 is a luk::ShapeView with the
    /// document's camera. What its shape instances are set to is saved: location, visibility, color, transparency.
    const du::SmartPtr<luk::Scene>& GetScene() const noexcept;
    const du::SmartPtr<luk::ShapeScene>& GetShapeScene() const noexcept;

    /// Never null; a document without a product has a root that uses nothing.
    const du::SmartPtr<luk::Structure>& GetStructure() const noexcept;
    /// Puts a product in the place of the one that is there. Symbols stay; what a part was set to in the view, and its node
    /// of the service tree, pass to the part that now has its id path.
    /// @return false, with the reason and nothing changed, for a model that is not sound or has the id of a symbol
    bool SetProduct(const ProductModel& model, std::string& problem);
    /// The service tree, with the parts that its nodes name, whether they are there or not.
    ServiceModel GetService() const;
    bool SetService(const ServiceModel& model, std::string& problem);

    dg::Camera3D GetCamera() const;
    void SetCamera(const dg::Camera3D& camera);

    std::size_t GetPageCount() const noexcept;
    const du::SmartPtr<luk::illustration2d::Scene2D>& GetPage(std::size_t index) const;
    /// @return the index of the new page
    std::size_t AddPage(const PageSize& size);

    /// The library entries that the document brought along, in the format of a symbol library; empty when none.
    const std::string& GetLibraryText() const noexcept;
    void SetLibraryText(std::string text);

    /// Ids of the library entries that annotations are bound to, in order of first use: what library.xml has to hold.
    /// Asks every annotation for its content.
    std::vector<std::string> GetUsedTemplateIds() const;

    /// Is shown the saved content of an annotation, and the id of the library entry that it is bound to, if any.
    using LookAtSaved = std::function<void(const du::Symbol& idPath, const luk::SerializedContentElement& content,
                                           const std::string& templateId)>;
    /// Goes through the annotations that have not been made: before AttachAnnotations what the file says, as it says it.
    void ForEachUnmade(const LookAtSaved& look) const;

    /// Makes the annotations of the file and attaches them. Template indices in the file count the ids listed there; they
    /// are resolved by id in the session's collection, so that the library must be loaded before. Once, after Open.
    void AttachAnnotations();

    /// Puts a new annotation into a scene of this document and attaches it; on a page also its 2D element is made.
    /// @return false when it was refused
    bool AddAnnotation(const du::SmartPtr<luk::Annotation>& annotation, const du::SmartPtr<luk::Scene>& scene);
    /// Detaches it and lets go of it. @return false when it is not of this document
    bool RemoveAnnotation(const du::SmartPtr<luk::Annotation>& annotation);
    /// The same for many, in one pass over what is on their pages. @return how many were of this document
    std::size_t RemoveAnnotations(const std::vector<du::SmartPtr<luk::Annotation>>& annotations);

    /// Those of the view, then those of each page, in the order in which they are drawn.
    std::vector<du::SmartPtr<luk::Annotation>> GetAnnotations() const;
    /// An annotation is addressed by its id path, which the document gives to each that has none and never twice.
    du::SmartPtr<luk::Annotation> FindAnnotation(const std::string& idPath) const;
    /// Index of the page that an annotation is on; -1 for the view.
    int GetPageOf(const luk::Annotation& annotation) const;

    /// Annotations of the file that nobody could make.
    std::size_t GetUnknownAnnotationCount() const noexcept;

    const std::vector<std::string>& GetProblems() const noexcept;

    /// False when a picture or shape of the package could not be put into the temporary folder, which may be full: a Save keeps
    /// it, and what is drawn or taken from the document lacks it.
    bool HasAllFiles() const noexcept;

    /// Something in the file that this program does not know, or cannot read.
    struct Unknown {
        std::string kind;   ///< "attribute", "element", "entry", "annotation", "value", or the type of a property
        std::string name;   ///< its name or key, shortened; the class word of an annotation; of a value what is wrong
        std::string holder; ///< name of the element that holds it; empty for properties
        std::string annotation; ///< id path of the annotation that holds it; empty for none
        std::string where;      ///< the first place, in words; empty where there is nothing to add
        std::string expected;   ///< the type that the annotation has for this key; see FindExpectedTypes
        bool isKept = true;     ///< whether the next Save writes it again
        std::size_t count = 1;
    };
    /// One for each kind, name, holder and annotation, after AttachAnnotations. As much as somebody may want to read.
    const std::vector<Unknown>& GetUnknown() const noexcept;
    /// Asks the annotations that hold some of it for their content, and so for the types that they know their keys by.
    void FindExpectedTypes();
    /// How often there is more that is not listed.
    std::size_t GetUnlistedUnknownCount() const noexcept;

    /// Packs what the document now is: pictures that some annotation names, and nothing twice. The same content gives the
    /// same bytes.
    bool Save(const std::string& path, std::string& error) const;

private:
    explicit Document(Setup setup);

    class Content;
    std::unique_ptr<Content> m_content;
};

} // namespace luhost
