# What holds for every target of the project.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

# An installed program finds its libraries wherever the whole tree is moved to.
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}:$ORIGIN")

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

# Linked into every target of ours; never exported, since warnings are the builder's business.
add_library(project_defaults INTERFACE)
target_compile_options(project_defaults INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wsign-conversion
  -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual -Wformat=2 -Wimplicit-fallthrough)
# Where it optimises GCC 12 warns of what is not there: texts that overlap themselves (its bug 105651), vectors that give back
# what they do not own, and optional numbers that are read before they are set.
target_compile_options(project_defaults INTERFACE
  "$<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-restrict;-Wno-free-nonheap-object;-Wno-maybe-uninitialized>")
if(NOT WIN32)
  # Nobody puts functions in the place of ours at run time, so that calls may go straight to them: each way round costs places in
  # the processor's cache of instructions, of which opening a document has too few.
  target_compile_options(project_defaults INTERFACE
    "$<$<CONFIG:Release>:-fno-semantic-interposition;-fno-plt>")
  target_link_options(project_defaults INTERFACE
    "$<$<CONFIG:Release>:LINKER:-Bsymbolic-functions,-z,now>")
endif()
if(CMAKE_UNITY_BUILD)
  # The compiler takes a source that is compiled along with others for a header, whose classes must not hold what is private.
  target_compile_options(project_defaults INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()
if(WIN32)
  # The interface of Windows 10, without macros for what the standard library has.
  target_compile_definitions(project_defaults INTERFACE _WIN32_WINNT=0x0A00 WIN32_LEAN_AND_MEAN NOMINMAX)
endif()
if(LUSYMBOLS_BUILD_FUZZERS)
  target_compile_options(project_defaults INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(LUSYMBOLS_SANITIZE)
  target_compile_options(project_defaults INTERFACE
    -fsanitize=${LUSYMBOLS_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(project_defaults INTERFACE -fsanitize=${LUSYMBOLS_SANITIZE})
endif()
