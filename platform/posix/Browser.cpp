#include "platform/Browser.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <thread>

extern char** environ;

namespace zel::platform {

bool OpenInBrowser(const std::string& address) {
    // What the browser prints is not the program's.
    posix_spawn_file_actions_t actions;
    if (posix_spawn_file_actions_init(&actions) != 0) return false;
    for (const int stream : {0, 1, 2}) posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_RDWR, 0);
    char program[] = "xdg-open";
    std::string argument = address;
    char* const arguments[] = {program, argument.data(), nullptr};
    pid_t process = 0;
    const bool started = posix_spawnp(&process, program, &actions, nullptr, arguments, environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    // xdg-open may stay for as long as the browser: somebody has to take its end.
    if (started) std::thread([process] { waitpid(process, nullptr, 0); }).detach();
    return started;
}

}  // namespace zel::platform
