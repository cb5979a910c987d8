# Run by CPack with everything installed into a folder: packs it as a .zip whose bytes depend on the files alone. They
# stand in the order of their names, under the time of the last commit (SOURCE_DATE_EPOCH).
file(GLOB_RECURSE files RELATIVE ${CPACK_TEMPORARY_DIRECTORY} ${CPACK_TEMPORARY_DIRECTORY}/*)
list(SORT files)
set(name ${CPACK_PACKAGE_FILE_NAME})
string(REGEX REPLACE "([^;]+)" "${name}/\\1" entries "${files}")
string(REPLACE ";" "\n" entries "${entries}\n")

set(folder ${CPACK_TEMPORARY_DIRECTORY}/..)
file(REMOVE_RECURSE ${folder}/${name})
file(RENAME ${CPACK_TEMPORARY_DIRECTORY} ${folder}/${name})
string(TIMESTAMP time "%Y%m%d%H%M.%S" UTC)  # heeds SOURCE_DATE_EPOCH
set(archive ${CPACK_PACKAGE_DIRECTORY}/${name}.zip)
file(REMOVE ${archive})
file(WRITE ${folder}/entries "${entries}")
execute_process(COMMAND chmod -R u=rwX,go=rX ${name} COMMAND find ${name} -exec env TZ=UTC touch -t ${time} {} +
                WORKING_DIRECTORY ${folder} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND env TZ=UTC zip -q -X -D ${archive} -@ INPUT_FILE ${folder}/entries WORKING_DIRECTORY ${folder}
                COMMAND_ERROR_IS_FATAL ANY)
set(CPACK_EXTERNAL_BUILT_PACKAGES ${archive})
