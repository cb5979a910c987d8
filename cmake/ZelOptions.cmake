# One place for what every target is compiled with.
add_library(zel_options INTERFACE)
target_compile_features(zel_options INTERFACE cxx_std_20)
target_include_directories(zel_options INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
target_compile_options(zel_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(ZEL_WARNINGS_AS_ERRORS)
    target_compile_options(zel_options INTERFACE -Werror)
endif()
# All products compute the same floating-point results: SSE arithmetic, no fused multiply-add.
target_compile_options(zel_options INTERFACE -msse2 -mfpmath=sse -ffp-contract=off)
if(WIN32)
    # 32-bit applications built with Microsoft's compiler call in with a stack aligned to 4 bytes.
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        set(ZEL_STACK_OPTION -mstackrealign)
    endif()
    target_compile_options(zel_options INTERFACE ${ZEL_STACK_OPTION})
    target_compile_definitions(zel_options INTERFACE WINVER=0x0601 _WIN32_WINNT=0x0601 WIN32_LEAN_AND_MEAN NOMINMAX
                                                     __USE_MINGW_ANSI_STDIO=1)
    target_link_options(zel_options INTERFACE -static -Wl,--enable-stdcall-fixup)
endif()
# What makes an overrun that is left end the program instead of running what somebody has written there. (Programs are
# position-independent as Debian's compilers make them.) Sanitizers look for overruns themselves.
if(NOT ZEL_SANITIZE)
    target_compile_options(zel_options INTERFACE -fstack-protector-strong)
    if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
        target_compile_options(zel_options INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    endif()
    if(WIN32)
        target_link_options(zel_options INTERFACE -fstack-protector-strong -Wl,--dynamicbase,--nxcompat)
        if(CMAKE_SIZEOF_VOID_P EQUAL 8)
            target_link_options(zel_options INTERFACE -Wl,--high-entropy-va)
        endif()
    else()
        target_compile_options(zel_options INTERFACE -fstack-clash-protection)
        target_link_options(zel_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
    endif()
endif()
if(ZEL_SANITIZE)
    # Pooled image records are zeroed memory with no virtual-table pointer, which the vptr check does not expect.
    target_compile_options(zel_options INTERFACE -fsanitize=${ZEL_SANITIZE} -fno-sanitize=vptr
                                                 -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(zel_options INTERFACE -fsanitize=${ZEL_SANITIZE})
endif()
option(ZEL_LIBFUZZER "Link libFuzzer into the fuzz targets instead of their plain main (needs Clang)" OFF)
if(ZEL_LIBFUZZER)
    target_compile_options(zel_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

find_package(Threads REQUIRED)
target_link_libraries(zel_options INTERFACE Threads::Threads)

# zel_object_library(NAME SOURCES... [LINK targets...]): the objects of one folder, hidden symbols, position independent.
function(zel_object_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    add_library(${name} OBJECT ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC zel_options ${ARG_LINK})
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# zel_shared_library(NAME SOURCES... [LINK targets...]): a library that is loaded by name at run time. Its file is
# NAME.dll on Windows and libNAME.so on Linux, where it finds its neighbours through $ORIGIN.
function(zel_shared_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    add_library(${name} SHARED ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE zel_options ${ARG_LINK})
    set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
                                             BUILD_RPATH "$ORIGIN" INSTALL_RPATH "$ORIGIN" BUILD_RPATH_USE_ORIGIN ON)
    if(WIN32)
        set_target_properties(${name} PROPERTIES PREFIX "")
    endif()
endfunction()

# In batches, most headers are parsed once for a dozen files instead of a dozen times; a file that includes too little is
# noticed where each is compiled alone.
option(ZEL_BATCHES "The files of a target are compiled in a few batches" OFF)
set(CMAKE_UNITY_BUILD ${ZEL_BATCHES})
set(CMAKE_UNITY_BUILD_BATCH_SIZE 12)
if(ZEL_BATCHES)
    # A class that is defined in a source file may use what is that file's own.
    add_compile_options($<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>)
endif()

# zel_compile_alone(NAME...): files whose names in anonymous namespaces are the same; never in batches.
function(zel_compile_alone)
    set_target_properties(${ARGN} PROPERTIES UNITY_BUILD OFF)
endfunction()

# zel_compile_fast(NAME...): code that runs once or waits for the user. It need not be fast; compiling it should be.
function(zel_compile_fast)
    foreach(name ${ARGN})
        target_compile_options(${name} PRIVATE -O1)
        if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
            # GCC 12 warns of bounds inside its own std::string when texts are concatenated.
            target_compile_options(${name} PRIVATE -Wno-restrict)
        endif()
    endforeach()
endfunction()

# Compiles GoogleTest's headers once and lets test programs use the result.
function(zel_share_test_headers name)
    if(NOT TARGET zel_test_headers)
        file(WRITE ${CMAKE_BINARY_DIR}/test_headers.cpp "// Nothing but the precompiled headers.\n")
        add_library(zel_test_headers OBJECT ${CMAKE_BINARY_DIR}/test_headers.cpp)
        target_link_libraries(zel_test_headers PRIVATE zel_options GTest::gmock_main)
        target_compile_options(zel_test_headers PRIVATE -O1)
        target_precompile_headers(zel_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
    endif()
    target_precompile_headers(${name} REUSE_FROM zel_test_headers)
endfunction()

# zel_test(NAME SOURCES... [LINK targets...] [DEPENDS targets...]): one GoogleTest program, one entry for ctest. It runs
# in the folder it stands in, where Windows looks for libraries too.
function(zel_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINK;DEPENDS" ${ARGN})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 300)
    endif()
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE zel_options GTest::gmock_main ${ARG_LINK} zel_test_support)
    zel_compile_fast(${name})
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        target_compile_options(${name} PRIVATE -Wno-array-bounds -Wno-stringop-overflow)
    endif()
    # GoogleTest's headers are parsed once for all.
    zel_share_test_headers(${name})
    if(WIN32)
        if(NOT TARGET zel_watcher_thread)
            add_library(zel_watcher_thread OBJECT ${PROJECT_SOURCE_DIR}/tests/support/WatcherThread.cpp)
            target_link_libraries(zel_watcher_thread PRIVATE zel_options GTest::gtest)
        endif()
        target_link_libraries(${name} PRIVATE zel_watcher_thread)
    endif()
    set_target_properties(${name} PROPERTIES BUILD_RPATH "$ORIGIN" BUILD_RPATH_USE_ORIGIN ON)
    if(ARG_DEPENDS)
        add_dependencies(${name} ${ARG_DEPENDS})
    endif()
    add_test(NAME ${name} COMMAND ${name} WORKING_DIRECTORY $<TARGET_FILE_DIR:${name}>)
    set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT})
endfunction()
