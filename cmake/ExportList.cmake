# qv_export_only(TARGET DEF): the target exports exactly the names of a module definition file, outside of Windows
# those above its line `; Windows only`.
function(qv_export_only target definition)
  cmake_path(ABSOLUTE_PATH definition)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${definition}")
  if(WIN32)
    target_sources(${target} PRIVATE "${definition}")
    return()
  endif()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${definition}")
  file(STRINGS "${definition}" names REGEX "^(    [A-Za-z_0-9]+|. Windows only)$")
  list(FIND names "; Windows only" end)
  list(SUBLIST names 0 ${end} names)
  list(TRANSFORM names STRIP)
  string(JOIN "; " names ${names})
  file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/${target}.map" CONTENT "{ global: ${names}; local: *; };\n" @ONLY)
  target_link_options(${target} PRIVATE "LINKER:--version-script=${CMAKE_CURRENT_BINARY_DIR}/${target}.map"
                      LINKER:--no-undefined)
endfunction()
