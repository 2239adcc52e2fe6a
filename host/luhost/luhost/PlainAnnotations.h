#pragma once

#include "AttachOrder.h"
#include "DocumentFile.h"

#include <string>
#include <string_view>
#include <vector>

namespace dg
{
class XmlElem;
}

namespace luhost
{

/// The annotations of a document that stand in its text as this program writes them. They are read from the text as it is,
/// and only the rest is to be parsed: parsing all takes longer than everything else that is done with the text.
///
/// Use: the rest has a mark, an element of its own, in the place of each run of annotations. Where the parser finds all of
/// them as children of lists of annotations, the rest and the runs say what the document says. Otherwise the document is to
/// be parsed whole: it is none, or what looks like annotations is part of a comment, say.
///
/// Threads: a long text is read in parts, on as many threads as the machine has processors. All have ended when ReadFrom
/// returns or throws.
///
/// Cost: linear.
class PlainAnnotations
{
public:
    struct Run {
        std::vector<DocumentFile::Slot> slots;
        AttachOrder attachOrder;
    };

    /// Finds none where the name of a mark stands in the text.
    static PlainAnnotations ReadFrom(std::string_view document);

    static bool IsMark(const dg::XmlElem& element) noexcept;

    /// The document without them.
    std::string& GetRest() noexcept { return m_rest; }
    /// In the order of their marks.
    std::vector<Run>& GetRuns() noexcept { return m_runs; }

private:
    std::string m_rest;
    std::vector<Run> m_runs;
};

} // namespace luhost
