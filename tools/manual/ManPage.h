// Manual pages in the form that man(1) shows.
#ifndef TOOLS_MANUAL_MANPAGE_H
#define TOOLS_MANUAL_MANPAGE_H

#include <string>
#include <utility>
#include <vector>

#include "tools/manual/CommandTree.h"

namespace zel::manual {

// A section behind those that every page has: terms, each with what it means.
struct ManSection {
    std::string title;
    std::vector<std::pair<std::string, std::string>> terms;
};

struct ManBook {
    std::string program;                // "zelcam"
    std::string version;                // "3.6.0"
    std::vector<std::string> see_also;  // pages of other programs: "zelcam(1)"
};

// The page of a program or of one of its commands. Commands of the program get pages of their own, what is below them
// is part of theirs. From the footer come the lines that begin with "Example:" and, except of a program, the others.
std::string ManPage(const CommandText& command, const ManBook& book, const std::vector<ManSection>& more);

// "zelcam-capture.1"
std::string ManFileName(const CommandText& command, const ManBook& book);

}  // namespace zel::manual

#endif
