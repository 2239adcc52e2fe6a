#pragma once

#include "annotations3d/SymbolAnnotation.h"

#include <luk/illustration/SbomTree.h>
#include <luk/Tree.h>

namespace luannotations
{

/// The trees in which a symbol looks for its parts, as they are now: made for one look at all of them.
///
/// A part is named by its path in the service tree of the application, in that of the scene, or in the engineering tree, and
/// is looked for in this order.
class LUSYMBOLS_LOCAL SymbolAnnotation::PartTrees
{
public:
    /// @param scene of the symbol; null when it is in none
    explicit PartTrees(const du::SmartPtr<luk::ShapeScene>& scene);

    du::SmartPtr<luk::illustration::SbomInstance> FindServiced(const du::Symbol& path) const;
    du::SmartPtr<luk::Instance> FindEngineered(const du::Symbol& path) const;
    /// Null as well for a node of a service tree that stands for no part.
    du::SmartPtr<luk::Instance> FindPart(const du::Symbol& path) const;
    bool HaveNode(const du::Symbol& path) const { return FindServiced(path) || FindEngineered(path); }

private:
    du::SmartPtr<luk::illustration::SbomTree> m_serviceTree;
    du::SmartPtr<luk::illustration::SbomTree> m_serviceTreeOfScene; ///< null when it is the same one
    du::SmartPtr<luk::Tree> m_tree;
};

} // namespace luannotations
