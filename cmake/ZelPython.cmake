# Where the Python package goes, included where zel_python is built. What is installed is for Debian's Python; a wheel
# (component python-wheel, which bindings/python/setup.py asks for) has the libraries in a folder of its own, so that it
# needs no SDK beside it.
set(ZEL_PYTHON_DIR lib/python3/dist-packages CACHE STRING "Where the Python package is installed")
set(ZEL_PYTHON_FILES ${PROJECT_SOURCE_DIR}/bindings/python/zel)

file(RELATIVE_PATH path_to_libraries ${CMAKE_INSTALL_PREFIX}/${ZEL_PYTHON_DIR}/zel ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(zel_python PROPERTIES INSTALL_RPATH "$ORIGIN/lib;$ORIGIN/${path_to_libraries}")
install(TARGETS zel_python LIBRARY DESTINATION ${ZEL_PYTHON_DIR}/zel COMPONENT python3-zel)
install(DIRECTORY ${ZEL_PYTHON_FILES}/ DESTINATION ${ZEL_PYTHON_DIR}/zel COMPONENT python3-zel
        FILES_MATCHING PATTERN "*.py" PATTERN "*.pyi" PATTERN py.typed PATTERN __pycache__ EXCLUDE)
# In the package of the name, as libzel-sdk-dev has the others.
string(REPLACE libzel-sdk-dev python3-zel folder ${ZEL_DOC_DIR}/examples/python)
install(DIRECTORY examples/python/ DESTINATION ${folder} COMPONENT python3-zel
        FILES_MATCHING PATTERN "*.py" PATTERN "*.md" PATTERN __pycache__ EXCLUDE)

# A wheel has no links: one file, under the name that the module asks for. The libraries lie together, as in the build
# folder, and find each other there by the same path.
set(libraries ${ZEL_LOADED_LIBRARIES})
set(wheel COMPONENT python-wheel EXCLUDE_FROM_ALL)
install(TARGETS zel_python LIBRARY DESTINATION zel ${wheel})
install(PROGRAMS $<TARGET_FILE:zel_sdk> RENAME $<TARGET_SONAME_FILE_NAME:zel_sdk> DESTINATION zel/lib ${wheel})
foreach(library ${ZEL_LOADED_LIBRARIES})
    install(PROGRAMS $<TARGET_FILE:${library}> DESTINATION zel/lib ${wheel})
endforeach()
foreach(library edt_camera_link pleora_ebus zel_usb)
    install(PROGRAMS $<TARGET_FILE:${library}> DESTINATION zel/lib/plugins/sim ${wheel})
endforeach()
if(TARGET gige_pleora_ebus)
    list(APPEND libraries gige_pleora_ebus)
    install(PROGRAMS $<TARGET_FILE:gige_pleora_ebus> DESTINATION zel/lib/plugins/gige ${wheel})
endif()
add_custom_target(zel_python_wheel DEPENDS zel_python zel_sdk ${libraries})
