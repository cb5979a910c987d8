#include "devices/sim/link/Settings.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace zel::sim {

namespace {

constexpr unsigned kSmallestSide = 16;
constexpr unsigned kLargestSide = 8192;

const char* Value(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value ? value : nullptr;
}

void Complain(const char* variable, const char* value, const char* expected) {
    std::fprintf(stderr, "%s=%s: expected %s; using the default\n", variable, value, expected);
}

void ReadCameras(const char* variable, int& cameras) {
    const char* value = Value(variable);
    if (!value) return;
    char* end = nullptr;
    const long count = std::strtol(value, &end, 10);
    if (*end || end == value || count < -1 || count > 9) return Complain(variable, value, "a number from -1 to 9");
    cameras = static_cast<int>(count);
}

bool GoodSide(unsigned side) { return side >= kSmallestSide && side <= kLargestSide && side % 2 == 0; }

void ReadSize(unsigned& width, unsigned& height) {
    const char* value = Value("ZEL_SIM_SIZE");
    if (!value) return;
    unsigned w = 0;
    unsigned h = 0;
    int used = 0;
    if (std::sscanf(value, "%5ux%5u%n", &w, &h, &used) != 2 || value[used] || !GoodSide(w) || !GoodSide(h)) {
        return Complain("ZEL_SIM_SIZE", value, "WIDTHxHEIGHT, even numbers from 16 to 8192");
    }
    width = w;
    height = h;
}

void ReadPace(double& speed) {
    const char* value = Value("ZEL_SIM_PACE");
    if (!value || std::strcmp(value, "real") == 0) return;
    if (std::strcmp(value, "none") == 0) {
        speed = 0.0;
        return;
    }
    char* end = nullptr;
    const double factor = std::strtod(value, &end);
    if (*end || end == value || !std::isfinite(factor) || factor < 0.001 || factor > 100000.0) {
        return Complain("ZEL_SIM_PACE", value, "\"real\", \"none\" or a factor from 0.001 to 100000");
    }
    speed = factor;
}

void ReadSeed(std::uint64_t& seed) {
    const char* value = Value("ZEL_SIM_SEED");
    if (!value) return;
    char* end = nullptr;
    const unsigned long long number = std::strtoull(value, &end, 10);
    if (*end || end == value || *value == '-') return Complain("ZEL_SIM_SEED", value, "a number from 0");
    seed = number;
}

void ReadFill(SensorFill& fill) {
    const char* value = Value("ZEL_SIM_FILL");
    if (!value || std::strcmp(value, "noise") == 0) return;
    if (std::strcmp(value, "static") == 0) {
        fill = SensorFill::kStatic;
    } else if (std::strcmp(value, "none") == 0) {
        fill = SensorFill::kNone;
    } else {
        Complain("ZEL_SIM_FILL", value, "\"noise\", \"static\" or \"none\"");
    }
}

void ReadTaps(bool& even) {
    const char* value = Value("ZEL_SIM_TAPS");
    if (!value || std::strcmp(value, "uneven") == 0) return;
    if (std::strcmp(value, "even") != 0) return Complain("ZEL_SIM_TAPS", value, "\"uneven\" or \"even\"");
    even = true;
}

void ReadScene(std::string& scene) {
    const char* value = Value("ZEL_SIM_SCENE");
    if (!value || std::strcmp(value, "builtin") == 0) return;
    std::FILE* file = std::fopen(value, "rb");
    if (!file) return Complain("ZEL_SIM_SCENE", value, "\"builtin\" or the path of a picture that can be read");
    std::fclose(file);
    scene = value;
}

void ReadPhase(int& phase) {
    const char* value = Value("ZEL_SIM_CFA_PHASE");
    if (!value) return;
    if (value[0] < '1' || value[0] > '4' || value[1])
        return Complain("ZEL_SIM_CFA_PHASE", value, "a phase from 1 to 4");
    phase = value[0] - '0';
}

// Any text that fits: a host must cope with color spaces that it does not know.
void ReadColorSpace(std::string& color_space) {
    const char* value = Value("ZEL_SIM_COLOR_SPACE");
    if (!value) return;
    if (std::strlen(value) > 31) return Complain("ZEL_SIM_COLOR_SPACE", value, "a text of up to 31 characters");
    color_space = value;
}

}  // namespace

Settings ReadSettings(const char* cameras_variable, int default_cameras) {
    Settings settings;
    settings.cameras = default_cameras;
    ReadCameras(cameras_variable, settings.cameras);
    ReadSize(settings.width, settings.height);
    ReadPace(settings.speed);
    ReadSeed(settings.seed);
    ReadFill(settings.fill);
    ReadScene(settings.scene);
    ReadPhase(settings.cfa_phase);
    ReadColorSpace(settings.color_space);
    ReadTaps(settings.even_taps);
    if (!settings.Paced()) settings.calc_delay_ms = 0;
    return settings;
}

}  // namespace zel::sim
