# One-line helpers for the project's test and benchmark targets.

# dxfimport_isolate_test(NAME): the test runs with settings, state, cache and log of its
# own under build/test-settings/NAME (a test program started by hand makes a temporary
# folder of its own instead: tests/testing/user_folders.h), in a home folder that stands
# for the user's
# (build/test-home): the user_home_check test at the end of the suite checks that the
# settings and log placed there before the suite are as they were.
function(dxfimport_isolate_test name)
  set(own ${CMAKE_BINARY_DIR}/test-settings/${name})
  set_tests_properties(${name} PROPERTIES
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LANG=C.UTF-8;HOME=${CMAKE_BINARY_DIR}/test-home;XDG_CONFIG_HOME=${own}/config;XDG_STATE_HOME=${own}/state;XDG_CACHE_HOME=${own}/cache;XDG_DATA_HOME=${own}/data;DXFIMPORT_LOG=${own}/dxfimport.log;DXFIMPORT_TEST_FOLDERS=${own}"
    FIXTURES_REQUIRED user_home)
endfunction()

# dxfimport_add_test(NAME [GUI] SOURCES... LIBS libs...): GUI tests run inside a
# QGuiApplication (offscreen), for fonts and images.
function(dxfimport_add_test name)
  cmake_parse_arguments(ARG "GUI" "" "SOURCES;LIBS" ${ARGN})
  if(ARG_GUI)
    add_executable(${name} ${ARG_SOURCES} ${PROJECT_SOURCE_DIR}/tests/testing/gui_test_main.cpp)
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} dxfimport_testing GTest::gtest Qt6::Gui)
  else()
    add_executable(${name} ${ARG_SOURCES} ${PROJECT_SOURCE_DIR}/tests/testing/test_main.cpp)
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} dxfimport_testing GTest::gtest)
  endif()
  target_compile_definitions(${name} PRIVATE
    DXFIMPORT_SAMPLES_DIR="${PROJECT_SOURCE_DIR}/samples"
    DXFIMPORT_CORPUS_DIR="${PROJECT_SOURCE_DIR}/../shared/corpus")
  add_test(NAME ${name} COMMAND ${name})
  dxfimport_isolate_test(${name})
endfunction()

# dxfimport_add_benchmark(NAME SOURCES... LIBS libs...)
function(dxfimport_add_benchmark name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} benchmark::benchmark)
endfunction()

# dxfimport_add_fuzzer(NAME LIBS libs...): a libFuzzer target from NAME.cpp.
function(dxfimport_add_fuzzer name)
  cmake_parse_arguments(ARG "" "" "LIBS" ${ARGN})
  add_executable(${name} ${name}.cpp)
  target_link_libraries(${name} PRIVATE ${ARG_LIBS})
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
endfunction()

# dxfimport_add_qt_test(NAME SOURCES... LIBS libs...): a QtTest widget test on the offscreen
# platform (its sources use QTEST_MAIN).
function(dxfimport_add_qt_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} Qt6::Test)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(${name} PRIVATE DXFIMPORT_SAMPLES_DIR="${PROJECT_SOURCE_DIR}/samples")
  add_test(NAME ${name} COMMAND ${name})
  dxfimport_isolate_test(${name})
endfunction()
