# For projects that make atlases in their build.
#
#   mosaicer_add_atlases(<target> [ALL]
#     TEXTURES_ROOT <directory> DEFINITION <file> OUTPUT_ROOT <directory>
#     [SWITCHES <switch>...])
#
# Adds a target that makes all sets of a definition, those alone that changed, side by side. Relative paths begin at
# CMAKE_CURRENT_SOURCE_DIR, a relative OUTPUT_ROOT at CMAKE_CURRENT_BINARY_DIR. SWITCHES go to mosaicer: -draft, -b...
#
# The work is done by Ninja, over a plan that kst writes and that keeps itself up to date; the project's own generator
# may be any. The target is looked at in every build and costs little when there is nothing to do.
function(mosaicer_add_atlases target)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "ALL" "TEXTURES_ROOT;DEFINITION;OUTPUT_ROOT" "SWITCHES")
  foreach(name TEXTURES_ROOT DEFINITION OUTPUT_ROOT)
    if(NOT ARG_${name})
      message(FATAL_ERROR "mosaicer_add_atlases(${target}): ${name} is missing")
    endif()
  endforeach()
  if(ARG_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "mosaicer_add_atlases(${target}): unknown argument ${ARG_UNPARSED_ARGUMENTS}")
  endif()
  find_program(MOSAICER_NINJA NAMES ninja ninja-build samu REQUIRED)
  cmake_path(ABSOLUTE_PATH ARG_TEXTURES_ROOT BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
  cmake_path(ABSOLUTE_PATH ARG_DEFINITION BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
  cmake_path(ABSOLUTE_PATH ARG_OUTPUT_ROOT BASE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
  set(all)
  if(ARG_ALL)
    set(all ALL)
  endif()
  set(switches)
  if(ARG_SWITCHES)
    set(switches -- ${ARG_SWITCHES})
  endif()
  set(plan ${CMAKE_CURRENT_BINARY_DIR}/${target}.ninja)
  add_custom_target(${target} ${all}
    COMMAND mosaicer::kst atlas plan --mosaicer $<TARGET_FILE:mosaicer::mosaicer> -o ${plan}
      ${ARG_TEXTURES_ROOT} ${ARG_DEFINITION} ${ARG_OUTPUT_ROOT} ${switches}
    COMMAND ${MOSAICER_NINJA} -f ${plan}
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
    COMMENT "Making the atlases of ${ARG_DEFINITION}"
    USES_TERMINAL VERBATIM)
endfunction()
