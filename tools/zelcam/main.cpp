// zelcam: finds, sets up and runs cameras from the command line.
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "platform/LibraryFiles.h"
#include "platform/Terminal.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/commands/CommandLine.h"
#include "tools/zelcam/text/Failure.h"

int main(int argc, char** argv) {
    zel::platform::LeaveCurrentFolderOut();
    const zel::platform::Utf8Console console;
    try {
        std::vector<std::string> arguments = zel::platform::Arguments(argc, argv);
        std::vector<char*> words;
        for (std::string& argument : arguments) words.push_back(argument.data());
        words.push_back(nullptr);
        return zelcam::RunCommandLine(static_cast<int>(arguments.size()), words.data());
    } catch (const zelcam::Failure& failure) {
        std::fflush(stdout);
        std::fprintf(stderr, "zelcam: %s\n", failure.what());
        return failure.ExitCode();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zelcam: internal error: %s\n", error.what());
        return zelcam::kExitFailure;
    }
}
