#pragma once

#include "AttachOrder.h"

#include <dg/Camera3D.h>
#include <du/Symbol.h>
#include <du/SymbolMap.h>
#include <luhost/Document.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace dg
{
class XmlElem;
}

namespace luk
{
class SerializedContentElement;
}

namespace luhost
{

class PageDrawing;

/// What could not be read well, and what is not known; no more of either than somebody may want to read.
class DocumentProblems
{
public:
    using Unknown = Document::Unknown;

    /// The element that holds something, and where it is: "page 2", or "part \"/bolt-1\"".
    struct Holder {
        std::string_view element;
        std::string_view noun = {};
        std::size_t number = 0; ///< 0 for none
        std::string_view name = {};
    };

    void Add(std::string problem);
    const std::vector<std::string>& Get() const noexcept { return m_problems; }

    /// Counts it with those before of the same kind, name, holder and annotation.
    /// @return its place in the list; kNotListed when that is full
    std::size_t AddUnknown(Unknown unknown);
    /// All that a text of kept XML holds at its top: further attributes, or one element.
    void AddUnknown(std::string_view xml, const Holder& holder, const std::string& annotation = {});

    /// What others have collected, which is theirs no longer.
    void Take(DocumentProblems& others);

    std::vector<Unknown>& GetUnknown() noexcept { return m_unknown; }
    const std::vector<Unknown>& GetUnknown() const noexcept { return m_unknown; }
    std::size_t CountUnlisted() const noexcept { return m_unlisted; }

    static constexpr std::size_t kNotListed = std::numeric_limits<std::size_t>::max();

private:
    std::vector<std::string> m_problems;
    std::vector<Unknown> m_unknown;
    std::unordered_map<std::string, std::size_t> m_places;
    std::size_t m_unlisted = 0;
};

/// As they are kept. Whoever asks tells them.
std::string UnknownAttributesOf(const dg::XmlElem& element, std::initializer_list<std::string_view> known);

/// XML of an element that this program does not understand: further attributes, and elements between those that it knows.
/// What it takes it tells, unless that has been told in words of its own.
class KeptXml
{
public:
    using Holder = DocumentProblems::Holder;

    void ReadAttributes(const dg::XmlElem& element, std::initializer_list<std::string_view> known, const Holder& holder,
                        DocumentProblems& problems);
    /// @param place number of known child elements that it stands behind
    void KeepUnknown(std::size_t place, const dg::XmlElem& element, const Holder& holder, DocumentProblems& problems);
    /// @return what is kept
    const std::string& KeepTold(std::size_t place, const dg::XmlElem& element);
    /// The attributes, and all that is in the element.
    void ReadWhole(const dg::XmlElem& element, std::initializer_list<std::string_view> known, const Holder& holder,
                   DocumentProblems& problems);

    const std::string& GetAttributes() const noexcept { return m_attributes; }
    void Write(std::string& out, std::size_t place, int depth) const;
    /// An element of which no other content is known. @param attributes that are known
    void WriteElement(std::string& out, std::string_view name, const std::string& attributes, int depth) const;

    void ForEachElement(const std::function<void(const std::string&)>& look) const;
    bool HasElements() const noexcept { return !m_elements.empty(); }
    bool IsEmpty() const noexcept { return m_attributes.empty() && m_elements.empty(); }

private:
    std::string m_attributes;
    std::multimap<std::size_t, std::string> m_elements;
};

/// The content of "document.xml", apart from the annotations that have been made from it.
struct DocumentFile {
    static constexpr std::string_view kEntryName = "document.xml";

    /// Something in a list of annotations. An annotation that has been made has given its content away.
    struct Slot {
        du::Symbol idPath;
        std::unique_ptr<luk::SerializedContentElement> content;
        std::string foreign; ///< an element that is no annotation

        /// The content, with its id path.
        void SetContent(std::unique_ptr<luk::SerializedContentElement> newContent);
    };

    /// The view, or a page.
    struct Part {
        KeptXml kept;
        KeptXml keptInList;
        std::vector<Slot> annotations;
        AttachOrder attachOrder;              ///< of all that are in the file
        Document::PageSize size;              ///< of a page
        std::shared_ptr<PageDrawing> drawing; ///< of a page; never null there
    };

    /// Writes the annotations of part 0, the view, or i + 1, page i. @return false to give up
    using WriteAnnotations = std::function<bool(std::size_t part, std::string& out, int depth)>;

    /// Is given the element of the product, which lives no longer than the call.
    using TakeProduct = std::function<void(const dg::XmlElem& product)>;

    /// @return false, with the reason, for a text that is no document
    bool Read(std::string xml, const TakeProduct& takeProduct, DocumentProblems& problems, std::string& error);

    /// @param product its element, indented by one level; empty for none
    /// @param templateIds looked at when all annotations are written
    bool Write(std::string& out, const std::string& product, const dg::Camera3D& camera,
               const WriteAnnotations& writeAnnotations, const std::vector<std::string>& templateIds) const;

    Part& GetPart(std::size_t part) { return part == 0 ? view : pages[part - 1]; }

    /// Gives the annotations id paths where they have none, or one that another has.
    void CompleteIdPaths(DocumentProblems& problems);
    /// Whether an annotation of the file that has not been made from its content, or not yet, has this id path.
    bool HasContentOf(const du::Symbol& idPath) const;
    /// An id path that no annotation has or had.
    template <class IsTaken>
    du::Symbol MakeIdPath(const IsTaken& isTaken)
    {
        for (;;) {
            const du::Symbol idPath(std::string("s").append(std::to_string(nextId++)));
            if (!isTaken(idPath)) {
                return idPath;
            }
        }
    }

    std::size_t textSize = 0; ///< when it was last read or written, as a guess for the next time
    std::string version = "1";
    std::uint64_t nextId = 1;
    std::uint64_t nextStructureId = 1;
    dg::Camera3D camera;
    Part view;
    std::vector<Part> pages;
    du::SymbolMap<const Slot*> slots; ///< of the annotations that have been read, by their id paths
    /// By position; none where the file names none.
    std::vector<std::optional<std::string>> templateIds;

    KeptXml kept;
    KeptXml keptInCamera;
    KeptXml keptInPages;
    KeptXml keptInTemplates;
    std::unordered_map<std::string, KeptXml> keptInTemplate;
};

} // namespace luhost
