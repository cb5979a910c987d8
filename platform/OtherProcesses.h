// What other programs on this computer use.
#ifndef PLATFORM_OTHERPROCESSES_H
#define PLATFORM_OTHERPROCESSES_H

#include <string>
#include <vector>

namespace zel::platform {

struct OtherProcess {
    unsigned long id = 0;
    std::string name;
};

// The processes other than this one that have loaded a library with this file name, from whichever folder. Those that
// this user may not look into are left out.
std::vector<OtherProcess> ProcessesWithLibrary(const std::string& file_name);

}  // namespace zel::platform

#endif
