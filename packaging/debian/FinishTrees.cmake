# Run by CPack between staging and packing: what Debian wants in every package beside the files themselves. Times are
# those of the last commit (SOURCE_DATE_EPOCH), so that the same sources give the same bytes.
set(here ${CMAKE_CURRENT_LIST_DIR})
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)  # heeds SOURCE_DATE_EPOCH

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(package ${CPACK_COMPONENTS_ALL})
    set(tree ${CPACK_TEMPORARY_DIRECTORY}/${package}/usr)
    set(documents ${tree}/share/doc/${package})
    file(MAKE_DIRECTORY ${documents})
    run(install -m 644 ${here}/copyright ${here}/../../THIRD-PARTY.md ${documents})
    run(install -m 644 ${here}/../../CHANGELOG.md ${documents}/changelog)
    file(REMOVE ${documents}/CHANGELOG.md)
    file(WRITE ${documents}/changelog.Debian
"zel-sdk (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) stable; urgency=medium

  * Version ${CPACK_PACKAGE_VERSION}; changelog.gz has the changes.

 -- ${CPACK_PACKAGE_CONTACT}  ${now}
")
    file(GLOB_RECURSE pages ${tree}/share/man/*.1)
    run(gzip -9n ${documents}/changelog ${documents}/changelog.Debian ${documents}/THIRD-PARTY.md ${pages})
endforeach()
