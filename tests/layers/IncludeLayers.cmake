# Fails when a source folder includes a header of a folder above it in the layer order: each
# folder may include its own headers and those of the folders before it. disc builds on burn's
# vocabulary (error codes, media and project types, settings); ui and cli sit beside each other.
# Run as: cmake -DSOURCE_DIR=<src> -P IncludeLayers.cmake
set(layers jobs platform sound codecs tags restore devices play record burn disc drives app
    "ui cli")

set(rank 0)
foreach(layer IN LISTS layers)
  string(REPLACE " " ";" folders "${layer}")
  foreach(folder IN LISTS folders)
    set(rank_${folder} ${rank})
  endforeach()
  math(EXPR rank "${rank} + 1")
endforeach()

set(violations "")
file(GLOB_RECURSE sources RELATIVE ${SOURCE_DIR} ${SOURCE_DIR}/*.h ${SOURCE_DIR}/*.cpp)
foreach(source IN LISTS sources)
  string(REGEX MATCH "^[^/]+" folder "${source}")
  if(NOT DEFINED rank_${folder})
    string(APPEND violations "  ${source}: folder ${folder} has no place in the layer order\n")
    continue()
  endif()
  file(STRINGS ${SOURCE_DIR}/${source} includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"[^/\"]+/")
  foreach(line IN LISTS includes)
    string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*\"([^/\"]+)/.*" "\\1" target "${line}")
    if(NOT DEFINED rank_${target})
      continue()
    endif()
    if(NOT target STREQUAL folder AND NOT rank_${target} LESS rank_${folder})
      string(APPEND violations "  ${source} includes ${target}/\n")
    endif()
  endforeach()
endforeach()

if(violations)
  message(FATAL_ERROR "Headers included from a higher layer:\n${violations}")
endif()
