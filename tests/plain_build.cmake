# What a packager types: no warning is an error then, since each compiler warns of something else.
execute_process(
  COMMAND ${CMAKE_COMMAND} -S ${SOURCE} -B ${BINARY} -G Ninja -DCMAKE_BUILD_TYPE=Release
          -DBUILD_TESTING=OFF -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(READ ${BINARY}/compile_commands.json commands)
if(NOT commands MATCHES "-O3" OR commands MATCHES "-Werror")
  message(FATAL_ERROR "a plain build is not optimized, or stops at a warning")
endif()
