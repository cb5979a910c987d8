// Frames as picture files.
#ifndef BINDINGS_C_SAVEFRAME_H
#define BINDINGS_C_SAVEFRAME_H

#include <string>

#include "zel/Zel.h"

namespace zel::c {

// As zel::save(), whose color pictures a program without this library's compressor can only store: here they are
// compressed.
void SaveFrame(const Frame& frame, const std::string& file_name);

}  // namespace zel::c

#endif
