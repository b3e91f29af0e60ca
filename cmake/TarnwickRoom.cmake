# tarnwick_room(NAME [FOLDER folder] [SHOWS paths...] [USES targets...] [PRIVATE_USES targets...])
#
# A room is a static library tarnwick_NAME of the sources in src/NAME (or in FOLDER). Its headers
# are reached as "NAME/header.h" through an include folder that holds this room and nothing else, so
# a source file can include just its own room and the rooms that its target links: a wrong arrow
# between rooms does not compile. SHOWS are the folders and headers below src that are reached, where
# it is not the room's own folder whole.
#
# A source whose name ends in _posix or _windows is built on such a machine alone; what it defines the
# other's twin defines as well.
#
# Files whose names end in _window, _dialog, _view, _model, _actions (commands of a window) or _place
# (where it stands on the screen) are the room's windows. They become a library of their own,
# tarnwick_NAME_windows, made by tarnwick_windows(NAME [USES targets...]), so that the room itself
# never sees the window toolkit.

if(WIN32)
  set(TARNWICK_OTHER_MACHINES "_posix(_test)?\\.cpp$")
else()
  set(TARNWICK_OTHER_MACHINES "_windows(_test)?\\.cpp$")
endif()
set(TARNWICK_WINDOW_FILES "_(window|dialog|view|model|actions|place)\\.(cpp|h)$")

# Makes the include folder of a target: links to paths below src, and nothing else.
function(tarnwick_show target scope)
  set(root ${CMAKE_BINARY_DIR}/rooms/${target})
  file(REMOVE_RECURSE ${root})
  foreach(path ${ARGN})
    cmake_path(GET path PARENT_PATH folder)
    file(MAKE_DIRECTORY ${root}/${folder})
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/src/${path} ${root}/${path} COPY_ON_ERROR SYMBOLIC)
  endforeach()
  target_include_directories(${target} ${scope} ${root})
endfunction()

function(tarnwick_room name)
  cmake_parse_arguments(ARG "" "FOLDER" "SHOWS;USES;PRIVATE_USES" ${ARGN})
  if(NOT ARG_FOLDER)
    set(ARG_FOLDER ${name})
  endif()
  if(NOT ARG_SHOWS)
    set(ARG_SHOWS ${ARG_FOLDER})
  endif()
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${ARG_FOLDER}/*.cpp)
  list(FILTER sources EXCLUDE REGEX ${TARNWICK_WINDOW_FILES})
  list(FILTER sources EXCLUDE REGEX ${TARNWICK_OTHER_MACHINES})
  add_library(tarnwick_${name} STATIC ${sources})
  tarnwick_show(tarnwick_${name} PUBLIC ${ARG_SHOWS})
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
  list(FILTER sources INCLUDE REGEX ${TARNWICK_WINDOW_FILES})
  add_library(tarnwick_${name}_windows STATIC ${sources})
  set_target_properties(tarnwick_${name}_windows PROPERTIES AUTOMOC ON)
  target_link_libraries(tarnwick_${name}_windows PUBLIC tarnwick_${name} ${ARG_USES} Qt6::Widgets
                                                 PRIVATE tarnwick_settings)
endfunction()
