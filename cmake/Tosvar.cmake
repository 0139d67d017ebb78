# Shared build rules: warnings, sanitizers and the helpers that declare our
# libraries, tests and benchmarks. Each library states its own include
# directory and links only what it uses.

set(TOSVAR_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
    -Woverloaded-virtual -Wimplicit-fallthrough -Wcast-qual
    # GCC 12 reports false overlaps inside libstdc++'s own string copies (GCC bug 105329).
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(TOSVAR_WERROR)
  list(APPEND TOSVAR_WARNINGS -Werror)
endif()

if(TOSVAR_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

# tosvar_library(name SOURCES ... [PUBLIC_LIBS ...] [PRIVATE_LIBS ...])
# A static library for one folder of src/, exposing that folder as its include root.
function(tosvar_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;PUBLIC_LIBS;PRIVATE_LIBS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_compile_options(${name} PRIVATE ${TOSVAR_WARNINGS})
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC_LIBS} PRIVATE ${ARG_PRIVATE_LIBS})
endfunction()

# tosvar_test(name SOURCES ... LIBS ... [LABELS ...])
# A GoogleTest executable in build/bin, its cases discovered by CTest at test time.
function(tosvar_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_compile_options(${name} PRIVATE ${TOSVAR_WARNINGS})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} tosvar_test_support GTest::gtest_main GTest::gmock)
  target_compile_definitions(${name} PRIVATE TOSVAR_TEST_DATA_DIR="${CMAKE_CURRENT_SOURCE_DIR}/data")
  set(labels ${ARG_LABELS})
  if(NOT labels)
    set(labels unit)
  endif()
  gtest_discover_tests(${name}
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 30
    PROPERTIES LABELS "${labels}" ENVIRONMENT "QT_QPA_PLATFORM=offscreen;DBUS_SESSION_BUS_ADDRESS=disabled:")
endfunction()

# tosvar_bench(name SOURCES ... LIBS ...): a benchmark executable in build/bin.
function(tosvar_bench name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_compile_options(${name} PRIVATE ${TOSVAR_WARNINGS})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} benchmark::benchmark)
endfunction()
