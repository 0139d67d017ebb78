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
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/bench/support)
endfunction()

# tosvar_fuzzer(name TEST test SOURCES ... INCLUDES ... [LINK ...] SEEDS ...)
# A libFuzzer executable in build/bin, compiled by clang outside the project's
# toolchain and always with ASan and UBSan, plus a CTest test labelled "fuzz"
# that runs it for five seconds from the seed folders, keeping the inputs it
# finds in a corpus of the build folder. SOURCES are every file to compile,
# INCLUDES the folders their headers come from. Nothing is declared without
# clang, nor in a sanitizer build, which would only run the same fuzzer twice.
find_program(CLANGXX_PROGRAM NAMES clang++ clang++-14)
if(NOT CLANGXX_PROGRAM)
  message(STATUS "clang++ not found: the fuzz tests are not built")
endif()

function(tosvar_fuzzer name)
  cmake_parse_arguments(ARG "" "TEST" "SOURCES;INCLUDES;LINK;SEEDS" ${ARGN})
  if(NOT CLANGXX_PROGRAM OR TOSVAR_SANITIZE)
    return()
  endif()
  set(fuzzer ${CMAKE_BINARY_DIR}/bin/${name})
  set(include_flags)
  set(headers)
  foreach(folder ${ARG_INCLUDES})
    list(APPEND include_flags -I${folder})
    file(GLOB folder_headers ${folder}/*.h)
    list(APPEND headers ${folder_headers})
  endforeach()
  add_custom_command(OUTPUT ${fuzzer}
    COMMAND ${CLANGXX_PROGRAM} -std=c++20 -O1 -g
            -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined
            ${include_flags} ${ARG_SOURCES} ${ARG_LINK} -o ${fuzzer}
    DEPENDS ${ARG_SOURCES} ${headers}
    COMMENT "Building the fuzzer ${name} with clang"
    VERBATIM)
  add_custom_target(${name} ALL DEPENDS ${fuzzer})
  add_test(NAME ${ARG_TEST}
    COMMAND ${CMAKE_COMMAND} -E env ASAN_OPTIONS=detect_leaks=1
            sh -c "mkdir -p ${name}-corpus && exec \"$0\" -max_total_time=5 -timeout=5 -rss_limit_mb=2048 ${name}-corpus \"$@\""
            ${fuzzer} ${ARG_SEEDS}
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
  set_tests_properties(${ARG_TEST} PROPERTIES LABELS fuzz)
endfunction()
