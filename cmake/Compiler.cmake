# What every target of the project is compiled with.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

add_library(quillmere_options INTERFACE)
target_compile_options(quillmere_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
  # The toolkit's four-character constants are decimal or literal-operator constants, never 'abcd'.
  -Werror=multichar
  # Results must not depend on the machine.
  -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # False alarms of GCC 12 inside its own string and vector at -O3 (GCC bugs 105329 and 105651).
  target_compile_options(quillmere_options INTERFACE
    $<$<CONFIG:Release>:-Wno-restrict> $<$<CONFIG:Release>:-Wno-stringop-overread>)
endif()
target_compile_definitions(quillmere_options INTERFACE _FILE_OFFSET_BITS=64)

if(QUILLMERE_SANITIZE)
  target_compile_options(quillmere_options INTERFACE
    -fsanitize=${QUILLMERE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(quillmere_options INTERFACE -fsanitize=${QUILLMERE_SANITIZE})
endif()
if(QUILLMERE_FUZZERS)
  target_compile_options(quillmere_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
