# tarnwick_program(TARGET DESCRIPTION)
#
# What a system shows of a program, besides its name: on Windows the icon and the version, which lie in
# the program itself, with how the system is to treat it.
function(tarnwick_program target description)
  if(NOT WIN32)
    return()
  endif()
  set(icon ${CMAKE_SOURCE_DIR}/packaging/icons/org.tarnwick.Tarnwick.ico)
  set(manifest ${CMAKE_SOURCE_DIR}/packaging/windows/program.manifest)
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  configure_file(${CMAKE_SOURCE_DIR}/packaging/windows/program.rc.in ${resource} @ONLY)
  target_sources(${target} PRIVATE ${resource})
  set_source_files_properties(${resource} PROPERTIES OBJECT_DEPENDS "${icon};${manifest}")
endfunction()
