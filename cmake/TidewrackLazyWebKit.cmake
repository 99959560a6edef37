# WebKitGTK is as large as everything else that the window links, and a library without HTML mail never calls it:
# bound at the start, the window takes 1.9 times as long as an empty one to stand ready, without it 1.4 times. So the program links a stand-in: for each function of
# the engine that tidewrack_ui calls, a jump through a table that is filled when the engine is first wanted
# (ui/web_library.h). The list is read from the compiled objects, so it is always the one that is needed.
#
# tidewrack_link_webkit(TARGET LATE|DIRECT): gives an executable the engine one way or the other. Where no jump
# is known for the processor, LATE is DIRECT.
function(tidewrack_link_webkit target way)
  if(way STREQUAL "DIRECT" OR NOT CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|aarch64)$")
    target_link_libraries(${target} PRIVATE PkgConfig::WEBKIT)
    return()
  endif()
  if(NOT TARGET tidewrack_webkit_calls)
    set(calls "${CMAKE_BINARY_DIR}/webkit_calls.c")
    add_custom_command(
      OUTPUT "${calls}"
      COMMAND "${CMAKE_SOURCE_DIR}/cmake/webkit-calls" "${CMAKE_NM}" $<TARGET_FILE:tidewrack_ui> "${calls}"
      DEPENDS tidewrack_ui "${CMAKE_SOURCE_DIR}/cmake/webkit-calls" VERBATIM)
    add_custom_target(tidewrack_webkit_calls DEPENDS "${calls}")
  endif()
  target_sources(${target} PRIVATE "${CMAKE_BINARY_DIR}/webkit_calls.c")
  set_source_files_properties("${CMAKE_BINARY_DIR}/webkit_calls.c" PROPERTIES GENERATED ON)
  add_dependencies(${target} tidewrack_webkit_calls)
endfunction()
