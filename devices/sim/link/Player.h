// Which simulated camera plays a recording, and what becomes of it.
#ifndef SIM_PLAYER_H
#define SIM_PLAYER_H

#include "devices/sim/sensor/CameraModel.h"
#include "devices/sim/sensor/RecordedFrames.h"

namespace zel::sim {

// Whether camera `number` of a library plays it. The cameras that do are those of the recording's serial number;
// without one, those of its model; without one, those on its kind of link; and without one, all.
bool Plays(const record::RecordingFacts& facts, int interface_type, int number);

// The camera as a player: what it sends is the recording, to the bit, after the host has unpacked it, put its taps into
// order and corrected them.
CameraModel PlayerOf(CameraModel model, const Recording& recording);

}  // namespace zel::sim

#endif
