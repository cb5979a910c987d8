// The libraries of simulated cameras, and how a camera is called across them.
#ifndef SIM_SIMLIBRARIES_H
#define SIM_SIMLIBRARIES_H

#include <span>
#include <string>
#include <vector>

namespace zel::sim {

struct SimLibrary {
    const char* name;  // without ".dll"
    int interface_type;
    const char* cameras_variable;  // of the environment: how many cameras it has
};

std::span<const SimLibrary> SimLibraries();

// The numbers of the cameras of a library that has `cameras` of them, which a word means: one camera by its number, by
// LIBRARY/NUMBER or by its serial number, or all of a model.
std::vector<int> CamerasCalled(const std::string& word, const SimLibrary& library, int cameras);

}  // namespace zel::sim

#endif
