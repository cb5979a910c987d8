#include "platform/StoredFile.h"

#include <io.h>
#include <windows.h>

namespace zel::platform {

bool FlushToDisk(std::FILE* file) { return _commit(_fileno(file)) == 0; }

bool MoveIntoPlace(const char* from, const char* to) {
    return MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

}  // namespace zel::platform
