# The packages: on Linux Debian's, on Windows one archive. scripts/package.sh makes them, in build folders of
# their own whose prefix is /usr.
set(CPACK_PACKAGE_NAME zel-sdk)
set(CPACK_PACKAGE_VENDOR "The ZEL Camera SDK developers")
set(CPACK_PACKAGE_CONTACT "The ZEL Camera SDK developers <developers@zel-camera-sdk.invalid>")
set(CPACK_STRIP_FILES ON)
set(ZEL_PACKAGING ${PROJECT_SOURCE_DIR}/packaging)

if(WIN32)
    set(CPACK_GENERATOR External)
    set(CPACK_EXTERNAL_ENABLE_STAGING ON)
    set(CPACK_EXTERNAL_PACKAGE_SCRIPT ${ZEL_PACKAGING}/WindowsArchive.cmake)
    set(CPACK_MONOLITHIC_INSTALL ON)
    set(CPACK_PACKAGE_FILE_NAME zel-sdk-${PROJECT_VERSION}-windows-${CMAKE_SYSTEM_PROCESSOR})
    include(CPack)
    return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL libzel-sdk libzel-sdk-dev zel-tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_PRE_BUILD_SCRIPTS ${ZEL_PACKAGING}/debian/FinishTrees.cmake)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(own_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

# zel_debian_package(NAME SECTION DESCRIPTION [VARIABLE VALUE]...)
macro(zel_debian_package name section description)
    string(TOUPPER ${name} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${upper}_DESCRIPTION ${description})
    set(arguments ${ARGN})
    while(arguments)
        list(POP_FRONT arguments variable value)
        set(CPACK_DEBIAN_${upper}_PACKAGE_${variable} ${value})
    endwhile()
endmacro()

set(about "The SDK finds scientific cameras on Camera Link, eBUS and USB links, sets them
up, runs them and hands their frames to an application.")
zel_debian_package(libzel-sdk libs "scientific cameras - library
${about}
.
This package has the library, its logging library and simulated cameras in
place of the interface libraries that camera makers provide."
    SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBZEL-SDK_PACKAGE_CONTROL_EXTRA
    ${ZEL_PACKAGING}/debian/shlibs ${ZEL_PACKAGING}/debian/symbols ${ZEL_PACKAGING}/debian/triggers)
zel_debian_package(libzel-sdk-dev libdevel "scientific cameras - headers and examples
${about}
.
This package has the headers for applications and plug-ins, the files for
CMake and pkg-config, documents and examples."
    DEPENDS "libzel-sdk ${own_version}" SUGGESTS "zel-tools, pkg-config, cmake")
zel_debian_package(zel-tools science "scientific cameras - command-line tool
${about}
.
This package has zelcam, which does the same from a shell and holds
interface libraries to their contract."
    SHLIBDEPS ON DEPENDS "libzel-sdk ${own_version}")
if(TARGET gige_pleora_ebus)
    list(APPEND CPACK_COMPONENTS_ALL libzel-sdk-gige)
    set(CPACK_DEBIAN_LIBZEL-SDK_PACKAGE_SUGGESTS libzel-sdk-gige)
    zel_debian_package(libzel-sdk-gige libs "scientific cameras - GigE Vision plug-in
${about}
.
This package has the plug-in for GigE Vision cameras on the network, which it
reaches through Aravis; zelcam --plugins gige uses it."
        SHLIBDEPS ON DEPENDS "libzel-sdk ${own_version}")
endif()
if(TARGET gstzel)
    list(APPEND CPACK_COMPONENTS_ALL gstreamer1.0-zel)
    zel_debian_package(gstreamer1.0-zel libs "scientific cameras - source of GStreamer pipelines
${about}
.
This package has the element zelsrc, with which pipelines record them, stream
them over networks and look at them."
        SHLIBDEPS ON DEPENDS "libzel-sdk ${own_version}" SUGGESTS "gstreamer1.0-tools, gstreamer1.0-plugins-good")
endif()
if(TARGET zel_python)
    list(APPEND CPACK_COMPONENTS_ALL python3-zel)
    # The module is compiled for one version of Python, which its file name tells; dh_python3 would write the same.
    get_target_property(suffix zel_python SUFFIX)
    string(REGEX REPLACE "^.cpython-3([0-9]+)-.*" "\\1" minor ${suffix})
    math(EXPR next_minor "${minor} + 1")
    zel_debian_package(python3-zel python "scientific cameras - Python package
${about}
.
This package has the Python package zel, whose frames are NumPy arrays, and
examples."
        SHLIBDEPS ON
        DEPENDS "libzel-sdk ${own_version}, python3 (<< 3.${next_minor}), python3 (>= 3.${minor}~), \
python3-numpy (>= 1:1.24)"
        SUGGESTS "python3-matplotlib, libzel-sdk-gige")
    set(CPACK_DEBIAN_PYTHON3-ZEL_PACKAGE_CONTROL_EXTRA
        ${ZEL_PACKAGING}/debian/python3-zel/postinst ${ZEL_PACKAGING}/debian/python3-zel/prerm)
endif()
# Where dpkg-shlibdeps finds the library that is in no installed package.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
include(CPack)
