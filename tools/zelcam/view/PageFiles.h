// The files of the viewer's page, which are part of this program.
#ifndef ZELCAM_PAGEFILES_H
#define ZELCAM_PAGEFILES_H

#include <span>
#include <string_view>

namespace zelcam {

struct PageFile {
    std::string_view name;  // below the page: "", "viewer.js", "parts/histogram.js"
    std::string_view type;  // as browsers want it: "text/css; charset=utf-8"
    std::string_view contents;
};

// Null for a name that is none.
const PageFile* FindPageFile(std::string_view name);
std::span<const PageFile> AllPageFiles();

}  // namespace zelcam

#endif
