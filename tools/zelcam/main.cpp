// zelcam: finds, sets up and runs cameras from the command line.
#include <cstdio>
#include <exception>

#include "tools/zelcam/commands/CommandLine.h"
#include "tools/zelcam/text/Failure.h"

int main(int argc, char** argv) {
    try {
        return zelcam::RunCommandLine(argc, argv);
    } catch (const zelcam::Failure& failure) {
        std::fflush(stdout);
        std::fprintf(stderr, "zelcam: %s\n", failure.what());
        return failure.ExitCode();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zelcam: internal error: %s\n", error.what());
        return zelcam::kExitFailure;
    }
}
