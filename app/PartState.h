#pragma once

#include <du/SmartPtr.h>
#include <luk/ShapeInstance.h>

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace luhost
{
class Document;
}

namespace luk
{
class Instance;
}

namespace lusym
{

class DocumentSource;

/// The parts and assemblies of a document's product, each assembly before what is in it. Symbols are no parts.
std::vector<du::SmartPtr<luk::ShapeInstance>> PartsOf(const luhost::Document& document);

/// A part by its id path, in the product or in the service tree; the slash at its front may be missing.
/// @return null when there is none
du::SmartPtr<luk::ShapeInstance> FindPart(const luhost::Document& document, const std::string& path);

/// The parts that a command line names, as PartLookup finds them. Those that are not there are told.
std::vector<du::SmartPtr<luk::ShapeInstance>> FindParts(DocumentSource& source, const std::vector<std::string>& words);

std::string NameOf(const luk::ShapeInstance& part);
std::size_t TrianglesOf(const luk::ShapeInstance& part);
/// Of all shapes where they are shown, each as often as it is.
std::size_t TrianglesOf(const luhost::Document& document);

nlohmann::ordered_json PartAsJson(const luk::ShapeInstance& part);
/// "hidden", "moved", both, or nothing.
std::string PartMarks(const luk::ShapeInstance& part);

/// The product as nested parts; null without a product.
nlohmann::ordered_json ProductAsJson(const luhost::Document& document);
/// The same for people, each level indented; empty without a product.
std::string ProductAsText(const luhost::Document& document);
/// The service tree in the same two forms.
nlohmann::ordered_json ServiceAsJson(const luhost::Document& document);
std::string ServiceAsText(const luhost::Document& document);

} // namespace lusym
