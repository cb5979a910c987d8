#include "devices/sim/link/SimCommands.h"

#include <algorithm>
#include <iterator>
#include <sstream>

namespace zel::sim {

namespace {

// Instead of a fault.
constexpr const char* kClear = "clear";
constexpr const char* kCalcNever = "calc-never";

// One command at work: the words after the camera's number, and where its answer goes.
struct Call {
    SimPlugin& plugin;
    int number;
    SimCamera& camera;
    std::istringstream& words;
    std::string& answer;
};

std::string Rest(std::istringstream& words) {
    std::string rest;
    std::getline(words >> std::ws, rest);
    return rest;
}

bool Plug(const Call& call, bool plugged) {
    if (call.plugin.ChangePlug(call.number, plugged)) return true;
    call.answer = plugged ? "the camera is plugged in" : "the camera is not plugged in";
    return false;
}

bool DoPlug(const Call& call) { return Plug(call, true); }
bool DoUnplug(const Call& call) { return Plug(call, false); }

bool DoFault(const Call& call) {
    const std::string line = Rest(call.words);
    if (line == kClear) {
        call.camera.ClearFaults();
        return true;
    }
    if (line == kCalcNever) {
        call.camera.SetCalcNeverEnds(true);
        return true;
    }
    const std::optional<Fault> fault = ParseFault(line, call.answer);
    if (fault) call.camera.AddFault(*fault);
    return fault.has_value();
}

bool DoLog(const Call& call) {
    std::size_t last = SimCamera::kLongestLog;
    if (!(call.words >> last)) last = SimCamera::kLongestLog;
    call.answer = call.camera.Log(last);
    return true;
}

bool DoClearLog(const Call& call) {
    call.camera.ClearLog();
    return true;
}

bool DoExchanges(const Call& call) {
    call.answer = std::to_string(call.camera.Exchanges());
    return true;
}

bool DoFrames(const Call& call) {
    const kit::FrameCounts& counts = call.camera.Frames();
    call.answer = "delivered " + std::to_string(counts.delivered) + " lost " + std::to_string(counts.lost_on_link) +
                  " no-buffer " + std::to_string(counts.no_buffer);
    return true;
}

bool DoHardwareTrigger(const Call& call) {
    std::string edge;
    call.words >> edge;
    if (!edge.empty() && edge != "rising" && edge != "falling") {
        call.answer = "expected 'rising', 'falling' or nothing";
        return false;
    }
    const TriggerEdge trigger = edge.empty()       ? TriggerEdge::kActive
                                : edge == "rising" ? TriggerEdge::kRising
                                                   : TriggerEdge::kFalling;
    call.answer = call.camera.HardwareTrigger(trigger) ? "taken" : "ignored";
    return true;
}

bool DoEvent(const Call& call) {
    ZelCameraEvent event{};
    if (!(call.words >> event.id)) {
        call.answer = "event needs an id";
        return false;
    }
    call.words >> event.value;
    for (short& value : event.values) {
        if (!(call.words >> value)) value = 0;
    }
    call.plugin.ReportEvent(call.number, event);
    return true;
}

bool DoSetCalcDelay(const Call& call) {
    int milliseconds = -1;
    if (!(call.words >> milliseconds) || milliseconds < 0) {
        call.answer = "set-calc-delay needs milliseconds";
        return false;
    }
    call.camera.SetCalcDelay(milliseconds);
    return true;
}

bool DoSetFlashTimes(const Call& call) {
    int load_ms = -1;
    int store_ms = -1;
    if (!(call.words >> load_ms >> store_ms) || load_ms < 0 || store_ms < 0) {
        call.answer = "set-flash-times needs the milliseconds of loading and of storing a page";
        return false;
    }
    call.camera.SetFlashTimes({std::chrono::milliseconds(load_ms), std::chrono::milliseconds(store_ms)});
    return true;
}

struct Command {
    std::string_view name;
    bool (*run)(const Call&);
};

constexpr Command kCommands[] = {
    {"plug", DoPlug},
    {"unplug", DoUnplug},
    {"fault", DoFault},
    {"log", DoLog},
    {"clear-log", DoClearLog},
    {"exchanges", DoExchanges},
    {"frames", DoFrames},
    {"hwtrigger", DoHardwareTrigger},
    {"event", DoEvent},
    {"set-calc-delay", DoSetCalcDelay},
    {"set-flash-times", DoSetFlashTimes},
};

const Command* FindCommand(const std::string& name) {
    const Command* const row = std::ranges::find(kCommands, name, &Command::name);
    return row == std::end(kCommands) ? nullptr : row;
}

}  // namespace

std::string WrongWith(const std::string& name, const std::string& arguments) {
    if (!FindCommand(name)) return "unknown command '" + name + "'";
    std::string reason;
    if (name == "fault" && arguments != kClear && arguments != kCalcNever) ParseFault(arguments, reason);
    return reason;
}

bool RunSimCommand(SimPlugin& plugin, const std::string& command, std::string& answer) {
    std::istringstream words(command);
    std::string name;
    words >> name;
    answer = WrongWith(name, kClear);
    if (!answer.empty()) return false;
    int number = -1;
    SimCamera* const camera = words >> number ? plugin.Camera(number) : nullptr;
    if (camera) return FindCommand(name)->run({plugin, number, *camera, words, answer});
    answer = name + " needs the number of a camera";
    return false;
}

}  // namespace zel::sim
