# Writes the files of a web page as C++: cmake -DFOLDER=... -DOUTPUT=... -P ZelPageFiles.cmake
file(GLOB_RECURSE files RELATIVE ${FOLDER} ${FOLDER}/*)
list(SORT files)
set(types html "text/html" js "text/javascript" css "text/css" glsl "text/plain" vert "text/plain" frag "text/plain"
          svg "image/svg+xml" json "application/json")
set(data "")
set(table "")
set(number 0)
foreach(name ${files})
    string(REGEX MATCH "[^.]*$" extension ${name})
    list(FIND types ${extension} at)
    if(at LESS 0)
        message(FATAL_ERROR "${FOLDER}/${name}: no content type is known for '.${extension}'")
    endif()
    math(EXPR at "${at} + 1")
    list(GET types ${at} type)
    file(READ ${FOLDER}/${name} bytes HEX)
    string(LENGTH "${bytes}" length)
    math(EXPR length "${length} / 2")
    string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
    string(APPEND data "const unsigned char kFile${number}[] = {${bytes}0};\n")
    string(APPEND table "    {\"${name}\", \"${type}; charset=utf-8\", Text(kFile${number}, ${length})},\n")
    math(EXPR number "${number} + 1")
endforeach()
if(number EQUAL 0)
    message(FATAL_ERROR "${FOLDER} is empty")
endif()
file(WRITE ${OUTPUT}.new "// Written by cmake/ZelPageFiles.cmake.
#include \"tools/zelcam/view/PageFiles.h\"

#include <cstddef>

namespace zelcam {

namespace {

${data}
std::string_view Text(const unsigned char* bytes, std::size_t size) {
    return {reinterpret_cast<const char*>(bytes), size};
}

}  // namespace

std::span<const PageFile> AllPageFiles() {
    static const PageFile kFiles[] = {
${table}    };
    return kFiles;
}

}  // namespace zelcam
")
file(COPY_FILE ${OUTPUT}.new ${OUTPUT} ONLY_IF_DIFFERENT)
