#include "tools/zelcam/text/OutputFile.h"

#include <system_error>

#include "platform/NewFile.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

bool ClaimFile(const std::filesystem::path& path) {
    const zel::platform::NewFile made = zel::platform::MakeNewFile(path);
    if (made == zel::platform::NewFile::kFailed) FailToWrite(path, false);
    return made == zel::platform::NewFile::kMade;
}

void FailToWrite(const std::filesystem::path& path, bool opened) {
    std::error_code ignored;
    const std::string what = "'" + zel::platform::Utf8Text(path.generic_u8string()) + "' can't be written";
    const std::filesystem::path folder = path.parent_path();
    if (!folder.empty() && !std::filesystem::is_directory(folder, ignored)) {
        throw Failure(what, "its folder is gone", "make the folder again or choose another --out", kOutput);
    }
    if (!opened) throw Failure(what, "the file can't be opened", "choose another --out", kOutput);
    if (std::filesystem::is_regular_file(path, ignored)) std::filesystem::remove(path, ignored);
    throw Failure(what, "the file came out incomplete", "make room on the disk or choose another --out", kOutput);
}

}  // namespace zelcam
