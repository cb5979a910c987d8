#include "tools/zelcam/view/PageFiles.h"

#include <algorithm>

namespace zelcam {

// AllPageFiles() is written by cmake/ZelPageFiles.cmake.
const PageFile* FindPageFile(std::string_view name) {
    if (name.empty()) name = "index.html";
    const auto files = AllPageFiles();
    const auto found =
        std::find_if(files.begin(), files.end(), [&](const PageFile& file) { return file.name == name; });
    return found == files.end() ? nullptr : &*found;
}

}  // namespace zelcam
