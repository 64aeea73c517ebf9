# How the tests of the cross build are made and run: x64's under Wine; x86's are not, for the Wine
# of Debian's one architecture has no 32 bits.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(portableTests "^$")
else()
  # Not those that fork, stand between SQLite and its files, or want a server or a driver.
  set(portableTests "^(automation|platform|runtime|contacts|forms|server|com)/")
  string(APPEND portableTests "|^database/(connection_string|convert|date_functions|embedded_batch"
         "|embedded_dialect|expression_types|reference_scripts|statement_types|text_functions)_test")
endif()

# GoogleTest from Debian's sources, for there is no cross-built package.
find_path(GOOGLETEST_SOURCE CMakeLists.txt PATHS /usr/src/googletest/googletest REQUIRED
          NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
add_subdirectory(${GOOGLETEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)

set(wine ${CMAKE_SOURCE_DIR}/scripts/wine-prefix)
set(CMAKE_CROSSCOMPILING_EMULATOR ${wine} run)
add_test(NAME wine_starts COMMAND ${wine} start)
add_test(NAME wine_stops COMMAND ${wine} stop)
set_tests_properties(wine_starts PROPERTIES FIXTURES_SETUP wine TIMEOUT 400)
set_tests_properties(wine_stops PROPERTIES FIXTURES_CLEANUP wine)
