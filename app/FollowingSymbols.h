#pragma once

#include "ExitCode.h"

#include <dg/DPoint3D.h>
#include <du/SmartPtr.h>

#include <string>
#include <vector>

namespace luannotations
{
class SymbolAnnotation;
}

namespace lusym
{

class DocumentSource;

/// Tells which symbols went along with what a verb did to parts.
///
/// Use: make it before the verb changes anything; Finish after its loads have arrived, and before it saves.
class FollowingSymbols
{
public:
    explicit FollowingSymbols(DocumentSource& source);
    ~FollowingSymbols();

    /// Settles the symbols that have moved.
    void Finish();
    /// One line on stdout for each symbol that went along; on stderr where the document itself goes to stdout.
    ExitCode Put(const std::string& output) const;

private:
    struct Before {
        du::SmartPtr<luannotations::SymbolAnnotation> symbol;
        dg::DPoint3D position;
        bool isVisible;
    };

    void CarryAlong();

    DocumentSource& m_source;
    std::vector<Before> m_before;
    std::string m_report;
};

} // namespace lusym
