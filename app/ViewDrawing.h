#pragma once

#include <luhost/render/SceneDrawing.h>
#include <luhost/render/ViewCameras.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace luhost
{
class Document;
}

namespace lusym
{

/// One picture of the view of a document.
struct ViewPicture {
    /// Which symbols are hidden by what stands before them. The others are always seen.
    enum class Covering {
        None,
        Shapes, ///< those that are shapes; pictures never
        All
    };

    std::optional<luhost::render::StandardView> view; ///< none for the saved camera
    luhost::render::UpAxis up = luhost::render::UpAxis::Y;
    bool isFitted = false; ///< the saved camera too; the others are always
    int pixelWidth = 0;    ///< 0 when it follows
    int pixelHeight = 0;   ///< the same
    luhost::render::SceneDrawingOptions look;
    Covering covering = Covering::Shapes;
    bool hasPictures = true; ///< whether symbols that are pictures are drawn; shapes are, as parts are
};

/// What the view of a document shows, ready to be drawn from any number of sides: the product, symbols that are shapes, and
/// over them symbols that are pictures.
///
/// Use: make one when the document is as it is to be drawn, its parts hidden and moved; Draw.
///
/// Threads: belongs to the host thread, but works with several. None of these takes a signal.
///
/// Cost: the first picture also pays for the preparing of the product.
class ViewDrawing
{
public:
    /// @param document has to outlive this
    /// @param isSameEverywhere whether the drawings are the same to the last bit on every machine, which takes longer
    ViewDrawing(const luhost::Document& document, bool isSameEverywhere);
    ~ViewDrawing();
    ViewDrawing(const ViewDrawing&) = delete;
    ViewDrawing& operator=(const ViewDrawing&) = delete;

    /// Whether anything in space can be seen: parts or symbols that are shapes.
    bool HasShapes() const { return !m_geometry.shapes.empty(); }
    /// "/a/b: its shape is not loaded": what is left out.
    const std::vector<std::string>& GetProblems() const { return m_geometry.problems; }

    /// The camera through which a picture is seen, with the size of the picture as its viewport.
    dg::Camera3D CameraFor(const ViewPicture& picture) const;

    /// @param[out] drawing in pixels of that viewport, without a background
    /// @return false with the reason
    bool Draw(const ViewPicture& picture, luhost::render::Drawing& drawing, std::string& error);

private:
    bool DrawShapes(const ViewPicture& picture, const dg::Camera3D& camera, luhost::render::Drawing& drawing,
                    std::string& error);
    void NameSymbols(luhost::render::Drawing& drawing) const;
    void AddPictures(const dg::Camera3D& camera, luhost::render::Drawing& drawing) const;
    bool CoverPictures(const ViewPicture& picture, const dg::Camera3D& camera, luhost::render::Drawing& drawing,
                       std::string& error);
    const luhost::render::PreparedScene* Prepare(std::string& error);
    bool HasSymbols() const;

    const luhost::Document& m_document;
    luhost::render::PreparedScene::Options m_options;
    luhost::render::SceneGeometry m_geometry;
    std::unique_ptr<luhost::render::PreparedScene> m_scene; ///< null until it is needed
};

} // namespace lusym
