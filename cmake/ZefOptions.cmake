# Compiler options of this project's own targets; nothing here reaches its users.
if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

# The same bits on every processor: no fused multiply-add. Messages name sources relative to the project.
function(zef_target_options target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  target_compile_options(${target} PRIVATE
    -ffp-contract=off -Wall -Wextra -Wpedantic -Wshadow
    # g++ 12 raises it falsely where strings are joined at -O3.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    # The cube configurations are expanded by the compiler.
    $<$<CXX_COMPILER_ID:Clang>:-fconstexpr-steps=100000000>
    $<$<BOOL:${ZEF_WERROR}>:-Werror>
    -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
  if(ZEF_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${ZEF_SANITIZE} -fno-omit-frame-pointer
                           -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${ZEF_SANITIZE})
  endif()
endfunction()

# Headers that nearly every source of the target reads are then read once. It takes a third off the tests
# and, with clang, off the library; with g++ the library gains nothing. The builds of the package go without,
# so that an #include that a source of the library lacks is found there.
function(zef_precompile target)
  if(ZEF_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE
      <algorithm> <array> <cmath> <functional> <iostream> <map> <memory> <mutex> <set> <string> <thread>
      <vector> ${ARGN})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
      # Else the time stamp of the header hides from ccache that nothing changed.
      target_compile_options(${target} PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
    endif()
  endif()
endfunction()

# A shared library shows the public interface and nothing else.
function(zef_limit_exports target)
  set(map ${PROJECT_SOURCE_DIR}/cmake/zefExports.map)
  target_link_options(${target} PRIVATE LINKER:--version-script=${map})
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map})
endfunction()
