#include "platform/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <thread>

namespace zel::platform {

struct ChildProcess::State {
    pid_t process = -1;
    bool group = false;  // it leads one, which is killed with it
    int output = -1;
    bool ended = false;
    ProcessEnd end;

    // Whether it has ended; its end is fetched once.
    bool Fetch(int options) {
        int status = 0;
        if (process < 0 || ended) return ended;
        if (waitpid(process, &status, options) != process) return false;
        end.crashed = WIFSIGNALED(status);
        end.code = end.crashed ? WTERMSIG(status) : WEXITSTATUS(status);
        ended = true;
        return true;
    }
};

std::string ProcessEnd::Text() const {
    if (!crashed) return "ended with exit code " + std::to_string(code);
    const char* const name = strsignal(code);
    return "crashed with signal " + std::to_string(code) + (name ? std::string(" (") + name + ")" : "");
}

namespace {

// Between fork and exec only what a signal handler may do is allowed.
[[noreturn]] void Become(char* const* words, int output, pid_t parent, bool group) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (group) setpgid(0, 0);
    if (getppid() != parent) _exit(127);
    const int input = open("/dev/null", O_RDONLY);
    if (input >= 0) dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    execv(words[0], words);
    _exit(127);
}

}  // namespace

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments)
    : m_State(std::make_unique<State>()) {
    Start(program, arguments);
}

ChildProcess::ChildProcess(const ShellLine& line) : m_State(std::make_unique<State>()) {
    m_State->group = true;
    Start("/bin/sh", {"-c", line.text});
}

void ChildProcess::Start(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<std::string> texts{program};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> words;
    for (std::string& text : texts) words.push_back(text.data());
    words.push_back(nullptr);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    const pid_t parent = getpid();
    m_State->process = fork();
    if (m_State->process == 0) Become(words.data(), ends[1], parent, m_State->group);
    // Here as well: whoever is first.
    if (m_State->process > 0 && m_State->group) setpgid(m_State->process, m_State->process);
    close(ends[1]);
    m_State->output = ends[0];
}

ChildProcess::~ChildProcess() {
    Kill();
    m_State->Fetch(0);
    if (m_State->output >= 0) close(m_State->output);
}

bool ChildProcess::Started() const { return m_State->process > 0; }

ChildProcess::Output ChildProcess::Read(std::string& text, unsigned milliseconds) {
    pollfd ready{m_State->output, POLLIN, 0};
    if (m_State->output < 0) return Output::kEnded;
    if (poll(&ready, 1, static_cast<int>(milliseconds)) <= 0) return Output::kNothing;
    char bytes[4096];
    const ssize_t count = read(m_State->output, bytes, sizeof bytes);
    if (count <= 0) return Output::kEnded;
    text.append(bytes, static_cast<std::size_t>(count));
    return Output::kSome;
}

void ChildProcess::Kill() {
    if (m_State->process > 0 && !m_State->ended) kill(m_State->group ? -m_State->process : m_State->process, SIGKILL);
}

bool ChildProcess::Wait(unsigned milliseconds, ProcessEnd& end) {
    using Clock = std::chrono::steady_clock;
    const auto last = Clock::now() + std::chrono::milliseconds(milliseconds);
    while (!m_State->Fetch(WNOHANG)) {
        if (Clock::now() >= last) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    end = m_State->end;
    return true;
}

void CrashQuietly() {
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
}

}  // namespace zel::platform
