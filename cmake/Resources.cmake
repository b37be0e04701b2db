# qv_add_resources(TARGET SCRIPT): carries the resources of a resource script in a library or program.
#
# On Windows the resource compiler does it. Elsewhere the script's lines `NUMBER TYPE "FILE"` become a table named
# Qv_resources, which a library of resources exports and this library keeps to itself.
if(WIN32)
  enable_language(RC)
else()
  enable_language(ASM)
endif()

function(qv_add_resources target script)
  cmake_path(ABSOLUTE_PATH script NORMALIZE)
  qv_resource_table("${script}" table inputs)
  if(WIN32)
    set(source "${script}")
  else()
    set(source "${CMAKE_CURRENT_BINARY_DIR}/${target}_resources.S")
    file(CONFIGURE OUTPUT "${source}" CONTENT "${table}" @ONLY)
  endif()
  target_sources(${target} PRIVATE "${source}")
  set_property(SOURCE "${source}" APPEND PROPERTY OBJECT_DEPENDS "${inputs}")
endfunction()

# The files that a resource script includes by `#include "FILE"`, and those that they include.
function(qv_included_files script files_variable)
  get_filename_component(folder "${script}" DIRECTORY)
  file(STRINGS "${script}" includes REGEX "^#include \"")
  set(files "")
  foreach(line IN LISTS includes)
    string(REGEX REPLACE "^#include \"([^\"]+)\".*$" "\\1" file "${line}")
    cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY "${folder}" NORMALIZE)
    qv_included_files("${file}" deeper)
    list(APPEND files "${file}" ${deeper})
  endforeach()
  set(${files_variable} ${files} PARENT_SCOPE)
endfunction()

# The assembler text of the table, and the files that it carries.
function(qv_resource_table script table_variable inputs_variable)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${script}")
  get_filename_component(folder "${script}" DIRECTORY)
  file(STRINGS "${script}" lines REGEX "^[0-9]+ [A-Z]+ \"[^\"]+\"$")
  qv_included_files("${script}" inputs)
  set(blobs "")
  set(entries "")
  foreach(line IN LISTS lines)
    string(REGEX MATCH "^([0-9]+) ([A-Z]+) \"([^\"]+)\"$" whole "${line}")
    set(name "${CMAKE_MATCH_2}_${CMAKE_MATCH_1}")
    list(APPEND inputs "${folder}/${CMAKE_MATCH_3}")
    string(APPEND blobs "  .balign 16\n${name}: .incbin \"${folder}/${CMAKE_MATCH_3}\"\n${name}_end:\n"
                        "${name}_type: .asciz \"${CMAKE_MATCH_2}\"\n")
    string(APPEND entries "  .quad ${name}_type, ${CMAKE_MATCH_1}, ${name}, ${name}_end - ${name}\n")
  endforeach()
  set(${table_variable} "  .section .rodata\n${blobs}\n  .section .data.rel.ro, \"aw\"\n  .balign 8\n"
      "  .globl Qv_resources\n  .type Qv_resources, @object\nQv_resources:\n${entries}  .quad 0, 0, 0, 0\n"
      "  .size Qv_resources, . - Qv_resources\n  .section .note.GNU-stack, \"\", @progbits\n")
  string(JOIN "" ${table_variable} ${${table_variable}})
  set(${table_variable} "${${table_variable}}" PARENT_SCOPE)
  set(${inputs_variable} "${inputs}" PARENT_SCOPE)
endfunction()
