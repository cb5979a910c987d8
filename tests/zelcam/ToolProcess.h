// Running the program itself as a child process.
#ifndef TESTS_ZELCAM_TOOLPROCESS_H
#define TESTS_ZELCAM_TOOLPROCESS_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "tests/zelcam/SimControl.h"

namespace zelcam {

struct ToolResult {
    int exit_code;
    std::string out;
    std::string err;

    // The standard output as JSON; a discarded value when it is not.
    nlohmann::json Json() const { return nlohmann::json::parse(out, nullptr, false); }
};

inline std::string FileText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// A folder that is removed with its files.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        static int s_Count = 0;
        const auto now = std::filesystem::file_time_type::clock::now().time_since_epoch().count();
        m_Path = std::filesystem::temp_directory_path() /
                 ("zelcam-test-" + std::to_string(now) + "-" + std::to_string(++s_Count));
        std::filesystem::create_directories(m_Path);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_Path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return m_Path; }
    std::string operator/(const std::string& name) const { return (m_Path / name).generic_string(); }

  private:
    std::filesystem::path m_Path;
};

// Runs "zelcam ARGUMENTS" of this folder with the environment as it is. Arguments with blanks are quoted with ".
inline ToolResult RunTool(const std::string& arguments) {
    const TemporaryFolder folder;
    const std::string program = std::filesystem::path("./zelcam").make_preferred().string();
    const std::string out = (folder.Path() / "out").make_preferred().string();
    const std::string err = (folder.Path() / "err").make_preferred().string();
    const std::string command = program + " " + arguments + " >\"" + out + "\" 2>\"" + err + "\"";
    const int status = std::system(command.c_str());
    // One system answers the exit code, the other puts it into the second byte.
    return {status > 255 ? status / 256 : status, FileText(out), FileText(err)};
}

}  // namespace zelcam

#endif
