// Running the program itself as a child process.
#ifndef TESTS_ZELCAM_TOOLPROCESS_H
#define TESTS_ZELCAM_TOOLPROCESS_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "platform/User.h"
#include "platform/UserTexts.h"
#include "tests/tools/zelcam/commands/SimControl.h"

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

// Removes the cache files of the simulated cameras' calibration. On Windows they lie in the user's own folder.
inline void RemoveCacheFiles() {
    std::error_code ignored;
    for (const auto& file :
         std::filesystem::directory_iterator(zel::platform::Utf8Path(zel::platform::CalibrationFolder()), ignored)) {
        const std::string name = zel::platform::Utf8Text(file.path().filename());
        if (name.starts_with("zel_L2048-4M_300101_") || name.starts_with("zel_E150-2M_400101_")) {
            std::filesystem::remove(file.path(), ignored);
        }
    }
}

// A folder that is removed with its files.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        static int s_Count = 0;
        const auto now = std::filesystem::file_time_type::clock::now().time_since_epoch().count();
        do {
            m_Path = std::filesystem::temp_directory_path() /
                     ("zelcam-test-" + std::to_string(now) + "-" + std::to_string(++s_Count));
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
        return zel::platform::Utf8Text((m_Path / zel::platform::Utf8Path(name)).generic_u8string());
    }

  private:
    std::filesystem::path m_Path;
};

// A command line in UTF-8, for the system's shell.
inline int RunCommand(const std::string& command) {
#ifdef _WIN32
    return _wsystem(zel::platform::Utf8Path(command).c_str());
#else
    return std::system(command.c_str());
#endif
}

// Runs "NAME ARGUMENTS", a program of this folder, with the environment as it is. Arguments with blanks are quoted
// with ".
inline ToolResult RunProgram(const std::string& name, const std::string& arguments) {
    const TemporaryFolder folder;
    const std::string program = std::filesystem::path("./" + name).make_preferred().string();
    const std::string out = (folder.Path() / "out").make_preferred().string();
    const std::string err = (folder.Path() / "err").make_preferred().string();
    const std::string command = program + " " + arguments + " >\"" + out + "\" 2>\"" + err + "\"";
    const int status = RunCommand(command);
    // One system answers the exit code, the other puts it into the second byte.
    return {status > 255 ? status / 256 : status, FileText(out), FileText(err)};
}

inline ToolResult RunTool(const std::string& arguments) { return RunProgram("zelcam", arguments); }

}  // namespace zelcam

#endif
