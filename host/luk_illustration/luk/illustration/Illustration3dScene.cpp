#include <luk/illustration/Illustration3dScene.h>

namespace luk::illustration
{

Illustration3dScene::Illustration3dScene(const du::SmartPtr<luk::Tree>& tree, const du::SmartPtr<SbomTree>& sbomTree)
    : luk::ShapeScene(tree), m_sbomTree(sbomTree)
{
}

Illustration3dScene::~Illustration3dScene() = default;

} // namespace luk::illustration
