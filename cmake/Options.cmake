# What every target is compiled with.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
# The optimised builds keep assertions out; the tests check behaviour, not NDEBUG.
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g1 -DNDEBUG")
# What is measured and shipped is optimised as what is tested; at -O3 g++ 12 also warns of lengths
# inside std::string that cannot be.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

find_program(VELLUM250_CCACHE ccache)
if(VELLUM250_CCACHE)
  # Precompiled headers carry a time; without the sloppiness they would never hit.
  set(CMAKE_CXX_COMPILER_LAUNCHER
      ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
      CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
      ${VELLUM250_CCACHE})
  set(CMAKE_C_COMPILER_LAUNCHER ${CMAKE_CXX_COMPILER_LAUNCHER})
endif()

add_library(vellum250_options INTERFACE)
target_compile_options(vellum250_options INTERFACE
  -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Wold-style-cast -Werror
  # g++ 12 takes the inactive alternatives of a std::variant for values.
  $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local;-Wno-maybe-uninitialized>)
if(WIN32)
  # Windows 7 and later; the headers without their least used parts and their min and max.
  target_compile_definitions(vellum250_options INTERFACE
    _WIN32_WINNT=0x0601 UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX)
endif()
if(VELLUM250_SANITIZE)
  add_compile_options(-fsanitize=${VELLUM250_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VELLUM250_SANITIZE})
endif()
