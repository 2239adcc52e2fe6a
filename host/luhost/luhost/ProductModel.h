#pragma once

#include <dg/Location.h>
#include <du/SmartPtr.h>
#include <luk/Mesh.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace luk
{
class ComponentInstance;
class ComponentNode;
class Structure;
} // namespace luk

namespace luhost
{

/// A product as plain data: what an importer makes, and what a document keeps. Lengths are in millimetres.
///
/// Components stand in an order in which each comes after all that it uses; the last one is the root, which has no mesh of
/// its own, since a part is addressed below it. A component that is used several times is there once, and so is a mesh.
struct LUHOST_API ProductModel {
    /// Occurrences of all components, those below others included.
    static constexpr std::size_t kMaxInstances = 2'000'000;
    /// Components one inside the other.
    static constexpr std::size_t kMaxDepth = 200;
    /// Texts of all id paths together.
    static constexpr std::size_t kMaxPathBytes = std::size_t{1} << 30;
    /// Beyond it single precision has no millimetres left.
    static constexpr double kMaxCoordinate = 1.0e9;

    struct Use {
        std::string id;          ///< unique in its component, not empty, without '/', not as that of a symbol begins
        std::size_t component{}; ///< index of the component that is used, below the index of the one that uses it
        dg::Location location = dg::Location::IDENTITY;
    };

    struct Component {
        std::string name;
        du::SmartPtr<luk::Mesh> mesh; ///< null for an assembly
        std::vector<Use> uses;
    };

    std::vector<Component> components;
};

/// Checks what the comments above promise: every component is used, no number is beyond its bound, no placement flattens.
/// @param[out] problem what is wrong, in words
///
/// Cost: linear in the model as it is written, however often its components occur.
LUHOST_API bool CheckProductModel(const ProductModel& model, std::string& problem);

/// Whether something can be placed there. @param[out] problem such as "it flattens"
LUHOST_API bool CheckProductLocation(const dg::Location& location, std::string& problem);

/// Whether indices, runs and numbers of a mesh are sound.
LUHOST_API bool CheckProductMesh(const luk::Mesh& mesh, std::string& problem);

/// @return null for a model that CheckProductModel refuses, and for one without components
LUHOST_API du::SmartPtr<luk::Structure> MakeStructure(const ProductModel& model);

/// Says which uses in the root are symbols although their ids do not begin with the prefix of symbols. May be empty.
using IsOddSymbol = std::function<bool(const luk::ComponentInstance& use)>;

/// Puts the product below the root of a structure, which trees follow, in the place of the one that is there. Symbols stay.
/// @param[out] nodes the components of the structure, in the order of the model; may be null
/// @return false, with nothing changed, for a model that CheckProductModel refuses, and for one with the id of a symbol
LUHOST_API bool ReplaceProduct(luk::Structure& structure, const ProductModel& model, std::string& problem,
                               std::vector<du::SmartPtr<luk::ComponentNode>>* nodes = nullptr,
                               const IsOddSymbol& isOddSymbol = {});

/// The product of a structure without the symbols in it: uses whose ids begin with the prefix of symbols are left out. A
/// structure whose root uses nothing else has a model with this one component.
/// @param[out] nodes as with ReplaceProduct
LUHOST_API ProductModel ModelOf(const luk::Structure& structure,
                                std::vector<du::SmartPtr<luk::ComponentNode>>* nodes = nullptr,
                                const IsOddSymbol& isOddSymbol = {});

} // namespace luhost
