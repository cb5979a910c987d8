// What a recording says beside its samples.
//
// A recording is a BigTIFF file with a page per frame, in the order of time. What follows is kept as JSON in private
// tags, whose keys are the names of the members here:
//
//   page    tag      name            holds
//   first   65200    ZelRecording    RecordingFacts
//   each    65201    ZelFrame        FrameFacts
//   first   65202    ZelEnd          RecordingEnd; not there while it is written, and for good when that was cut off
//
// The first page's ImageDescription is the OME-XML that other programs read. Until the recording is complete it is a
// plain sentence, so that a file that was cut off is a plain stack of pages and claims no frames that it lacks.
#ifndef ZEL_RECORDINGFACTS_H
#define ZEL_RECORDINGFACTS_H

#include <cstdint>
#include <string>

namespace zel::record {

// What does not change during a recording.
struct RecordingFacts {
    unsigned width = 0;   // samples of a row
    unsigned height = 0;  // rows
    unsigned bits = 16;   // significant bits of a sample; the largest legal value is 2^bits - 1
    // Color of the top-left sample: 0 = monochrome, 1 = red, 2 = blue, 3 = green with red beside it in the row,
    // 4 = green with blue beside it.
    int cfa_phase = 0;
    unsigned x_origin = 0;  // of the region, in pixels of the sensor
    unsigned y_origin = 0;
    unsigned x_bin = 1;
    unsigned y_bin = 1;
    int averaged = 0;                // frames that each frame is the mean of; 0: one
    bool corrected = false;          // whether the correction of the taps was on
    double pixel_um = 0.0;           // distance of two samples in the object, micrometres; 0: not known
    double frames_per_second = 0.0;  // as the camera's settings say; 0: not known
    std::string camera{};            // name
    std::string serial{};
    std::string model{};
    std::string firmware{};
    std::string link{};      // kind of link
    std::string software{};  // that recorded it, with its version
    std::string started{};   // UTC of host_ns 0, "2026-11-22T04:31:00.000Z"
    std::string session{};   // the same for all files of cameras that were recorded together
};

// Of one frame.
struct FrameFacts {
    std::uint32_t number = 0;  // of the camera since the start; a hole is a lost frame
    std::uint32_t exposure_us = 0;
    std::int32_t gain = 0;
    std::uint32_t arrival_ms = 0;  // the frame's own time stamp: milliseconds of a monotonic clock, modulo 2^32
    std::int64_t host_ns = 0;      // arrival by the host's steady clock, from `started` on; one clock for a session
};

// What became of it.
struct RecordingEnd {
    std::string reason{};           // why it ended: "frames", "seconds", "interrupted", "disk full", "link lost", ...
    std::uint64_t frames = 0;       // in this file
    std::uint64_t lost_link = 0;    // lost on the link between the first and the last frame
    std::uint64_t lost_buffer = 0;  // that found no free buffer
    std::uint64_t lost_disk = 0;    // that the disk was too slow for
    std::uint64_t passed_over = 0;  // left out on purpose (every Nth)
};

}  // namespace zel::record

#endif
