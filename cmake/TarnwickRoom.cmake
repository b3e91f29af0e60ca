# tarnwick_room(NAME [FOLDER folder] [USES targets...] [PRIVATE_USES targets...])
#
# A room is a static library tarnwick_NAME of the sources in src/NAME (or in FOLDER). Its headers
# are reached as "NAME/header.h" through an include folder that holds this room and nothing else, so
# a source file can include just its own room and the rooms that its target links: a wrong arrow
# between rooms does not compile.
#
# Files whose names end in _window, _dialog, _view or _model are the room's windows. They become a
# library of their own, tarnwick_NAME_windows, made by tarnwick_windows(NAME [USES targets...]), so
# that the room itself never sees the window toolkit.

set(TARNWICK_WINDOW_FILES "_(window|dialog|view|model)\\.cpp$")

function(tarnwick_room name)
  cmake_parse_arguments(ARG "" "FOLDER" "USES;PRIVATE_USES" ${ARGN})
  if(NOT ARG_FOLDER)
    set(ARG_FOLDER ${name})
  endif()
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${ARG_FOLDER}/*.cpp)
  list(FILTER sources EXCLUDE REGEX ${TARNWICK_WINDOW_FILES})
  add_library(tarnwick_${name} STATIC ${sources})
  if(ARG_FOLDER STREQUAL name)
    set(root ${CMAKE_BINARY_DIR}/rooms/${name})
    file(MAKE_DIRECTORY ${root})
    if(NOT EXISTS ${root}/${name})
      file(CREATE_LINK ${CMAKE_SOURCE_DIR}/src/${name} ${root}/${name} COPY_ON_ERROR SYMBOLIC)
    endif()
    target_include_directories(tarnwick_${name} PUBLIC ${root})
  endif()
  target_link_libraries(tarnwick_${name} PUBLIC ${ARG_USES} PRIVATE tarnwick_settings
                                                                    ${ARG_PRIVATE_USES})
endfunction()

function(tarnwick_windows name)
  cmake_parse_arguments(ARG "" "" "USES" ${ARGN})
  if(NOT TARNWICK_WINDOWS)
    return()
  endif()
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${name}/*.cpp
       ${CMAKE_SOURCE_DIR}/src/${name}/*.h)
  list(FILTER sources INCLUDE REGEX "_(window|dialog|view|model)\\.(cpp|h)$")
  add_library(tarnwick_${name}_windows STATIC ${sources})
  set_target_properties(tarnwick_${name}_windows PROPERTIES AUTOMOC ON)
  target_link_libraries(tarnwick_${name}_windows PUBLIC tarnwick_${name} ${ARG_USES} Qt6::Widgets
                                                 PRIVATE tarnwick_settings)
endfunction()
