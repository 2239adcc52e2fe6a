#pragma once

#include <luhost/ProductModel.h>

#include <string>
#include <string_view>

namespace luhost::io
{

/// What the process that reads a model tells the one that started it: a product, or why there is none. Numbers are little
/// endian, meshes are in the format of documents.
class ProductStream
{
public:
    static std::string FromModel(const ProductModel& model);
    static std::string FromProblem(std::string_view problem);

    /// Trusts nothing; the model is sound as CheckProductModel means it.
    /// @return false, with the reason, when there is no product
    static bool Read(std::string_view bytes, ProductModel& model, std::string& problem);

    ProductStream() = delete;
};

} // namespace luhost::io
