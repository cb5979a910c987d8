#include "devices/sim/link/Player.h"

#include <algorithm>

#include "devices/sim/link/Settings.h"
#include "link/ICameraInterface.h"

namespace zel::sim {

namespace {

constexpr int kPackedBits = 12;
constexpr int kHighestGain = 1023;

// How the names of a kind of link begin.
const char* LinkText(int interface_type) {
    switch (interface_type) {
        case CAMERA_TYPE_EDT_CAMERA_LINK:
            return "Camera Link";
        case CAMERA_TYPE_PLEORA_EBUS:
            return "GigE";
        default:
            return "USB";
    }
}

// How well a camera answers to what a recording says of its own: the higher the better.
int Likeness(const record::RecordingFacts& facts, int interface_type, int number) {
    const CameraModel model = ModelOfLink(interface_type, number);
    if (!facts.serial.empty() && facts.serial == model.serial) return 3;
    if (!facts.model.empty() && facts.model == model.model_text) return 2;
    return facts.link.starts_with(LinkText(interface_type)) ? 1 : 0;
}

// As many taps as the size can be divided into. One of an eBUS camera's sends its samples whole; two pack them.
int MostTaps(const CameraModel& model, int bits) {
    int taps_idx = model.largest_taps_idx;
    if (taps_idx == 2 && model.height % 2 != 0) taps_idx = 1;
    if (model.width % 2 != 0 || (model.packed && bits > kPackedBits)) taps_idx = 0;
    return taps_idx;
}

}  // namespace

bool Plays(const record::RecordingFacts& facts, int interface_type, int number) {
    int best = 0;
    for (const SimLibrary& library : SimLibraries()) {
        const int cameras = CamerasOf(library);
        for (int i = 0; i < cameras; ++i) best = std::max(best, Likeness(facts, library.interface_type, i));
    }
    return Likeness(facts, interface_type, number) == best;
}

CameraModel PlayerOf(CameraModel model, const Recording& recording) {
    const record::RecordingFacts& facts = recording.facts;
    model.width = facts.width;
    model.height = facts.height;
    model.bits = static_cast<int>(facts.bits);
    model.cfa_phase = facts.cfa_phase;
    if (!facts.model.empty()) model.model_text = facts.model;
    model.even_taps = true;
    model.largest_taps_idx = MostTaps(model, model.bits);
    model.default_taps_idx = std::min(model.default_taps_idx, model.largest_taps_idx);
    const std::uint32_t exposure = recording.first.exposure_us;
    if (exposure >= 1 && exposure <= 2000000000) model.exposure_us = static_cast<int>(exposure);
    model.gain = std::clamp(recording.first.gain, 0, kHighestGain);
    model.frame_us = recording.frame_us;
    return model;
}

}  // namespace zel::sim
