# The type library, the manifest and the version of a module, as its resources. They are written
# from the class tables by vellum250-idl, a program of the machine that builds: the native build's.
#
#   vellum250_add_resources(<target>)
#
# Beside the module stand <target>.idl, <target>.tlb and <target>.manifest then.

set(VELLUM250_NATIVE_BUILD ${CMAKE_SOURCE_DIR}/build/native CACHE PATH
    "The native build, whose vellum250-idl is brought up to date and run")
if(NOT EXISTS ${VELLUM250_NATIVE_BUILD}/CMakeCache.txt)
  message(FATAL_ERROR "There is no native build in ${VELLUM250_NATIVE_BUILD}: run "
                      "`cmake --preset native` first, or set VELLUM250_NATIVE_BUILD")
endif()

set(idlTool ${VELLUM250_NATIVE_BUILD}/tools/vellum250-idl/vellum250-idl)
# The native build alone knows whether the tool is up to date.
add_custom_target(vellum250_idl_native
  COMMAND ${CMAKE_COMMAND} --build ${VELLUM250_NATIVE_BUILD} --target vellum250-idl
  BYPRODUCTS ${idlTool} USES_TERMINAL COMMENT "Bringing vellum250-idl up to date")

function(vellum250_add_resources target)
  set(base ${CMAKE_CURRENT_BINARY_DIR}/${target})
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(system --win64)
    set(architecture amd64)
  else()
    set(system --win32)
    set(architecture x86)
  endif()
  add_custom_command(OUTPUT ${base}.idl ${base}.manifest
    COMMAND ${idlTool} --idl > ${base}.idl
    COMMAND ${idlTool} --manifest ${architecture} > ${base}.manifest
    DEPENDS vellum250_idl_native ${idlTool} VERBATIM)
  add_custom_command(OUTPUT ${base}.tlb
    COMMAND ${VELLUM250_WIDL} ${system} -t -o ${base}.tlb ${base}.idl
    DEPENDS ${base}.idl VERBATIM)
  configure_file(${CMAKE_SOURCE_DIR}/cmake/windows/module.rc.in ${base}.rc @ONLY)
  set_source_files_properties(${base}.rc PROPERTIES
    OBJECT_DEPENDS "${base}.tlb;${base}.manifest")
  target_sources(${target} PRIVATE ${base}.rc)
endfunction()
