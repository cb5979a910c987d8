// How long a user waits for the list of cameras: from the start of the tool's process to its end, by the clock on the
// wall.
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>

#include "bench/Figure.h"

int main(int argc, char** argv) {
    zel::bench::Report report(argc, argv);
    const std::string command = std::string(ZEL_TOOL_FILE) + " list > /dev/null";
    std::vector<double> seconds;
    for (int i = 0; i < report.Repetitions(21); ++i) {
        const auto start = std::chrono::steady_clock::now();
        if (std::system(command.c_str()) != 0) return 1;
        seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(seconds.begin(), seconds.end());
    report.Add({"tool.list_four_cameras", seconds[seconds.size() / 2], "s", zel::bench::AtMost(0.2)});
    return report.Finish();
}
