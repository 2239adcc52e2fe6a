#pragma once

#include <du/SmartPtr.h>
#include <luk/illustration/CollectionItem.h>

#include <string>

namespace dg
{
class XmlElem;
}

namespace lusymbols
{

class LibraryRoots;
class PartslibraryCategoryItem;
class PartslibraryItem;

/// Strings that serve one entry after the other, so that reading a text costs no allocation but that of its field.
struct EntryScratch {
    /// A text of the document, and the key by which it was looked up where the element had one.
    struct LocalizedText {
        std::string text;
        std::string key;
    };

    std::string plain;
    LocalizedText localized;
    /// The title as read so far: it is set once all children are known, since it may fall back to the name.
    std::string title;
};

/// Makes catalog entries of the elements of a library document.
///
/// Use: internal to the loader; one reader for many elements.
///
/// Ownership: refers to the roots, which have to outlive it. The entries belong to the caller.
///
/// Threads and locks: each reader is used by one thread; several may work at once on the same document.
///
/// Errors: nothing but std::bad_alloc. Unknown children are skipped, a number that is none reads as 0.
class EntryReader
{
public:
    using Origin = luk::illustration::CollectionItem::Origin;

    EntryReader(Origin origin, const LibraryRoots& roots);

    /// Null for an element of any other name.
    du::SmartPtr<PartslibraryItem> ReadShape(const dg::XmlElem& element);
    du::SmartPtr<PartslibraryItem> ReadSymbol(const dg::XmlElem& element);

private:
    Origin m_origin;
    const LibraryRoots& m_roots;
    EntryScratch m_scratch;
};

void ReadCategory(const dg::XmlElem& element, PartslibraryCategoryItem& category);

} // namespace lusymbols
