// Files that are to be written. Under its name a file is whole or not there: it is written as NAME.part and takes its
// place when it is complete, also when the program is killed meanwhile.
#ifndef ZELCAM_OUTPUTFILE_H
#define ZELCAM_OUTPUTFILE_H

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <span>
#include <string>

namespace zelcam {

// What a file is called until it is complete.
std::filesystem::path PartOf(std::filesystem::path path);

// Makes the part of a file, empty, where none is, and none else will until it has become the file; false when one is
// there. Throws Failure.
bool ClaimFile(const std::filesystem::path& path);

// Writes the pieces one behind the other, in the place of what stands there. Throws Failure, and leaves what was there.
void WriteWhole(const std::filesystem::path& path, std::initializer_list<std::span<const std::uint8_t>> pieces);
void WriteWhole(const std::filesystem::path& path, const std::string& text);

}  // namespace zelcam

#endif
