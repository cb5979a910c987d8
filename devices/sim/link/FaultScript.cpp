#include "devices/sim/link/FaultScript.h"

#include <algorithm>
#include <exception>
#include <sstream>
#include <system_error>

#include "devices/sim/link/Complaints.h"
#include "devices/sim/link/Settings.h"
#include "devices/sim/link/SimCommands.h"
#include "devices/sim/link/SimLibraries.h"
#include "platform/DynamicLibrary.h"

namespace zel::sim {

namespace {

constexpr double kLongestTime = 1e6;  // seconds

void Tell(const std::string& line, const std::string& reason) { Complain("ZEL_SIM_FAULTS: '" + line + "': " + reason); }

// "2.5" or "2.5+0.1".
bool ReadTimes(const std::string& word, double& due, double& period) {
    std::istringstream numbers(word);
    numbers.imbue(std::locale::classic());
    char plus = 0;
    if (!(numbers >> due) || due < 0.0 || due > kLongestTime) return false;
    if (numbers.eof()) return true;
    return numbers >> plus >> period && plus == '+' && numbers.eof() && period >= 0.001 && period <= kLongestTime;
}

}  // namespace

FaultScript::FaultScript(SimPlugin& plugin, const std::string& script, int interface_type) : m_Plugin(plugin) {
    for (Line& line : Parse(script, interface_type)) {
        line.timed ? m_Lines.push_back(std::move(line)) : Do(line);
    }
    if (m_Lines.empty()) return;
    platform::PinThisLibrary();  // who lets go of the library may not wait for the thread
    try {
        m_Thread = std::thread([this] { Run(); });
    } catch (const std::system_error&) {
        Tell(script, "there is no thread for it");
    }
}

FaultScript::~FaultScript() {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Ended = true;
    }
    m_Changed.notify_all();
    if (m_Thread.joinable()) m_Thread.join();
}

std::vector<FaultScript::Line> FaultScript::Parse(const std::string& script, int interface_type) const {
    std::vector<Line> lines;
    std::istringstream texts(script);
    for (std::string text; std::getline(texts, text, ';');) {
        std::string time, name, camera, rest;
        text.erase(0, text.find_first_not_of(" \t\n"));
        std::istringstream words(text);
        if (text.empty()) continue;
        Line line;
        line.timed = words.peek() == '@';
        if (line.timed) words >> time;
        double due = 0.0;
        double period = 0.0;
        if (line.timed && !ReadTimes(time.substr(1), due, period)) {
            Tell(text, "expected @SECONDS or @SECONDS+PERIOD");
            continue;
        }
        line.due = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(due));
        line.period = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(period));
        words >> name >> camera;
        std::getline(words >> std::ws, rest);
        if (const std::string reason = WrongWith(name, rest); !reason.empty()) {
            Tell(text, reason);
            continue;
        }
        bool known = false;
        for (const SimLibrary& library : SimLibraries()) {
            const std::vector<int> numbers = CamerasCalled(camera, library, CamerasOf(library));
            known = known || !numbers.empty();
            if (library.interface_type != interface_type) continue;
            for (const int number : numbers) line.commands.push_back(name + ' ' + std::to_string(number) + ' ' + rest);
        }
        if (!known) Tell(text, "no camera is called '" + camera + "'");
        if (!line.commands.empty()) lines.push_back(std::move(line));
    }
    return lines;
}

void FaultScript::Do(const Line& line) {
    for (const std::string& command : line.commands) {
        std::string answer;
        if (!RunSimCommand(m_Plugin, command, answer)) Tell(command, answer);
    }
}

void FaultScript::Run() {
    const auto sooner = [](const Line& a, const Line& b) { return a.due < b.due; };
    try {
        while (!m_Lines.empty()) {
            const auto next = std::min_element(m_Lines.begin(), m_Lines.end(), sooner);
            {
                platform::ScopedLock lock(m_Lock);
                if (m_Changed.wait_until(lock, m_Start + next->due, [this]() ZEL_REQUIRES(m_Lock) { return m_Ended; }))
                    return;
            }
            Do(*next);
            next->due += next->period;
            if (next->period == Clock::duration::zero()) m_Lines.erase(next);
        }
    } catch (const std::exception&) {
        // Without memory the rest is left out.
    }
}

}  // namespace zel::sim
