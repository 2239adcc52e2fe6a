#pragma once

#include <dg/DPoint3D.h>
#include <luhost/render/Drawing.h>

#include <functional>
#include <string>
#include <vector>

namespace dg
{
class Camera3D;
}

namespace luk
{
class Annotation;
class Scene;
} // namespace luk

namespace luk::illustration2d
{
class Document2D;
}

namespace luhost::render
{

/// Words that go with an annotation in space, whose stamp has none of its own.
struct Words {
    std::string id;
    std::string title;
    std::string description;
    std::string link = {}; ///< where it leads to
};
using WordsOf = std::function<Words(const luk::Annotation&)>;

/// The page as it is: visible nodes in drawing order, lines below stamps, in millimetres.
Drawing DrawPage(const luk::illustration2d::Document2D& page);

/// The stamps of a scene seen through a camera, in pixels of its viewport: visible markups by layer, then in the order of
/// their annotations in the scene's set. Billboards keep facing the viewer at the size that they have at their distance; a
/// stamp that appears nowhere is left out.
/// @param wordsOf may be empty
Drawing DrawView(const luk::Scene& scene, const dg::Camera3D& camera, const WordsOf& wordsOf);

/// Corners of the same stamps in space, for a camera that is to show them whole. Those on the screen have none.
std::vector<dg::DPoint3D> StampCorners(const luk::Scene& scene, const dg::Camera3D& camera);

} // namespace luhost::render
