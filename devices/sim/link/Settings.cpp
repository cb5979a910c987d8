#include "devices/sim/link/Settings.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "devices/sim/link/Complaints.h"
#include "devices/sim/sensor/CameraModel.h"
#include "platform/Files.h"
#include "platform/UserTexts.h"
#include "record/RecordError.h"

namespace zel::sim {

namespace {

constexpr unsigned kSmallestSide = 16;
constexpr unsigned kLargestSide = 8192;

void Refuse(const std::string& variable, const std::string& value, const char* expected) {
    Complain(variable + "=" + value + ": expected " + expected + "; using the default");
}

// A whole number, and nothing else.
bool ReadNumber(const std::string& value, long long& number) {
    char* end = nullptr;
    number = std::strtoll(value.c_str(), &end, 10);
    return !value.empty() && !*end;
}

// A number of at least 0.001, and nothing else.
bool ReadFactor(const std::string& value, double& factor) {
    char* end = nullptr;
    factor = std::strtod(value.c_str(), &end);
    return !value.empty() && !*end && std::isfinite(factor) && factor >= 0.001 && factor <= 100000.0;
}

bool ReadSize(const std::string& value, Settings& settings) {
    const auto good = [](unsigned side) { return side >= kSmallestSide && side <= kLargestSide && side % 2 == 0; };
    unsigned w = 0;
    unsigned h = 0;
    int used = 0;
    if (std::sscanf(value.c_str(), "%5ux%5u%n", &w, &h, &used) != 2 || value[static_cast<std::size_t>(used)])
        return false;
    if (!good(w) || !good(h)) return false;
    settings.width = w;
    settings.height = h;
    return true;
}

bool ReadPace(const std::string& value, Settings& settings) {
    double factor = value == "none" ? 0.0 : 1.0;
    if (value != "none" && value != "real" && !ReadFactor(value, factor)) return false;
    settings.speed = factor;
    return true;
}

bool ReadSeed(const std::string& value, Settings& settings) {
    char* end = nullptr;
    settings.seed = std::strtoull(value.c_str(), &end, 10);
    if (!*end && value[0] != '-') return true;
    settings.seed = Settings().seed;
    return false;
}

// What begins like a TIFF file is played, anything else is a picture that is looked at.
bool ReadScene(const std::string& value, Settings& settings) {
    if (value == "builtin") return true;
    std::FILE* const file = platform::OpenFile(value, "rb");
    if (!file) return false;
    char start[4] = {};
    const bool four = std::fread(start, 1, sizeof start, file) == sizeof start;
    std::fclose(file);
    constexpr std::string_view kBeginnings[] = {{"II*\0", 4}, {"II+\0", 4}, {"MM\0*", 4}, {"MM\0+", 4}};
    if (!four || std::ranges::find(kBeginnings, std::string_view(start, 4)) == std::end(kBeginnings)) {
        settings.scene = value;
        return true;
    }
    Recording recording;
    recording.file = value;
    settings.recording = std::make_shared<const Recording>(recording);
    return true;
}

// "once", "loop:25" ...
bool ReadPlay(const std::string& value, Settings& settings) {
    const std::size_t colon = value.find(':');
    const std::string how = value.substr(0, colon);
    double rate = 0.0;
    if (how != "once" && how != "loop") return false;
    if (colon != std::string::npos && !ReadFactor(value.substr(colon + 1), rate)) return false;
    if (!settings.recording) {
        Complain("ZEL_SIM_PLAY=" + value + ": ZEL_SIM_SCENE names no recording to play");
        return true;
    }
    Recording recording = *settings.recording;
    recording.loop = how == "loop";
    recording.rate = rate;
    settings.recording = std::make_shared<const Recording>(recording);
    return true;
}

bool ReadFill(const std::string& value, Settings& settings) {
    if (value == "noise") return true;
    settings.fill = value == "static" ? SensorFill::kStatic : value == "none" ? SensorFill::kNone : SensorFill::kNoise;
    return settings.fill != SensorFill::kNoise;
}

bool ReadTaps(const std::string& value, Settings& settings) {
    settings.even_taps = value == "even";
    return value == "even" || value == "uneven";
}

bool ReadPhase(const std::string& value, Settings& settings) {
    long long phase = 0;
    if (!ReadNumber(value, phase) || phase < 1 || phase > 4) return false;
    settings.cfa_phase = static_cast<int>(phase);
    return true;
}

// Any text that fits: a host must cope with color spaces that it does not know.
bool ReadColorSpace(const std::string& value, Settings& settings) {
    if (value.size() > 31) return false;
    settings.color_space = value;
    return true;
}

// "drift", "turn:0.5", "all:2" ...
bool ReadMotion(const std::string& value, Settings& settings) {
    const std::size_t colon = value.find(':');
    const std::string what = value.substr(0, colon);
    SceneMotion motion;
    motion.drift = what == "drift" || what == "all";
    motion.turn = what == "turn" || what == "all";
    if (colon != std::string::npos && !ReadFactor(value.substr(colon + 1), motion.speed)) return false;
    if (!motion.drift && !motion.turn) return value == "off";
    settings.motion = motion;
    return true;
}

bool ReadFaults(const std::string& value, Settings& settings) {
    settings.faults = value;
    return true;
}

// A variable of the environment, and what it may be. An empty value is none.
struct Variable {
    const char* name;
    bool (*read)(const std::string& value, Settings& settings);
    const char* expected;
};

constexpr Variable kVariables[] = {
    {"ZEL_SIM_SIZE", ReadSize, "WIDTHxHEIGHT, even numbers from 16 to 8192"},
    {"ZEL_SIM_PACE", ReadPace, "\"real\", \"none\" or a factor from 0.001 to 100000"},
    {"ZEL_SIM_SEED", ReadSeed, "a number from 0"},
    {"ZEL_SIM_SCENE", ReadScene, "\"builtin\" or the path of a recording or a picture that can be read"},
    {"ZEL_SIM_PLAY", ReadPlay, "\"once\" or \"loop\", with frames per second as in \"loop:25\""},
    {"ZEL_SIM_FILL", ReadFill, "\"noise\", \"static\" or \"none\""},
    {"ZEL_SIM_TAPS", ReadTaps, "\"uneven\" or \"even\""},
    {"ZEL_SIM_CFA_PHASE", ReadPhase, "a phase from 1 to 4"},
    {"ZEL_SIM_COLOR_SPACE", ReadColorSpace, "a text of up to 31 characters"},
    {"ZEL_SIM_MOTION", ReadMotion, "\"off\", \"drift\", \"turn\" or \"all\", with a speed as in \"drift:2\""},
    {"ZEL_SIM_FAULTS", ReadFaults, ""},
};

// How many characters two names have in common, from both ends.
std::size_t Likeness(const std::string& a, const std::string& b) {
    const auto from_start = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin();
    const auto from_end = std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend()).first - a.rbegin();
    return static_cast<std::size_t>(from_start + from_end);
}

void TellMisspeltNames() {
    const std::vector<std::string> known = SettingNames();
    const std::string beginning = "ZEL_SIM_";
    for (const std::string& name : platform::EnvironmentVariables(beginning)) {
        if (std::ranges::find(known, name) != known.end()) continue;
        const auto nearest =
            std::ranges::max_element(known, {}, [&](const auto& other) { return Likeness(name, other); });
        const bool near = 2 * Likeness(name, *nearest) >= beginning.size() + name.size();
        Complain(name + " is no setting of the simulated cameras" + (near ? "; did you mean " + *nearest + "?" : ""));
    }
}

}  // namespace

std::vector<std::string> SettingNames() {
    std::vector<std::string> names;
    for (const SimLibrary& library : SimLibraries()) names.emplace_back(library.cameras_variable);
    for (const Variable& variable : kVariables) names.emplace_back(variable.name);
    return names;
}

int CamerasOf(const SimLibrary& library) {
    const int by_default = DefaultCameraCount(library.interface_type);
    const std::string value = platform::EnvironmentVariable(library.cameras_variable);
    if (value.empty()) return by_default;
    long long count = 0;
    if (ReadNumber(value, count) && count >= -1 && count <= 9) return static_cast<int>(count);
    Refuse(library.cameras_variable, value, "a number from -1 to 9");
    return by_default;
}

void LookAtRecording(Settings& settings, void (*look)(Recording& recording)) {
    if (!settings.recording) return;
    Recording recording = *settings.recording;
    settings.recording.reset();
    try {
        look(recording);
        settings.recording = std::make_shared<const Recording>(recording);
    } catch (const record::RecordError& error) {
        Complain("ZEL_SIM_SCENE=" + recording.file + ": can't be played (" + error.what() +
                 "); using the built-in scene");
    }
}

Settings ReadSettings() {
    Settings settings;
    for (const Variable& variable : kVariables) {
        const std::string value = platform::EnvironmentVariable(variable.name);
        if (!value.empty() && !variable.read(value, settings)) Refuse(variable.name, value, variable.expected);
    }
    LookAtRecording(settings, LookAtFacts);
    if (!settings.Paced()) settings.calc_delay_ms = 0;
    TellMisspeltNames();
    return settings;
}

}  // namespace zel::sim
