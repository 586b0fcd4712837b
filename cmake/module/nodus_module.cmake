# For who builds a module of one's own, besides the target nodus::module:
#
#   nodus_add_module(NAME CATALOGUE file.json SOURCES file.cpp... [ROWS file.txt...])
#
# makes libNAME.so with NAME.json beside it in the build folder, and
#   NAME_module     the target of the library
#   NAME_described  the same sources, compiled so that every entry point tells its ports
#   NAME_reference  NAME.html in the build folder, the node reference
# Sources include "kernels.h", which declares the entry points of the catalogue; the records that
# register them are compiled in. Where testing is enabled, the test NAME.rows calls the kernels on ROWS
# and compares their ports with the catalogue's, NAME.check is nodus check. Both want the command nodus,
# whose path is in NODUS.
include(${CMAKE_CURRENT_LIST_DIR}/kernel_list.cmake)
set(nodus_module_dir ${CMAKE_CURRENT_LIST_DIR})

function(nodus_add_module name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "CATALOGUE" "SOURCES;ROWS")
  if(arg_UNPARSED_ARGUMENTS OR NOT arg_CATALOGUE OR NOT arg_SOURCES)
    message(FATAL_ERROR "nodus_add_module wants NAME CATALOGUE file.json SOURCES file.cpp... [ROWS file.txt...]")
  endif()
  cmake_path(ABSOLUTE_PATH arg_CATALOGUE)
  set(list ${CMAKE_CURRENT_BINARY_DIR}/${name}_kernels)
  nodus_kernel_list(${arg_CATALOGUE} ${list})

  add_library(${name}_module SHARED ${arg_SOURCES} ${nodus_module_dir}/registration.cpp)
  add_library(${name}_described SHARED ${arg_SOURCES})
  foreach(target ${name}_module ${name}_described)
    target_include_directories(${target} PRIVATE ${nodus_module_dir} ${list})
    target_link_libraries(${target} PRIVATE nodus::module)
    # An entry point that the catalogue does not know is a mistake; one without a body does not link.
    target_compile_options(${target} PRIVATE
      $<$<CXX_COMPILER_ID:GNU>:-Werror=missing-declarations>
      $<$<CXX_COMPILER_ID:Clang>:-Werror=missing-prototypes>)
    set_target_properties(${target} PROPERTIES
      CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON CXX_EXTENSIONS OFF
      LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
  endforeach()
  set_target_properties(${name}_module PROPERTIES OUTPUT_NAME ${name})
  target_link_options(${name}_module PRIVATE -Wl,-z,defs)
  target_compile_definitions(${name}_described PRIVATE NODUS_DESCRIBE_PORTS)
  configure_file(${arg_CATALOGUE} ${CMAKE_CURRENT_BINARY_DIR}/${name}.json COPYONLY)

  # The two are beside nodus, and installed with it.
  if(EXISTS ${nodusmath_REFERENCE_PROGRAM})
    add_custom_target(${name}_reference
      COMMAND ${nodusmath_REFERENCE_PROGRAM} $<TARGET_FILE:${name}_module> ${nodusmath_REFERENCE_PAGE}
              ${CMAKE_CURRENT_BINARY_DIR}/${name}.html
      DEPENDS ${name}_module
      COMMENT "Writing ${name}.html"
      VERBATIM)
  endif()
  find_program(NODUS nodus HINTS ${nodusmath_BIN_DIR} NO_DEFAULT_PATH DOC "The command nodus")
  if(NODUS)
    set(rows "")
    foreach(file IN LISTS arg_ROWS)
      cmake_path(ABSOLUTE_PATH file)
      list(APPEND rows ${file})
    endforeach()
    if(rows)
      add_test(NAME ${name}.rows COMMAND ${NODUS} --module $<TARGET_FILE:${name}_module>
        test --ports $<TARGET_FILE:${name}_described> ${rows})
    endif()
    add_test(NAME ${name}.check COMMAND ${NODUS} check $<TARGET_FILE:${name}_module>)
  else()
    message(WARNING "nodus is not among the installed programs (Debian: nodus-tools): ${name} is not tested")
  endif()
endfunction()
