# `cmake --install`: headers, libraries, program, examples, and a package file for find_package(lusymbols).
include(CMakePackageConfigHelpers)

# Headers that only the library they belong to may include.
file(STRINGS ${PROJECT_SOURCE_DIR}/cmake/private_headers.txt private_headers)
set(but_private)
foreach(header ${private_headers})
  list(APPEND but_private PATTERN ${header} EXCLUDE)
endforeach()

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/lusymbols)

install(TARGETS luhost lusymbols lusym EXPORT lusymbolsTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})

foreach(folder ${host_folders})
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/host/${folder}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/luhost
    FILES_MATCHING PATTERN "*.h" ${but_private})
endforeach()
foreach(folder plugin catalog xml annotations2d annotations3d)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${folder} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/lusymbols
    FILES_MATCHING PATTERN "*.h" ${but_private})
endforeach()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION ${CMAKE_INSTALL_DATADIR}/lusymbols/examples)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")

install(EXPORT lusymbolsTargets NAMESPACE lusymbols:: DESTINATION ${package_folder})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/lusymbolsConfig.cmake.in
  ${PROJECT_BINARY_DIR}/lusymbolsConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/lusymbolsConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/lusymbolsConfig.cmake
  ${PROJECT_BINARY_DIR}/lusymbolsConfigVersion.cmake
  DESTINATION ${package_folder})
