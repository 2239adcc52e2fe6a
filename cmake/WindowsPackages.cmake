# What the build for Windows takes from Debian, which has no Windows libraries of these: the sources of pugixml and of
# GoogleTest, and headers that are all there is.
set(LUSYMBOLS_PUGIXML_SOURCE "" CACHE PATH "Unpacked source package of pugixml")
set(LUSYMBOLS_GTEST_SOURCE /usr/src/googletest CACHE PATH "Sources of GoogleTest")
set(LUSYMBOLS_HEADER_PACKAGES /usr/include CACHE PATH "Where the headers of CLI11 and nlohmann-json are")

if(NOT EXISTS ${LUSYMBOLS_PUGIXML_SOURCE}/src/pugixml.cpp)
  message(FATAL_ERROR "LUSYMBOLS_PUGIXML_SOURCE has to name the sources of pugixml; scripts/test_windows.sh fetches them")
endif()
add_library(pugixml STATIC ${LUSYMBOLS_PUGIXML_SOURCE}/src/pugixml.cpp)
target_include_directories(pugixml SYSTEM PUBLIC ${LUSYMBOLS_PUGIXML_SOURCE}/src)
add_library(pugixml::pugixml ALIAS pugixml)

if(LUSYMBOLS_BUILD_TESTS)
  set(BUILD_GMOCK OFF CACHE INTERNAL "")
  set(INSTALL_GTEST OFF CACHE INTERNAL "")
  add_subdirectory(${LUSYMBOLS_GTEST_SOURCE} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
endif()

# Only these: whatever else lies in that folder is of the system that builds.
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/headers)
foreach(headers CLI nlohmann)
  file(CREATE_LINK ${LUSYMBOLS_HEADER_PACKAGES}/${headers} ${PROJECT_BINARY_DIR}/headers/${headers} SYMBOLIC)
endforeach()
foreach(package CLI11::CLI11 nlohmann_json::nlohmann_json)
  add_library(${package} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${package} SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/headers)
endforeach()

# One run-time library for everything that is loaded into a process: objects, texts and dynamic casts cross the border.
set(runtime_libraries)
foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
    OUTPUT_VARIABLE found OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT IS_ABSOLUTE "${found}")
    message(FATAL_ERROR "the compiler has no ${name}")
  endif()
  list(APPEND runtime_libraries ${found})
endforeach()
file(COPY ${runtime_libraries} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
