// Folders and files that end with the object. Names are UTF-8 on every system.
#ifndef TESTS_SUPPORT_TEMPORARYFOLDER_H
#define TESTS_SUPPORT_TEMPORARYFOLDER_H

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "platform/UserTexts.h"

namespace zel::test {

inline std::string FileText(const std::filesystem::path& path, std::ios::openmode mode = std::ios::binary) {
    std::ifstream file(path, mode);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

class TemporaryFolder {
  public:
    TemporaryFolder() {
        static std::atomic<int> s_Count = 0;
        const auto now = std::filesystem::file_time_type::clock::now().time_since_epoch().count();
        do {
            m_Path = std::filesystem::temp_directory_path() /
                     ("zel-test-" + std::to_string(now) + "-" + std::to_string(++s_Count));
        } while (!std::filesystem::create_directories(m_Path));  // another program's
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_Path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return m_Path; }
    std::string operator/(const std::string& name) const {
        return platform::Utf8Text((m_Path / platform::Utf8Path(name)).generic_u8string());
    }
    std::string Quoted(const std::string& name) const { return " \"" + *this / name + "\" "; }

  private:
    std::filesystem::path m_Path;
};

// A file with these bytes, or only its name when there are none.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& bytes = "", const std::string& ending = ".tif")
        : m_Path(m_Folder.Path() / platform::Utf8Path("gr\xC3\xBC\xC3\x9F" + ending)) {
        if (!bytes.empty()) std::ofstream(m_Path, std::ios::binary) << bytes;
    }
    const std::filesystem::path& Path() const { return m_Path; }
    std::string Name() const { return platform::Utf8Text(m_Path); }

  private:
    const TemporaryFolder m_Folder;
    const std::filesystem::path m_Path;
};

}  // namespace zel::test

#endif
