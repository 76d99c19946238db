# The include check of the layers: a source of one layer may include headers of its own layer
# and of the layers below it, never of one above. Run at every configure, and as a test
# (cmake -DKRAIT_ROOT=<source dir> -P cmake/layers.cmake).

# Rank of each folder under src/; folders of equal rank form one layer.
set(KRAIT_LAYER_RANKS base=0 interval=1 solver=2 lang=3 hexpr=3 certify=4 driver=5 smt2=5 prove=5 companions=6)

function(krait_layer_rank folder out)
  set(rank -1)
  foreach(entry ${KRAIT_LAYER_RANKS})
    string(REPLACE "=" ";" pair "${entry}")
    list(GET pair 0 name)
    list(GET pair 1 value)
    if(name STREQUAL folder)
      set(rank ${value})
    endif()
  endforeach()
  set(${out} ${rank} PARENT_SCOPE)
endfunction()

# Fails (FATAL_ERROR) naming every include that runs upward.
function(krait_check_layers root)
  file(GLOB_RECURSE sources RELATIVE ${root}/src
       ${root}/src/*.cpp ${root}/src/*.hpp ${root}/src/*.y ${root}/src/*.lex)
  set(violations "")
  foreach(source ${sources})
    string(REGEX MATCH "^[^/]+" folder "${source}")
    krait_layer_rank(${folder} own)
    if(own EQUAL -1)
      message(FATAL_ERROR "src/${folder} belongs to no layer: add it to KRAIT_LAYER_RANKS in cmake/layers.cmake")
    endif()
    file(STRINGS ${root}/src/${source} includes REGEX "^[ \t]*#[ \t]*include[ \t]*\"[^/\"]+/")
    foreach(line ${includes})
      string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*\"([^/\"]+)/.*" "\\1" target "${line}")
      krait_layer_rank(${target} rank)
      if(rank GREATER own)
        string(APPEND violations "\n  src/${source} includes ${target}/ (a layer above ${folder}/)")
      endif()
    endforeach()
  endforeach()
  if(violations)
    message(FATAL_ERROR "Includes that run upward through the layers:${violations}")
  endif()
endfunction()

if(CMAKE_SCRIPT_MODE_FILE AND KRAIT_ROOT)
  krait_check_layers(${KRAIT_ROOT})
  message(STATUS "No include runs upward through the layers.")
endif()
