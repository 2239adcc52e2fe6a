#pragma once

#include "Finding.h"
#include "xml/SymbolTemplateLoader.h"

#include <du/SmartPtr.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/SymbolTemplate.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace du
{
class MessageTable;
}

namespace lusym
{

/// What an examination is told about the place of a document.
struct ExaminationOptions {
    using Origin = lusymbols::SymbolTemplateLoader::Origin;

    Origin origin = Origin::ORIGIN_USER;
    /// The document is going to be written as the delivered library.
    bool exportAsStandard = false;
    /// Null when there is none.
    std::shared_ptr<const du::MessageTable> messages;
    /// Asked with resolved urls; files are not looked for when it is empty.
    std::function<bool(const std::string&)> isFileReadable;
    /// Reads the document; a fresh one is made when it is null.
    du::SmartPtr<lusymbols::SymbolTemplateLoader> loader;
};

/// What the document says of an entry that the loader kept, beside what the entry itself knows.
struct KeptEntry {
    std::size_t line = 0;
    std::string writtenId;
    std::string tooltip;
};

struct DroppedEntry {
    std::size_t line = 0;
    std::string id;
    std::string name;
    std::size_t lineOfFirst = 0;
};

/// A document, what the loader made of it and what there is to say about it.
struct Examination {
    /// By line; those without a line first.
    std::vector<Finding> findings;
    /// Entries in the document, kept or not.
    std::size_t entryCount = 0;
    /// Whether the loader read the document as it is.
    bool isRead = false;
    /// Whether there is something in the lists below; true without isRead when sections were read one by one because
    /// their number was wrong.
    bool hasContent = false;

    du::SmartPtr<lusymbols::SymbolTemplateLoader> loader;
    std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>> templates;
    std::vector<du::SmartPtr<luk::illustration::CategoryInfo>> categories;
    /// One for each template.
    std::vector<KeptEntry> kept;
    std::vector<DroppedEntry> dropped;
};

/// Examines a library document: its bytes, its elements, and what the loader makes of it.
///
/// Use: `Examination result = ExamineLibrary(bytes, options);`. The entries are read in the course of it, from the same
/// tree, so that nothing can change in between. URLs resolve as the running session says; without a session they stay as
/// they are.
///
/// Errors: everything is a finding; no bytes are too bad for it.
///
/// Cost: linear in the document, the table of messages, and the files that have to be looked for.
Examination ExamineLibrary(std::string text, const ExaminationOptions& options);

} // namespace lusym
