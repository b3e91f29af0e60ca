# Language level, warnings, sanitizers and the compiler cache, for every target of the project.
# Code that is not ours (the database engine) is compiled with its own flags, see Engine.cmake.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# Programs lie in one folder, as they do when installed.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

find_program(TARNWICK_CCACHE ccache)
if(TARNWICK_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_C_COMPILER_LAUNCHER ${TARNWICK_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${TARNWICK_CCACHE})
endif()

add_library(tarnwick_settings INTERFACE)
target_compile_options(tarnwick_settings INTERFACE
  $<$<COMPILE_LANG_AND_ID:CXX,GNU,Clang>:-Wall -Wextra -Wshadow -Wnon-virtual-dtor -Werror>)

if(TARNWICK_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  if(TARNWICK_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
  endif()
endif()
