# What Windows wants beside the code itself.

# zel_version_resource(TARGET DESCRIPTION): what the system shows as the file's properties. In a library of its own,
# since the resource compiler does not understand the options of the others.
function(zel_version_resource target ZEL_DESCRIPTION)
    set(ZEL_FILE_TYPE 2)
    set(ZEL_FILE_NAME ${target}.dll)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL EXECUTABLE)
        set(ZEL_FILE_TYPE 1)
        set(ZEL_FILE_NAME ${target}.exe)
    endif()
    string(REPLACE "." "," ZEL_VERSION_NUMBERS ${PROJECT_VERSION}.0)
    configure_file(${PROJECT_SOURCE_DIR}/packaging/version.rc.in ${CMAKE_BINARY_DIR}/packaging/${target}.rc @ONLY)
    add_library(${target}_version OBJECT ${CMAKE_BINARY_DIR}/packaging/${target}.rc)
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}_version>)
    target_link_options(${target} PRIVATE -Wl,--no-insert-timestamp)
endfunction()

# zel_import_library(TARGET): TARGET.lib, by which Microsoft's linker knows the library. It is made from the
# module-definition file that the library itself is linked with. MinGW's own, libTARGET.dll.a, comes with the linking.
function(zel_import_library target)
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources INCLUDE REGEX "\\.def$")
    get_target_property(folder ${target} SOURCE_DIR)
    get_filename_component(definition ${sources} ABSOLUTE BASE_DIR ${folder})
    find_program(ZEL_DLLTOOL llvm-dlltool REQUIRED)
    set(machine i386:x86-64)
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        set(machine i386)
    endif()
    set(library ${CMAKE_BINARY_DIR}/packaging/${target}.lib)
    add_custom_command(OUTPUT ${library}
                       COMMAND ${ZEL_DLLTOOL} -m ${machine} -d ${definition} -D ${target}.dll -l ${library}
                       DEPENDS ${definition} VERBATIM)
    add_custom_target(${target}_import_library ALL DEPENDS ${library})
    add_dependencies(${target} ${target}_import_library)
    install(FILES ${library} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libzel-sdk-dev)
endfunction()
