#include "platform/User.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <system_error>
#include <vector>

namespace zel::platform {

namespace {

// A folder from the environment; one that does not begin at the root counts as not set.
std::filesystem::path FolderFromEnvironment(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value == '/' ? std::filesystem::path(value) : std::filesystem::path();
}

// The home folder that the system's user list gives, for programs that run with an empty environment.
std::filesystem::path ListedHome() {
    std::vector<char> texts(16384);
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &found);
    return found && found->pw_dir && *found->pw_dir == '/' ? found->pw_dir : "";
}

std::filesystem::path LocalDataFolder() {
    std::filesystem::path folder = FolderFromEnvironment("XDG_DATA_HOME");
    if (!folder.empty()) return folder;
    folder = FolderFromEnvironment("HOME");
    if (folder.empty()) folder = ListedHome();
    return folder.empty() ? folder : folder / ".local" / "share";
}

}  // namespace

std::string CalibrationFolderPath() {
    try {
        const std::filesystem::path folder = LocalDataFolder();
        return folder.empty() ? "" : (folder / "ZEL").string();
    } catch (const std::exception&) {
        return "";
    }
}

bool FolderIsWritable(const std::string& folder) { return access(folder.c_str(), W_OK | X_OK) == 0; }

std::string CalibrationFolder() {
    try {
        const std::filesystem::path folder = CalibrationFolderPath();
        if (folder.empty()) return "";
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        return std::filesystem::is_directory(folder, error) ? folder.string() : "";
    } catch (const std::exception&) {
        return "";
    }
}

char PathSeparator() { return '/'; }

}  // namespace zel::platform
