#include "tools/zelcam/check/CheckRun.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "platform/ChildProcess.h"
#include "platform/LibraryFiles.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Interrupt.h"

namespace zelcam::check {

namespace {

using Clock = std::chrono::steady_clock;
using zel::platform::ChildProcess;

// After so many the rest is not tried: each takes the whole time limit.
constexpr int kMostHangs = 3;
constexpr unsigned kSliceMs = 20;

std::vector<std::string> Split(const std::string& line) {
    std::vector<std::string> words;
    for (std::size_t begin = 0; begin <= line.size();) {
        const std::size_t end = std::min(line.find('\t', begin), line.size());
        words.push_back(line.substr(begin, end - begin));
        begin = end + 1;
    }
    return words;
}

class Checks {
  public:
    Checks(const CheckPlan& plan, const std::function<void(const ClauseResult&)>& told) : m_Plan(plan), m_Told(told) {}

    void Run() {
        while (m_Next < m_Plan.clauses.size()) {
            if (m_Hangs >= kMostHangs) {
                Tell("skip", fmt::format("given up after {} clauses that hung", m_Hangs));
            } else {
                RunProcess();
            }
        }
    }

  private:
    const Clause& NextClause() const { return *m_Plan.clauses[m_Next]; }

    void RunProcess() {
        std::string ids;
        for (std::size_t i = m_Next; i < m_Plan.clauses.size(); ++i) {
            ids += std::string(ids.empty() ? "" : ",") + m_Plan.clauses[i]->id;
        }
        std::vector<std::string> words = m_Plan.program_options;
        words.insert(words.end(), {"check-plugin", "--worker", ids, "--worker-camera", std::to_string(m_NextCamera)});
        if (m_Plan.only_camera != kAllCameras) {
            words.insert(words.end(), {"--camera", std::to_string(m_Plan.only_camera)});
        }
        words.insert(words.end(), {"--", m_Plan.file});
        ChildProcess process(zel::platform::ProgramFile(), words);
        if (!process.Started()) throw Failure("no process can be started for the check", "", "");
        m_Open = m_Begun = m_Ended = false;
        m_Operations.clear();
        const bool in_time = Follow(process);
        zel::platform::ProcessEnd end;
        if (m_Ended) {
            m_Next = m_Plan.clauses.size();
        } else if (!in_time || !process.Wait(RestMs(), end)) {
            process.Kill();
            ++m_Hangs;
            Close(fmt::format("did not come back within {} s", m_Plan.time_limit));
        } else if (m_Open && !NextClause().check && !end.crashed && end.code == 0) {
            Tell("ok", end.Text());
        } else {
            Close(end.Text());
        }
    }

    // Until the process writes no more; false when a clause took too long.
    bool Follow(ChildProcess& process) {
        std::string text;
        Restart();
        for (;;) {
            const ChildProcess::Output output = process.Read(text, kSliceMs);
            FailIfInterrupted("");
            if (output == ChildProcess::Output::kEnded) return true;
            for (std::size_t end; (end = text.find('\n')) != std::string::npos;) {
                Take(text.substr(0, end > 0 && text[end - 1] == '\r' ? end - 1 : end));
                text.erase(0, end + 1);
            }
            if (Clock::now() >= m_Limit) return false;
        }
    }

    void Take(const std::string& line) {
        if (line.empty()) return;
        if (line.front() != kWorkerMark) {
            std::fprintf(stderr, "%s\n", line.c_str());  // what the plug-in prints itself
            return;
        }
        const std::vector<std::string> words = Split(line.substr(1));
        const std::string& word = words.front();
        if (word == "in" && words.size() == 2) {
            m_Operations.push_back(words[1]);
        } else if (word == "out" && words.size() == 2) {
            const auto found = std::find(m_Operations.rbegin(), m_Operations.rend(), words[1]);
            if (found != m_Operations.rend()) m_Operations.erase(std::next(found).base());
        } else if (word == "begin" && words.size() == 3) {
            Begin(words[1], std::atoi(words[2].c_str()));
        } else if (word == "done" && words.size() >= 5 && m_Open) {
            Tell(words[3], words[4]);
        } else if (word == "end") {
            m_Ended = true;
        }
    }

    void Begin(const std::string& id, int camera) {
        const auto found = std::ranges::find_if(m_Plan.clauses, [&](const Clause* clause) { return clause->id == id; });
        if (found == m_Plan.clauses.end()) throw Failure("internal error", "a clause of another check", "");
        m_Next = static_cast<std::size_t>(found - m_Plan.clauses.begin());
        m_NextCamera = camera;
        m_Open = m_Begun = true;
        m_Operations.clear();
        Restart();
    }

    // The process is gone in the middle of a clause, or where none is begun.
    void Close(std::string seen) {
        const std::size_t clause = m_Next;
        if (m_Open || (!m_Begun && m_NextCamera == 0)) {
            if (!m_Operations.empty()) seen += ", in " + m_Operations.back();
            Tell("FAIL", seen);
            if (m_Begun) return;
        } else if (m_Begun && m_NextCamera == 0) {
            return;
        }
        // It did not come as far as to look for another camera.
        m_Next = clause + 1;
        m_NextCamera = 0;
    }

    void Tell(const std::string& state, const std::string& seen) {
        m_Told({&NextClause(), m_NextCamera, state, seen});
        m_Open = false;
        Restart();
        NextClause().of_camera&& state != "skip" && m_Plan.only_camera == kAllCameras ? ++m_NextCamera : Advance();
    }

    int Advance() {
        ++m_Next;
        return m_NextCamera = 0;
    }

    void Restart() {
        m_Limit = Clock::now() + std::chrono::microseconds(static_cast<std::int64_t>(m_Plan.time_limit * 1e6));
    }
    unsigned RestMs() const {
        const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(m_Limit - Clock::now()).count();
        return static_cast<unsigned>(std::max<std::int64_t>(rest, 0));
    }

    const CheckPlan& m_Plan;
    const std::function<void(const ClauseResult&)>& m_Told;
    std::size_t m_Next = 0;  // of the plan's clauses: the one under way, or to come
    int m_NextCamera = 0;
    int m_Hangs = 0;
    Clock::time_point m_Limit;

    // Of the present process.
    bool m_Open = false;                    // a clause is under way
    bool m_Begun = false;                   // one was
    bool m_Ended = false;                   // all are done
    std::vector<std::string> m_Operations;  // that the plug-in has not returned from
};

}  // namespace

void RunChecks(const CheckPlan& plan, const std::function<void(const ClauseResult&)>& told) {
    Checks(plan, told).Run();
}

}  // namespace zelcam::check
