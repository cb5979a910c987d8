# What an installation consists of, included behind all targets. Each rule names the Debian package that its files go
# into (its component); a plain installation and the Windows archive have them all.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
include(cmake/ZelWindowsFiles.cmake)

set(ZEL_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/zel-sdk)
set(ZEL_CONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZelSDK)
if(WIN32)
    set(ZEL_PLUGIN_DIR ${CMAKE_INSTALL_BINDIR})  # Windows looks beside the program
    set(ZEL_DOC_DIR . CACHE STRING "Where documents and examples are installed")
else()
    set(ZEL_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/zel-sdk)
    set(ZEL_DOC_DIR share/doc/zel-sdk CACHE STRING "Where documents and examples are installed")
endif()
set(ZEL_LOADED_LIBRARIES edt_camera_link pleora_ebus zel_usb kestrane_zel_logger)
set(ZEL_TOOLS zelcam)

# zel_find_plugins(TARGET PATH): where the installed target, from which PATH leads to the libraries, looks for what is
# loaded by name: plug-ins of camera makers, then what this project installs. (In the build folder all lies together.)
function(zel_find_plugins target path)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "${path}/zel-sdk/cameras;${path}/zel-sdk;${path}")
endfunction()

# zel_install_library(TARGET NAME): a library that applications link, as ZelSDK::NAME.
function(zel_install_library target name)
    zel_find_plugins(${target} $ORIGIN)
    set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
    target_include_directories(${target} INTERFACE $<INSTALL_INTERFACE:${ZEL_INCLUDE_DIR}>)
    install(TARGETS ${target} EXPORT ZelSDKTargets
            RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT libzel-sdk
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libzel-sdk NAMELINK_COMPONENT libzel-sdk-dev
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libzel-sdk-dev)
    if(WIN32)
        zel_version_resource(${target} "ZEL Camera SDK")
        zel_import_library(${target})
    endif()
endfunction()

# zel_pkg_config(NAME): NAME.pc, which finds everything from where it stands itself.
function(zel_pkg_config name)
    file(RELATIVE_PATH ZEL_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    string(REGEX REPLACE "/$" "" ZEL_PREFIX "${ZEL_PREFIX}")
    configure_file(packaging/${name}.pc.in ${CMAKE_BINARY_DIR}/packaging/${name}.pc @ONLY)
    install(FILES ${CMAKE_BINARY_DIR}/packaging/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
            COMPONENT libzel-sdk-dev)
endfunction()

# Libraries and tools.
if(NOT WIN32)
    set_target_properties(zel_sdk PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
endif()
zel_install_library(zel_sdk ZelSDK)
zel_pkg_config(zel-sdk)
zel_install_library(zel_c C)
zel_pkg_config(zel-sdk-c)
install(TARGETS ${ZEL_LOADED_LIBRARIES} RUNTIME DESTINATION ${ZEL_PLUGIN_DIR} COMPONENT libzel-sdk
                                        LIBRARY DESTINATION ${ZEL_PLUGIN_DIR} COMPONENT libzel-sdk)
if(TARGET gstzel)
    install(TARGETS gstzel LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/gstreamer-1.0 COMPONENT gstreamer1.0-zel)
endif()
if(TARGET zel_python)
    include(cmake/ZelPython.cmake)
endif()
install(TARGETS ${ZEL_TOOLS} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT zel-tools)
if(WIN32)
    zel_version_resource(edt_camera_link "Simulated cameras, Camera Link")
    zel_version_resource(pleora_ebus "Simulated cameras, eBUS")
    zel_version_resource(zel_usb "Simulated cameras, USB")
    zel_version_resource(kestrane_zel_logger "ZEL Camera SDK, logging library")
    zel_version_resource(zelcam "ZEL Camera SDK, command-line tool")
else()
    file(RELATIVE_PATH path_to_libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    foreach(tool ${ZEL_TOOLS})
        zel_find_plugins(${tool} $ORIGIN/${path_to_libraries})
    endforeach()
    install(FILES packaging/cameras/README DESTINATION ${ZEL_PLUGIN_DIR}/cameras COMPONENT libzel-sdk)
    # What tools/manual has the tools write about themselves.
    install(DIRECTORY ${CMAKE_BINARY_DIR}/man/man1/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT zel-tools)
    set(completions ${CMAKE_BINARY_DIR}/completions)
    install(FILES ${completions}/bash/zelcam COMPONENT zel-tools
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    install(FILES ${completions}/zsh/_zelcam COMPONENT zel-tools
            DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
    install(FILES ${completions}/fish/zelcam.fish COMPONENT zel-tools
            DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()

include(cmake/ZelPluginSets.cmake)

# Headers: what applications include, and what plug-ins are written against.
install(DIRECTORY include/ DESTINATION ${ZEL_INCLUDE_DIR} COMPONENT libzel-sdk-dev FILES_MATCHING PATTERN "*.h")
install(FILES link/CameraInterfaceLibrary.h link/ICameraInterface.h link/IZelCameraCommon.h link/SyncTableIndex.h
        DESTINATION ${ZEL_INCLUDE_DIR}/link COMPONENT libzel-sdk-dev)
# The kit to write them with.
foreach(header BackEnd Entry FrameSink ParameterTable Plugin)
    install(FILES devices/kit/${header}.h DESTINATION ${ZEL_INCLUDE_DIR}/devices/kit COMPONENT libzel-sdk-dev)
endforeach()
set_target_properties(zel_camera_kit PROPERTIES EXPORT_NAME CameraKit)
target_include_directories(zel_camera_kit INTERFACE $<INSTALL_INTERFACE:${ZEL_INCLUDE_DIR}>)
install(TARGETS zel_camera_kit EXPORT ZelSDKTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libzel-sdk-dev)

# find_package(ZelSDK).
install(EXPORT ZelSDKTargets NAMESPACE ZelSDK:: DESTINATION ${ZEL_CONFIG_DIR} COMPONENT libzel-sdk-dev)
configure_package_config_file(packaging/ZelSDKConfig.cmake.in ${CMAKE_BINARY_DIR}/packaging/ZelSDKConfig.cmake
                              INSTALL_DESTINATION ${ZEL_CONFIG_DIR} PATH_VARS ZEL_INCLUDE_DIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/packaging/ZelSDKConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/packaging/ZelSDKConfig.cmake ${CMAKE_BINARY_DIR}/packaging/ZelSDKConfigVersion.cmake
        DESTINATION ${ZEL_CONFIG_DIR} COMPONENT libzel-sdk-dev)

# Documents, and the examples with build files of their own.
install(FILES README.md CHANGELOG.md SECURITY.md DESTINATION ${ZEL_DOC_DIR} COMPONENT libzel-sdk-dev)
install(DIRECTORY docs DESTINATION ${ZEL_DOC_DIR} COMPONENT libzel-sdk-dev
        PATTERN CMakeLists.txt EXCLUDE PATTERN site EXCLUDE)
install(DIRECTORY examples/ DESTINATION ${ZEL_DOC_DIR}/examples COMPONENT libzel-sdk-dev
        PATTERN CMakeLists.txt EXCLUDE PATTERN python EXCLUDE)
install(FILES packaging/examples/CMakeLists.txt packaging/examples/Makefile
        DESTINATION ${ZEL_DOC_DIR}/examples COMPONENT libzel-sdk-dev)
install(FILES packaging/examples/plugin/CMakeLists.txt DESTINATION ${ZEL_DOC_DIR}/examples/plugin
        COMPONENT libzel-sdk-dev)
# Debian's packages have them in a file of another form.
install(FILES LICENSE THIRD-PARTY.md DESTINATION ${ZEL_DOC_DIR} COMPONENT licenses)
