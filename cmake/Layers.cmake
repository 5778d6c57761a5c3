# The layers and the one way in which they may depend on each other:
#   application, tools -> toolkit -> platform -> libraries.
#
# quillmere_module(NAME LAYER layer [DEPENDS target...] [PRIVATE_DEPENDS target...] [LIBRARIES lib...])
# makes a static library of all sources in the calling folder. DEPENDS are modules whose headers
# this module's own headers show; PRIVATE_DEPENDS only its sources. LIBRARIES (outside libraries) are
# always private, so that no header of theirs reaches another module. A module sees only the
# folders of the modules it names, and naming one of a higher layer is an error.

set(QUILLMERE_RANK_platform 1)
set(QUILLMERE_RANK_toolkit 2)
set(QUILLMERE_RANK_application 3)

function(quillmere_check_arrow name layer dependency)
  set(other "")
  if(TARGET ${dependency})
    get_target_property(other ${dependency} QUILLMERE_LAYER)
  endif()
  if(NOT other)
    message(FATAL_ERROR "${name} depends on ${dependency}, which is no module of this project")
  endif()
  if(QUILLMERE_RANK_${other} GREATER QUILLMERE_RANK_${layer})
    message(FATAL_ERROR "${name} (${layer}) must not depend on ${dependency} (${other})")
  endif()
endfunction()

function(quillmere_module name)
  cmake_parse_arguments(arg "" "LAYER" "DEPENDS;PRIVATE_DEPENDS;LIBRARIES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  file(GLOB headers CONFIGURE_DEPENDS *.h)
  if(sources)
    set(visibility PUBLIC)
    add_library(${name} STATIC ${sources} ${headers})
    target_link_libraries(${name} PRIVATE quillmere_options ${arg_PRIVATE_DEPENDS} ${arg_LIBRARIES})
  else()  # a module of headers alone
    set(visibility INTERFACE)
    add_library(${name} INTERFACE)
  endif()
  set_target_properties(${name} PROPERTIES QUILLMERE_LAYER ${arg_LAYER})
  # Modules of one layer may need each other both ways: the linker goes round often enough that a
  # source which another round has drawn in finds what it needs.
  set_target_properties(${name} PROPERTIES LINK_INTERFACE_MULTIPLICITY 4)
  target_include_directories(${name} ${visibility} ${CMAKE_CURRENT_SOURCE_DIR})
  # Lets the build compile each header alone; those named *_private.h need a library of the module.
  list(FILTER headers EXCLUDE REGEX "_private\\.h$")
  target_sources(${name} ${visibility} FILE_SET HEADERS BASE_DIRS ${CMAKE_CURRENT_SOURCE_DIR} FILES ${headers})
  target_link_libraries(${name} ${visibility} ${arg_DEPENDS})
  # Checked once every module is known: modules of one layer may name each other both ways.
  foreach(dependency IN LISTS arg_DEPENDS arg_PRIVATE_DEPENDS)
    cmake_language(EVAL CODE "cmake_language(DEFER DIRECTORY [[${PROJECT_SOURCE_DIR}]]
      CALL quillmere_check_arrow ${name} ${arg_LAYER} ${dependency})")
  endforeach()
endfunction()
