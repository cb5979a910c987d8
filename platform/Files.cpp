#include "platform/Files.h"

#include <array>
#include <cstdio>
#include <exception>
#include <memory>

#include "platform/StoredFile.h"

namespace zel::platform {

namespace {
struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closer>;

bool WriteAndFlush(File file, const std::string& contents) {
    const bool written = std::fwrite(contents.data(), 1, contents.size(), file.get()) == contents.size();
    const bool flushed = written && std::fflush(file.get()) == 0 && FlushToDisk(file.get());
    return std::fclose(file.release()) == 0 && flushed;
}
}  // namespace

bool ReadTextFile(const std::string& path, std::size_t limit, std::string& contents) {
    try {
        const File file(OpenStoredFile(path.c_str()));
        if (!file) return false;
        contents.clear();
        std::array<char, 4096> part;
        while (const std::size_t count = std::fread(part.data(), 1, part.size(), file.get())) {
            if (count > limit - contents.size()) return false;
            contents.append(part.data(), count);
        }
        return std::ferror(file.get()) == 0;
    } catch (const std::exception&) {
        return false;
    }
}

bool ReplaceTextFile(const std::string& path, const std::string& contents) {
    try {
        const std::string part = path + ".part";
        File file(MakeStoredFile(part.c_str()));
        if (!file) return false;
        if (WriteAndFlush(std::move(file), contents) && MoveIntoPlace(part.c_str(), path.c_str())) return true;
        RemoveFile(part.c_str());
    } catch (const std::exception&) {
    }
    return false;
}

}  // namespace zel::platform
