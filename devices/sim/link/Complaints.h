// What the simulated cameras have to tell their user: lines on the standard error stream.
#ifndef SIM_COMPLAINTS_H
#define SIM_COMPLAINTS_H

#include <string>

namespace zel::sim {

// Tells a line, once in a process, whichever of the libraries finds it out first. Throws std::bad_alloc only.
void Complain(const std::string& line);

// Whether this library has told the line.
bool HasTold(const std::string& line);

}  // namespace zel::sim

#endif
