#include "platform/OtherProcesses.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace zel::platform {

namespace {

// A line of the list ends in the path of what is mapped, and " (deleted)" when that was replaced since.
bool Maps(const std::filesystem::path& process, const std::string& ending) {
    std::ifstream maps(process / "maps");
    for (std::string line; std::getline(maps, line);) {
        const std::size_t found = line.rfind(ending);
        if (found == std::string::npos) continue;
        const std::size_t end = found + ending.size();
        if (end == line.size() || line[end] == ' ') return true;
    }
    return false;
}

}  // namespace

std::vector<OtherProcess> ProcessesWithLibrary(const std::string& file_name) {
    std::vector<OtherProcess> processes;
    std::error_code error;
    std::filesystem::directory_iterator entry("/proc", error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        OtherProcess process;
        process.id = std::strtoul(entry->path().filename().c_str(), nullptr, 10);
        if (process.id == 0 || process.id == static_cast<unsigned long>(getpid())) continue;
        if (!Maps(entry->path(), "/" + file_name)) continue;
        std::ifstream(entry->path() / "comm") >> process.name;
        processes.push_back(process);
    }
    return processes;
}

}  // namespace zel::platform
