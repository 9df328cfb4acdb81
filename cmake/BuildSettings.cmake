# Settings a packager or developer may change. Everything else is derived.
set(PARVELA_APP_ID "app.parvela.Parvela" CACHE STRING "Application id: bus name, desktop file and icon name")
set(PARVELA_PRODUCTION_APP_URL "https://app.parvela.example" CACHE STRING "Origin of the hosted web app")
set(PARVELA_PRODUCTION_API_URL "https://api.parvela.example" CACHE STRING "API site of the hosted service")
set(PARVELA_KEYCHAIN_GROUP "" CACHE STRING "Group attribute under which companions share the token; empty for none")
set(PARVELA_APP_GROUP "" CACHE STRING "Name of the settings shared with companions; empty for none")

option(PARVELA_TESTS "Build the tests" ON)
option(PARVELA_BENCH "Build the benchmarks" OFF)
option(PARVELA_FUZZ "Build the fuzz targets (clang only)" OFF)
set(PARVELA_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address;undefined")
