#pragma once

#include <string_view>

namespace lusym
{

/// The files of app/gallery/, put into the program when it is built.
extern const std::string_view kGalleryPageHtml;
extern const std::string_view kGalleryPageCss;
extern const std::string_view kGalleryPageJs;
extern const std::string_view kGalleryPageJsSha256;

} // namespace lusym
