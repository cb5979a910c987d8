#include "platform/StoredFile.h"

#include <unistd.h>

namespace zel::platform {

bool FlushToDisk(std::FILE* file) { return fsync(fileno(file)) == 0; }

bool MoveIntoPlace(const char* from, const char* to) { return std::rename(from, to) == 0; }

}  // namespace zel::platform
