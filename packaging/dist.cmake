# Makes the source archive ARCHIVE.tar.xz of the checkout SOURCE with the bundled page in PAGE; without
# debian, which every Debian adds in its own way.
set(ENV{LC_ALL} C)
# A commit of what is changed and not committed; nothing where nothing is.
execute_process(COMMAND ${GIT} -C ${SOURCE} stash create OUTPUT_VARIABLE commit
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(NOT commit)
  set(commit HEAD)
endif()
cmake_path(GET ARCHIVE FILENAME name)
set(bundle --prefix=${name}/web/bundle/)
file(GLOB files ${PAGE}/*)
foreach(file ${files})
  list(APPEND bundle --add-file=${file})
endforeach()
# Its licence wants to be where it is.
file(MAKE_DIRECTORY ${ARCHIVE}.preact)
file(COPY_FILE ${SOURCE}/web/node_modules/preact/LICENSE ${ARCHIVE}.preact/LICENSE.preact)
list(APPEND bundle --add-file=${ARCHIVE}.preact/LICENSE.preact)
execute_process(
  COMMAND ${GIT} -C ${SOURCE} archive ${bundle} --prefix=${name}/ ${commit} -- . ":(exclude)debian"
  COMMAND xz --threads=1 -6
  OUTPUT_FILE ${ARCHIVE}.tar.xz COMMAND_ERROR_IS_FATAL ANY)
message(STATUS "${ARCHIVE}.tar.xz")
