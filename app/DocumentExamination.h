#pragma once

#include "DocumentFinding.h"
#include "ExitCode.h"

#include <cstddef>
#include <string>
#include <vector>

namespace lusym
{

class DocumentSource;

struct DocumentExamination {
    std::vector<DocumentFinding> findings;
    std::size_t symbolCount = 0;
};

/// Opens a document and looks at its pictures, its symbols, their entries, and the libraries of the options or, without
/// any, those that it records.
/// @return Done unless the document cannot be opened, or a library of the options cannot be read
ExitCode ExamineDocument(DocumentSource& source, const std::string& name, DocumentExamination& examination);

} // namespace lusym
