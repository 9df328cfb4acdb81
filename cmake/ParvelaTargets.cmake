# How every target of this project is compiled, and the functions that declare targets.
find_package(PkgConfig REQUIRED)

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

find_program(CCACHE ccache)
if(CCACHE)
  # Precompiled headers and ccache agree only when time stamps are kept out of the header.
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND};-E;env;CCACHE_SLOPPINESS=pch_defines,time_macros;${CCACHE}")
endif()

add_library(parvela_options INTERFACE)
target_compile_options(parvela_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  -Wno-missing-field-initializers -fno-math-errno)
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(parvela_options INTERFACE "SHELL:-Xclang -fno-pch-timestamp")
  target_link_options(parvela_options INTERFACE -fuse-ld=lld)
endif()
if(PARVELA_SANITIZE)
  list(JOIN PARVELA_SANITIZE "," sanitizers)
  target_compile_options(parvela_options INTERFACE -fsanitize=${sanitizers} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(parvela_options INTERFACE -fsanitize=${sanitizers})
  # The library's own checks: an index out of range, an empty optional or a failed expected that is read all the same.
  target_compile_definitions(parvela_options INTERFACE _GLIBCXX_ASSERTIONS)
elseif(CMAKE_BUILD_TYPE STREQUAL "Release")
  if(NOT CMAKE_CXX_FLAGS MATCHES "_FORTIFY_SOURCE")  # a packager's flags may ask for more
    target_compile_definitions(parvela_options INTERFACE _FORTIFY_SOURCE=2)
  endif()
  target_compile_options(parvela_options INTERFACE -fstack-protector-strong)
  # Addresses are bound before main() and cannot be changed afterwards; libraries that nothing is taken from are not loaded.
  target_link_options(parvela_options INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,--as-needed)
endif()
if(PARVELA_FUZZ)
  target_compile_options(parvela_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# parvela_module(NAME SOURCES file... [PUBLIC lib...] [PRIVATE lib...])
# A library whose headers stand in <folder>/include/<NAME>: only targets that link it can see them.
function(parvela_module name)
  cmake_parse_arguments(arg "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_include_directories(${name} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}/include" PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}/src")
  target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE parvela_options ${arg_PRIVATE})
endfunction()

# parvela_unit_tests(NAME SOURCES file... LIBRARIES lib...): one test program of GoogleTest cases, registered with CTest.
function(parvela_unit_tests name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE parvela_options ${arg_LIBRARIES} GTest::gmock_main)
  target_precompile_headers(${name} PRIVATE <gmock/gmock.h> <gtest/gtest.h> <optional> <string> <vector>)
  add_test(NAME ${name} COMMAND ${name})
  if(NOT TARGET unit-tests)
    add_custom_target(unit-tests)
  endif()
  add_dependencies(unit-tests ${name})
endfunction()
