# Compiler settings of the whole project and the two functions that make its targets.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}")

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(ICU 72 REQUIRED COMPONENTS uc i18n data)
find_package(nlohmann_json 3.11 REQUIRED)
pkg_check_modules(SQLITE REQUIRED IMPORTED_TARGET sqlite3>=3.40)
pkg_check_modules(GIO REQUIRED IMPORTED_TARGET gio-2.0>=2.74 gio-unix-2.0)
pkg_check_modules(SOUP REQUIRED IMPORTED_TARGET libsoup-3.0>=3.2)
pkg_check_modules(PIXBUF REQUIRED IMPORTED_TARGET gdk-pixbuf-2.0>=2.42)

add_library(tidewrack_flags INTERFACE)
target_include_directories(tidewrack_flags INTERFACE "${CMAKE_SOURCE_DIR}/src")
target_compile_options(tidewrack_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  -Wcast-align -Wformat=2 -Wundef -Werror -fstack-protector-strong)
target_compile_definitions(tidewrack_flags INTERFACE
  TIDEWRACK_VERSION="${PROJECT_VERSION}"
  $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>
  # Nothing newer than the oldest supported libraries slips in.
  GLIB_VERSION_MIN_REQUIRED=GLIB_VERSION_2_74 GLIB_VERSION_MAX_ALLOWED=GLIB_VERSION_2_74
  GDK_VERSION_MAX_ALLOWED=GDK_VERSION_4_8 ADW_VERSION_MAX_ALLOWED=ADW_VERSION_1_2)
if(TIDEWRACK_SANITIZE)
  target_compile_options(tidewrack_flags INTERFACE
    -fsanitize=${TIDEWRACK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tidewrack_flags INTERFACE -fsanitize=${TIDEWRACK_SANITIZE})
endif()

# tidewrack_layer(NAME lower-layer...): one folder of src/ is one static library. It holds every .cc
# of its folder and links only the folders below it that it names, so that a wrong include does not link.
function(tidewrack_layer name)
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cc")
  add_library(tidewrack_${name} STATIC ${sources})
  target_link_libraries(tidewrack_${name} PUBLIC tidewrack_flags)
  foreach(below IN LISTS ARGN)
    target_link_libraries(tidewrack_${name} PUBLIC tidewrack_${below})
  endforeach()
endfunction()

# tidewrack_test(NAME layer...): one folder of tests/ is one GoogleTest program; each TEST is a ctest entry.
function(tidewrack_test name)
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${name}/*.cc")
  if(NOT sources)
    return()
  endif()
  add_executable(${name}_tests ${sources})
  target_include_directories(${name}_tests PRIVATE "${CMAKE_SOURCE_DIR}/tests")
  target_compile_definitions(${name}_tests PRIVATE
    TIDEWRACK_CORPUS="${TIDEWRACK_CORPUS}"
    TIDEWRACK_TEST_DATA="${CMAKE_SOURCE_DIR}/tests/data"
    TIDEWRACK_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
    TIDEWRACK_BINARY_DIR="${CMAKE_BINARY_DIR}")
  target_link_libraries(${name}_tests PRIVATE GTest::gmock GTest::gtest_main)
  foreach(layer IN LISTS ARGN)
    target_link_libraries(${name}_tests PRIVATE tidewrack_${layer})
  endforeach()
  target_precompile_headers(${name}_tests PRIVATE <gtest/gtest.h> <gmock/gmock.h>)
  gtest_discover_tests(${name}_tests TEST_PREFIX "${name}: " DISCOVERY_MODE PRE_TEST
                       PROPERTIES TIMEOUT 600
                       # What a test throws away must not end in the trash of whoever runs it.
                       ENVIRONMENT "XDG_DATA_HOME=${CMAKE_BINARY_DIR}/tests/data-home")
endfunction()
