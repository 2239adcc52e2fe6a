#pragma once

#include "DocumentDrawing.h"
#include "ProductExplosion.h"
#include "ViewDrawing.h"

#include <optional>
#include <string>
#include <vector>

namespace lusym
{

enum class ExitCode : int;
class Progress;

/// One picture of a series.
struct PictureOrder {
    std::string output;
    int page = 0;         ///< from 1; 0 for the view
    std::string viewName; ///< for people
    ViewPicture view;     ///< where it is no page
};

/// What `render` was asked for.
struct SeriesOptions {
    std::string name;
    /// With "{page}", "{view}" and "{n}" for what tells one picture from the next.
    std::string output;
    PictureFormat format = PictureFormat::Png;
    std::optional<int> page;
    std::vector<std::string> views; ///< "saved", "iso" and so on
    ViewPicture view;               ///< what all views have in common
    dg::Color background{1.0F, 1.0F, 1.0F, 0.0F};
    double pixelsPerInch = 96.0;
    std::vector<std::string> hidden; ///< parts, as PartLookup finds them
    Explosion explosion;
};

/// "saved", and those that the renderer knows.
std::vector<std::string_view> ViewNames();

/// Whether the name of the output tells all pictures of the views apart. @return why not; empty when it does
std::string FaultOfOutput(const SeriesOptions& options);

/// Draws one picture or several of a document, each into a file of its own; a picture that fails does not keep the others
/// from being drawn.
ExitCode DrawSeries(const SeriesOptions& options, Progress& progress);

} // namespace lusym
