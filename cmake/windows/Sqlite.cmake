# SQLite for the Windows build, as a static library under the name that FindSQLite3 uses. The
# source comes with an npm package, for Debian has none to cross-build.

set(source ${CMAKE_CURRENT_LIST_DIR}/node_modules/better-sqlite3/deps/sqlite3)
if(NOT EXISTS ${source}/sqlite3.c)
  message(FATAL_ERROR "SQLite's source is missing: run `npm ci --ignore-scripts` in cmake/windows "
                      "and configure again")
endif()

add_library(vellum250_sqlite STATIC ${source}/sqlite3.c)
target_include_directories(vellum250_sqlite SYSTEM PUBLIC ${source})
# Where behaviour depends on an option it is Debian's, which the native tests run on.
target_compile_definitions(vellum250_sqlite PRIVATE
  SQLITE_THREADSAFE=1
  SQLITE_ENABLE_MATH_FUNCTIONS
  SQLITE_LIKE_DOESNT_MATCH_BLOBS
  SQLITE_MAX_VARIABLE_NUMBER=250000
  SQLITE_SECURE_DELETE
  SQLITE_USE_URI
  # Nothing here loads code.
  SQLITE_OMIT_LOAD_EXTENSION)
target_compile_options(vellum250_sqlite PRIVATE -w)
add_library(SQLite::SQLite3 ALIAS vellum250_sqlite)
