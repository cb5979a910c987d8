#include "tools/zelcam/text/OutputFile.h"

#include <cstdio>
#include <system_error>

#include "platform/Files.h"
#include "platform/NewFile.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

namespace fs = std::filesystem;
using zel::platform::Utf8Text;

namespace {

[[noreturn]] void FailToWrite(const fs::path& path, bool opened) {
    std::error_code ignored;
    const std::string what = "'" + Utf8Text(path.generic_u8string()) + "' can't be written";
    const fs::path folder = path.parent_path();
    if (!folder.empty() && !fs::is_directory(folder, ignored)) {
        throw Failure(what, "its folder is gone", "make the folder again or choose another --out", kOutput);
    }
    if (!opened) throw Failure(what, "the file can't be opened", "choose another --out", kOutput);
    throw Failure(what, "the file came out incomplete", "make room on the disk or choose another --out", kOutput);
}

}  // namespace

fs::path PartOf(fs::path path) { return path += ".part"; }

bool ClaimFile(const fs::path& path) {
    const zel::platform::NewFile made = zel::platform::MakeNewFile(PartOf(path));
    if (made == zel::platform::NewFile::kFailed) FailToWrite(path, false);
    return made == zel::platform::NewFile::kMade;
}

void WriteWhole(const fs::path& path, std::initializer_list<std::span<const std::uint8_t>> pieces) {
    const fs::path part = PartOf(path);
    std::error_code ignored;
    // Nothing is written through a link that somebody has put there.
    if (fs::is_symlink(part, ignored)) fs::remove(part, ignored);
    std::FILE* const file = zel::platform::OpenFile(Utf8Text(part), "wb");
    if (!file) FailToWrite(path, false);
    // The bytes go straight from where they are to the system.
    std::setvbuf(file, nullptr, _IONBF, 0);
    bool whole = true;
    for (const auto piece : pieces) {
        whole = whole && std::fwrite(piece.data(), 1, piece.size(), file) == piece.size();
    }
    whole = std::fclose(file) == 0 && whole;
    std::error_code error;
    if (whole) fs::rename(part, path, error);
    if (whole && !error) return;
    fs::remove(part, ignored);
    FailToWrite(path, !error);
}

void WriteWhole(const fs::path& path, const std::string& text) {
    WriteWhole(path, {{reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}});
}

}  // namespace zelcam
