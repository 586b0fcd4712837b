# machine_headers(TARGET LIBRARY...): libraries of headers alone, from this machine's packages; they fit
# every processor, the rest of the machine's folder of headers does not.
function(machine_headers target)
  set(headers ${CMAKE_BINARY_DIR}/headers)
  file(MAKE_DIRECTORY ${headers})
  foreach(library ${ARGN})
    find_path(${library}_IN ${library} PATHS /usr/include REQUIRED
      NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    file(CREATE_LINK ${${library}_IN}/${library} ${headers}/${library} SYMBOLIC)
  endforeach()
  add_library(${target} INTERFACE)
  target_include_directories(${target} SYSTEM INTERFACE ${headers})
  target_compile_definitions(${target} INTERFACE FMT_HEADER_ONLY=1)
endfunction()
