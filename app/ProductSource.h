#pragma once

#include <string>
#include <string_view>

namespace CLI
{
class App;
class Option;
} // namespace CLI

namespace lusym
{

class DocumentSource;

/// A product that a document is given, and how it is read.
struct ProductOptions {
    std::string model; ///< empty for none
    std::string unit;  ///< of the lengths in the model; empty for what it says itself
    std::string service;
};

/// The options --unit and --service, which need the model.
void AddProductOptions(CLI::App& verb, ProductOptions& options, CLI::Option* model);

/// Formats that are read, for help.
inline constexpr std::string_view kModelFormats = "glTF, GLB, OBJ, STL, PLY, 3MF and DAE";

/// Reads the model, and puts it and its service tree into the document.
/// @return false when something cannot be read, which is told; the document is then as it was
bool PutProduct(const ProductOptions& options, DocumentSource& source);

/// Turns the camera to the product from its front, right and top, so that all of it is seen. Without a product it stays.
void FitCamera(DocumentSource& source);

} // namespace lusym
