# Run by CPack with everything installed into a folder: packs it as a .zip whose bytes depend on the files alone. They
# stand in the order of their names, under the time of the last commit (SOURCE_DATE_EPOCH).
get_filename_component(folder ${CPACK_TEMPORARY_DIRECTORY} DIRECTORY)
get_filename_component(name ${CPACK_TEMPORARY_DIRECTORY} NAME)
file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE ${folder} ${CPACK_TEMPORARY_DIRECTORY}/*)
list(SORT files)
string(REPLACE ";" "\n" entries "${files}")
file(WRITE ${folder}/entries "${entries}\n")

string(TIMESTAMP time "%Y%m%d%H%M.%S" UTC)  # heeds SOURCE_DATE_EPOCH
set(archive ${CPACK_PACKAGE_DIRECTORY}/${CPACK_PACKAGE_FILE_NAME}.zip)
set(ENV{TZ} UTC)
execute_process(COMMAND find ${name} -exec touch -t ${time} {} + WORKING_DIRECTORY ${folder}
                COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND zip -q -X -D ${archive} -@ INPUT_FILE ${folder}/entries WORKING_DIRECTORY ${folder}
                COMMAND_ERROR_IS_FATAL ANY)
set(CPACK_EXTERNAL_BUILT_PACKAGES ${archive})
