#pragma once

#include <luk/illustration/SbomTree.h>
#include <luk/ShapeScene.h>

namespace luk::illustration
{

/// The scene of a product that has a service tree.
class LUHOST_API Illustration3dScene : public luk::ShapeScene
{
public:
    /// @param sbomTree may be null
    Illustration3dScene(const du::SmartPtr<luk::Tree>& tree, const du::SmartPtr<SbomTree>& sbomTree);
    ~Illustration3dScene() override;

    const du::SmartPtr<SbomTree>& GetSbomTree() const noexcept { return m_sbomTree; }

private:
    du::SmartPtr<SbomTree> m_sbomTree;
};

} // namespace luk::illustration
