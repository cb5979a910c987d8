// What the user tells the simulated cameras: values of ZEL_SIM_... variables, the script of faults, commands of the
// control interface; and what a host may send to one of them while its link fails.
#include <map>

#include "devices/sim/link/SimCommands.h"
#include "devices/sim/link/SimPlugin.h"
#include "fuzz/Input.h"
#include "tests/support/Datagrams.h"

using namespace zel;
using namespace zel::test;

// Other names for the linker, see CMakeLists.txt: an environment of the program's own, and nobody to complain to.
#ifdef __clang__
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"  // it is the linker who takes it for a C function
#endif
extern "C" {
std::string StandInVariable(const char* name);
void StandInComplain(const std::string& line);
}

namespace {

std::map<std::string, std::string>& Environment() {
    static std::map<std::string, std::string> s_Environment;
    return s_Environment;
}

constexpr const char* kVariables[] = {
    "ZEL_SIM_SIZE", "ZEL_SIM_PACE",   "ZEL_SIM_SEED",      "ZEL_SIM_PLAY",        "ZEL_SIM_FILL",
    "ZEL_SIM_TAPS", "ZEL_SIM_MOTION", "ZEL_SIM_CFA_PHASE", "ZEL_SIM_COLOR_SPACE", "ZEL_SIM_USB_CAMERAS"};
constexpr const char* kCommands[] = {"plug 0",     "unplug 0", "fault 0 ",     "fault 0 clear", "log 0 ", "clear-log 0",
                                     "exchanges ", "frames 0", "hwtrigger 0 ", "event 0 ",      "set-",   ""};

void CheckSettings(const sim::Settings& settings) {
    FuzzCheck(settings.width <= 8192 && settings.height <= 8192 && settings.width % 2 == 0);
    FuzzCheck(settings.speed >= 0.0 && settings.speed <= 100000.0);
    FuzzCheck(settings.cfa_phase >= 0 && settings.cfa_phase <= 4 && settings.color_space.size() <= 31);
    FuzzCheck(settings.motion.speed >= 0.001 && settings.motion.speed <= 100000.0);
}

void Exchange(sim::SimCamera& camera, const std::string& text) {
    unsigned char answer[5000];
    FuzzCheck(camera.Send(TextRequest(text)) <= static_cast<int>(text.size() + 3));
    while (camera.Receive(answer, 0) > 0) continue;
}

}  // namespace

std::string StandInVariable(const char* name) {
    const auto found = Environment().find(name);
    return found == Environment().end() ? std::string() : found->second;
}
void StandInComplain(const std::string& line) { FuzzCheck(!line.empty()); }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const sim::PluginDescription s_Usb{"USB 3.0", {"#", "#", ""}, CAMERA_TYPE_USB};
    fuzz::Input input(data, size);
    const unsigned kind = input.Byte();
    Environment() = {{"ZEL_SIM_PACE", "none"}, {"ZEL_SIM_USB_CAMERAS", "1"}};
    if (kind < 0xC0) {
        while (!input.Ended()) Environment()[kVariables[input.Below(std::size(kVariables))]] = input.Text();
        CheckSettings(sim::ReadSettings());
        for (const sim::SimLibrary& library : sim::SimLibraries()) {
            const int cameras = sim::CamerasOf(library);
            FuzzCheck(cameras >= -1 && cameras <= 9);
        }
        return 0;
    }
    Environment()["ZEL_SIM_FAULTS"] = input.Text();
    kit::Bus bus(CAMERA_TYPE_USB);
    sim::SimPlugin plugin(bus, s_Usb);
    for (int i = 0; i < 8 && !input.Ended(); ++i) {
        const std::string command = kCommands[input.Below(std::size(kCommands))] + std::string(input.Text());
        std::string answer;
        FuzzCheck(sim::RunSimCommand(plugin, command, answer) || !answer.empty());
        Exchange(*plugin.Camera(0), "tb " + std::string(input.Text()));
    }
    return 0;
}
