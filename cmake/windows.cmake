# Toolchain: programs for 64-bit Windows, built on Debian with MinGW-w64 (posix threads). Libraries
# are those that packaging/windows/dependencies.sh has built; programs that the build runs itself are
# started by Wine.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

if(DEFINED ENV{TARNWICK_WINDOWS_DEPS})
  set(windows_root $ENV{TARNWICK_WINDOWS_DEPS}/root)
else()
  set(windows_root ${CMAKE_CURRENT_LIST_DIR}/../build/windows-deps/root)
endif()
get_filename_component(windows_root ${windows_root} ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH ${windows_root} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../packaging/windows/wine.sh)

# Qt's own tools run on this machine and are Debian's. Without Qt there are the programs of the console.
set(QT_HOST_PATH /usr)
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/x86_64-linux-gnu/cmake)
if(NOT EXISTS ${windows_root}/lib/cmake/Qt6Widgets)
  set(TARNWICK_WINDOWS OFF)
endif()

# Sizes of files need 64 bits also in the C library; the libraries are linked into the programs.
add_compile_definitions(_FILE_OFFSET_BITS=64 LIBXML_STATIC U_STATIC_IMPLEMENTATION
                        SODIUM_STATIC)
add_link_options(-static)
set(ENV{PKG_CONFIG_LIBDIR} ${windows_root}/lib/pkgconfig)
