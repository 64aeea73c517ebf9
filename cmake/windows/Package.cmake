# The target `package`: vellum250-<version>-windows.zip in the build folder, with the modules of both
# architectures and all that a user needs to install and try them.

set(VELLUM250_X86_BUILD ${CMAKE_SOURCE_DIR}/build/windows-x86 CACHE PATH
    "The build for x86, whose module the package holds beside this one's")

add_custom_target(package
  # The tool that makes the sample database, and the module, whatever was built before.
  COMMAND ${CMAKE_COMMAND} --build ${VELLUM250_NATIVE_BUILD} --target vellum250-sql
  COMMAND ${CMAKE_COMMAND}
          -D SOURCE=${CMAKE_SOURCE_DIR}
          -D NATIVE=${VELLUM250_NATIVE_BUILD}
          -D X64=${CMAKE_BINARY_DIR}
          -D X86=${VELLUM250_X86_BUILD}
          -D NAME=${PROJECT_NAME}-${PROJECT_VERSION}
          -P ${CMAKE_CURRENT_LIST_DIR}/MakePackage.cmake
  DEPENDS vellum250 USES_TERMINAL VERBATIM COMMENT "Packing")
