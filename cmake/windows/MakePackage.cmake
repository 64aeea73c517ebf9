# Run by the target `package`: lays out the folder <X64>/package/<NAME> and packs it.

set(folder ${X64}/package/${NAME})
set(zip ${X64}/${NAME}-windows.zip)
file(REMOVE_RECURSE ${X64}/package ${zip})

foreach(architecture x64 x86)
  string(TOUPPER ${architecture} build)
  foreach(extension dll tlb manifest)
    set(file ${${build}}/src/server/com/vellum250.${extension})
    if(NOT EXISTS ${file})
      message(FATAL_ERROR "${file} is missing. Build it first: cmake --preset "
                          "windows-${architecture} && cmake --build --preset windows-${architecture}")
    endif()
    file(COPY ${file} DESTINATION ${folder}/${architecture})
  endforeach()
endforeach()

# Windows' editors and command interpreter expect its line ends.
set(texts ${SOURCE}/packaging/windows)
file(GLOB_RECURSE names RELATIVE ${texts} ${texts}/*)
foreach(name IN LISTS names)
  configure_file(${texts}/${name} ${folder}/${name} @ONLY NEWLINE_STYLE CRLF)
endforeach()

set(database ${folder}/sample/App_Data/members.db)
file(MAKE_DIRECTORY ${folder}/sample/App_Data)
set(ENV{VELLUM250_SQL} ${NATIVE}/tools/vellum250-sql/vellum250-sql)
execute_process(COMMAND ${SOURCE}/scripts/demo-database ${database} COMMAND_ERROR_IS_FATAL ANY)

execute_process(COMMAND ${CMAKE_COMMAND} -E tar cf ${zip} --format=zip ${NAME}
                WORKING_DIRECTORY ${X64}/package COMMAND_ERROR_IS_FATAL ANY)
message(STATUS "Packed ${zip}")
