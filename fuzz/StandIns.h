// What the product loads by name and reads as text files, as part of the program: nothing is looked for on the disk.
// The logging library is always there; it takes lines, and reads them to their end, while it is switched on.
#ifndef FUZZ_STANDINS_H
#define FUZZ_STANDINS_H

#include <map>
#include <string>

namespace zel::fuzz {

// The exports of a library by their names.
using Exports = std::map<std::string, void*>;

// Null: the library of this canonical name can't be loaded. The exports must stay.
void SetStandIn(const std::string& name, const Exports* exports);
void SetLogging(bool on);
// Text files by their paths.
std::map<std::string, std::string>& Files();

}  // namespace zel::fuzz

#endif
