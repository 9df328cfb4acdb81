# Settings a packager or developer may change. Everything else is derived.
set(PARVELA_APP_ID "app.parvela.Parvela" CACHE STRING "Application id: bus name, desktop file and icon name")
set(PARVELA_PRODUCTION_APP_URL "https://app.parvela.example" CACHE STRING "Origin of the hosted web app")
set(PARVELA_PRODUCTION_API_URL "https://api.parvela.example" CACHE STRING "API site of the hosted service")
set(PARVELA_KEYCHAIN_GROUP "" CACHE STRING "Group attribute under which companions share the token; empty for none")
set(PARVELA_APP_GROUP "" CACHE STRING "Name of the settings shared with companions; empty for none")
# What is installed belongs to the package "parvela" unless it names another component; see packaging/Packages.cmake.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME application)

# A build that its package manager replaces needs neither; docs/release.md tells how the feed is made and signed.
set(PARVELA_UPDATE_FEED_URL "" CACHE STRING "Address (https) of the feed of new versions; empty: never looked for")
set(PARVELA_UPDATE_PUBLIC_KEY "" CACHE STRING "Ed25519 public key, in base64, that signs the feed; empty with no feed")
if(PARVELA_UPDATE_FEED_URL OR PARVELA_UPDATE_PUBLIC_KEY)
  if(NOT PARVELA_UPDATE_FEED_URL MATCHES "^https://[^/]+")
    message(FATAL_ERROR "PARVELA_UPDATE_FEED_URL must be an https address.")
  endif()
  string(LENGTH "${PARVELA_UPDATE_PUBLIC_KEY}" length)
  if(NOT length EQUAL 44 OR NOT PARVELA_UPDATE_PUBLIC_KEY MATCHES "^[A-Za-z0-9+/]+=$")
    message(FATAL_ERROR "PARVELA_UPDATE_PUBLIC_KEY must be the 32 bytes of a key in base64; see docs/release.md.")
  endif()
endif()

option(PARVELA_TESTS "Build the tests" ON)
option(PARVELA_BENCH "Build the benchmarks" OFF)
option(PARVELA_FUZZ "Build the fuzz targets (clang only)" OFF)
set(PARVELA_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address;undefined")
