# One library target per source folder. Sources are globbed so that adding a file
# needs no edit here; a folder without sources yet becomes an INTERFACE target so
# that dependents can already name it.
function(vmk_library name)
  cmake_parse_arguments(ARG "" "" "DEPS;PRIVATE_DEPS" ${ARGN})
  file(GLOB _src CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  file(GLOB _hdr CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  if(_src)
    add_library(${name} STATIC ${_src} ${_hdr})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${name} PUBLIC ${ARG_DEPS} PRIVATE ${ARG_PRIVATE_DEPS})
    target_compile_options(${name} PRIVATE ${VMK_WARNINGS})
  else()
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${name} INTERFACE ${ARG_DEPS})
  endif()
endfunction()

# A program of the suite, placed in build/bin.
function(vmk_program name)
  cmake_parse_arguments(ARG "" "OUTPUT_NAME" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS})
  target_compile_options(${name} PRIVATE ${VMK_WARNINGS})
  if(ARG_OUTPUT_NAME)
    set_target_properties(${name} PROPERTIES OUTPUT_NAME ${ARG_OUTPUT_NAME})
  endif()
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
  # On a device the program finds the libraries it carries in lib/ beside it,
  # whatever host it runs on; where lib/ is missing (build/bin) the host's are used.
  set_target_properties(${name} PROPERTIES BUILD_RPATH "\$ORIGIN/lib" INSTALL_RPATH "\$ORIGIN/lib")
endfunction()

# Every test has a time limit, so that a hang fails instead of stalling the run
# (a sanitized build runs several times slower, so it gets more).
if(VMK_SANITIZE)
  set(VMK_TEST_TIMEOUT 900)
else()
  set(VMK_TEST_TIMEOUT 300)
endif()

# One GoogleTest executable per test folder; every test is registered with CTest.
# A folder that needs a QApplication defines its own main(), which wins over gtest_main.
function(vmk_test name)
  cmake_parse_arguments(ARG "" "" "DEPS" ${ARGN})
  file(GLOB _src CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  if(NOT _src)
    return()
  endif()
  add_executable(${name} ${_src})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} vmk_testsupport GTest::gtest GTest::gmock GTest::gtest_main)
  target_compile_options(${name} PRIVATE ${VMK_WARNINGS})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  gtest_discover_tests(${name}
    DISCOVERY_TIMEOUT 60
    # One value per property: gtest_discover_tests splits a list value into
    # separate words, which silently swallowed the properties after it (the
    # folders of the programs and the test data are compiled into test support).
    PROPERTIES ENVIRONMENT QT_QPA_PLATFORM=offscreen TIMEOUT ${VMK_TEST_TIMEOUT})
endfunction()

# Adds every subfolder that has a CMakeLists.txt, so a new program, benchmark or
# test folder needs no edit of its parent. EXCEPT names folders added otherwise.
function(vmk_add_subfolders)
  cmake_parse_arguments(ARG "" "" "EXCEPT" ${ARGN})
  file(GLOB _dirs LIST_DIRECTORIES true CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*)
  foreach(_d ${_dirs})
    get_filename_component(_n ${_d} NAME)
    if(IS_DIRECTORY ${_d} AND EXISTS ${_d}/CMakeLists.txt AND NOT _n IN_LIST ARG_EXCEPT)
      add_subdirectory(${_d})
    endif()
  endforeach()
endfunction()
