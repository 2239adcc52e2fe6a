# The page of `lusym library gallery`; included after the target lusym_app is made.
include(${CMAKE_CURRENT_LIST_DIR}/EmbedText.cmake)

lusym_embed_text(lusym_app app/GalleryAssets.h lusym kGallery
  ${CMAKE_CURRENT_LIST_DIR}/gallery/page.html
  ${CMAKE_CURRENT_LIST_DIR}/gallery/page.css
  ${CMAKE_CURRENT_LIST_DIR}/gallery/page.js)
target_sources(lusym_app PRIVATE
  ${CMAKE_CURRENT_LIST_DIR}/GalleryPage.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ImageData.cpp)
