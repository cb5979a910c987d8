# Libraries from Debian packages. Header-only ones are the host's headers for every product, reached through a folder
# that holds nothing else, so that the cross compiler never sees the rest of /usr/include.
set(ZEL_HEADERS ${CMAKE_BINARY_DIR}/host-include)
file(MAKE_DIRECTORY ${ZEL_HEADERS})
foreach(folder boost CLI fmt nlohmann spdlog stb)
    if(NOT EXISTS /usr/include/${folder})
        message(FATAL_ERROR "/usr/include/${folder} is missing: run scripts/setup.sh")
    endif()
    file(CREATE_LINK /usr/include/${folder} ${ZEL_HEADERS}/${folder} SYMBOLIC)
endforeach()
add_library(zel_header_libraries INTERFACE)
target_include_directories(zel_header_libraries SYSTEM INTERFACE ${ZEL_HEADERS})
target_compile_definitions(zel_header_libraries INTERFACE FMT_HEADER_ONLY=1 SPDLOG_FMT_EXTERNAL=1)

# libdeflate: Debian's library on Linux; on Windows built from the source package that scripts/libdeflate-source.sh
# fetches.
add_library(zel_deflate INTERFACE)
if(WIN32)
    set(ZEL_LIBDEFLATE_SOURCE "${PROJECT_SOURCE_DIR}/build/libdeflate" CACHE PATH "unpacked source of libdeflate")
    if(NOT EXISTS ${ZEL_LIBDEFLATE_SOURCE}/libdeflate.h)
        message(FATAL_ERROR "${ZEL_LIBDEFLATE_SOURCE} has no libdeflate.h: run scripts/libdeflate-source.sh")
    endif()
    file(GLOB ZEL_LIBDEFLATE_FILES ${ZEL_LIBDEFLATE_SOURCE}/lib/*.c ${ZEL_LIBDEFLATE_SOURCE}/lib/x86/*.c)
    add_library(zel_libdeflate STATIC ${ZEL_LIBDEFLATE_FILES})
    target_include_directories(zel_libdeflate PRIVATE ${ZEL_LIBDEFLATE_SOURCE})
    target_compile_options(zel_libdeflate PRIVATE -O2 -w ${ZEL_STACK_OPTION})
    set_target_properties(zel_libdeflate PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_include_directories(zel_deflate SYSTEM INTERFACE ${ZEL_LIBDEFLATE_SOURCE})
    target_link_libraries(zel_deflate INTERFACE zel_libdeflate)
else()
    target_link_libraries(zel_deflate INTERFACE deflate)
endif()

# lodepng, which the tests read pictures with: Debian's library on Linux; on Windows built from the source package that
# scripts/lodepng-source.sh fetches.
add_library(zel_lodepng INTERFACE)
if(WIN32)
    set(ZEL_LODEPNG_SOURCE "${PROJECT_SOURCE_DIR}/build/lodepng" CACHE PATH "unpacked source of lodepng")
    if(NOT EXISTS ${ZEL_LODEPNG_SOURCE}/lodepng.h)
        message(FATAL_ERROR "${ZEL_LODEPNG_SOURCE} has no lodepng.h: run scripts/lodepng-source.sh")
    endif()
    add_library(zel_lodepng_source STATIC ${ZEL_LODEPNG_SOURCE}/lodepng.cpp)
    target_compile_options(zel_lodepng_source PRIVATE -O2 -w)
    target_include_directories(zel_lodepng SYSTEM INTERFACE ${ZEL_LODEPNG_SOURCE})
    target_link_libraries(zel_lodepng INTERFACE zel_lodepng_source)
else()
    target_link_libraries(zel_lodepng INTERFACE lodepng)
endif()

# libtiff, which recordings are written and read with: Debian's library on Linux.
add_library(zel_tiff INTERFACE)
if(NOT WIN32)
    target_link_libraries(zel_tiff INTERFACE tiff)
endif()
