# GCC before 13 miscompiles ordinary co_await expressions (double frees, use after free) without a diagnostic, so it must not
# build this project. See docs/decisions.md.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  message(FATAL_ERROR
    "GCC ${CMAKE_CXX_COMPILER_VERSION} miscompiles C++ coroutines, which Parvela relies on.\n"
    "Use clang 19 (Debian package clang-19) or GCC 13 and newer; the CMake presets choose clang 19:\n"
    "  cmake --preset dev")
endif()
