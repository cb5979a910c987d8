// Names of the public error codes.
#ifndef CAMERA_ERRORNAMES_H
#define CAMERA_ERRORNAMES_H

namespace zel {

// The name of a code, or null for a code without one.
// On purpose: code 16 answers two joined names and code 17 has none; applications compare these texts.
const char* ErrorName(int code);

}  // namespace zel

#endif
