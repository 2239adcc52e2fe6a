#pragma once

#include <dg/Camera3D.h>
#include <luhost/render/ViewCameras.h>
#include <luloader/ImageDecoder.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace luhost::io
{
class ModelReader;
}

namespace luhost::render
{
class PngSeries;
struct PreparedScene;
} // namespace luhost::render

namespace lusym
{

/// Sides in pixels: that of the gallery, and that of the dialog.
inline constexpr std::array<int, 2> kThumbnailSides{64, 192};

/// How a picture is shown by an entry.
struct PictureLook {
    int quarterTurns = 0; ///< clockwise; flips come after them
    bool isFlippedHorizontally = false;
    bool isFlippedVertically = false;
};

/// How a shape is shown by an entry.
struct ShapeLook {
    std::optional<dg::Camera3D> camera; ///< of the entry; its viewport does not matter
    luhost::render::UpAxis up = luhost::render::UpAxis::Z;
};

/// A thumbnail as a PNG file, or why there is none.
struct ThumbnailPicture {
    std::string png;
    std::string problem;
    std::string remark; ///< what is shown otherwise than was asked for
};

using PictureDecoders = std::vector<std::shared_ptr<const luloader::ImageDecoder>>;

/// Draws pictures in their proportions, vectors as large as fits, pixels never enlarged.
///
/// Threads: each object one at a time, any number of objects.
class PictureThumbnails
{
public:
    /// @param bytes of the picture's file
    PictureThumbnails(std::string_view bytes, const PictureLook& look, const PictureDecoders& decoders);
    ~PictureThumbnails();
    PictureThumbnails(const PictureThumbnails&) = delete;
    PictureThumbnails& operator=(const PictureThumbnails&) = delete;

    ThumbnailPicture Draw(int side) const;

private:
    PictureLook m_look;
    du::SmartPtr<luk::ImageData> m_picture;
    std::unique_ptr<luhost::render::PngSeries> m_pngs;
    std::string m_problem;
};

/// Draws shapes, shaded and with lines, through the entry's camera where that shows something of them; else the whole shape
/// from the front, the right and above.
///
/// Threads: as PictureThumbnails.
class ShapeThumbnails
{
public:
    ShapeThumbnails(const std::string& path, const ShapeLook& look, const luhost::io::ModelReader& reader);
    ~ShapeThumbnails();
    ShapeThumbnails(const ShapeThumbnails&) = delete;
    ShapeThumbnails& operator=(const ShapeThumbnails&) = delete;

    ThumbnailPicture Draw(int side) const;

private:
    ShapeLook m_look;
    std::unique_ptr<luhost::render::PreparedScene> m_scene;
    std::string m_problem;
};

} // namespace lusym
