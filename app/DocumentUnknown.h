#pragma once

#include "DocumentFinding.h"

#include <luhost/Document.h>

#include <string>
#include <vector>

namespace lusym
{

class DocumentSource;

/// What could not be read of a document and of its own entries, in words: what is about a symbol begins with its id. Beside
/// it there is what is not known and kept.
std::vector<std::string> ProblemsOf(DocumentSource& source);

/// What is not known in a document, and what does not have the type that it should have.
std::vector<DocumentFinding> FindUnknown(const luhost::Document& document);

} // namespace lusym
