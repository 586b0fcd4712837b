# Copies the WebAssembly files of the page where they are, for a build that wants to know whether they changed;
# empty ones stand for those that are not there.
# usage: cmake -DFROM=FOLDER -DTO=FOLDER -P web_files.cmake
foreach(file nodus_kernels.wasm nodus_graphs.wasm)
  set(size 1)
  if(EXISTS ${TO}/${file})
    file(SIZE ${TO}/${file} size)
  endif()
  if(EXISTS ${FROM}/nodus_kernels.wasm AND EXISTS ${FROM}/nodus_graphs.wasm)
    file(COPY ${FROM}/${file} DESTINATION ${TO})
  elseif(size GREATER 0)
    file(WRITE ${TO}/${file} "")
  endif()
endforeach()
