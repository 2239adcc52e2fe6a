# Builds for 64-bit Windows on Debian, with mingw-w64 and its POSIX threads.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Nothing of the system that builds may get in; its programs are what builds.
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Runs what was built, its tests above all.
find_program(WINE_PROGRAM wine64 PATHS /usr/lib/wine)
if(WINE_PROGRAM)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${WINE_PROGRAM})
endif()
