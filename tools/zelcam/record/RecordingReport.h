// What is told about recordings: `zelcam info FILE`.
#ifndef ZELCAM_RECORDINGREPORT_H
#define ZELCAM_RECORDINGREPORT_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "record/RecordingFacts.h"
#include "tools/zelcam/text/Json.h"

namespace zelcam {

// Frames that are missing between two that are there.
struct RecordingGap {
    std::uint32_t after = 0;    // the number of the frame before
    std::uint32_t missing = 0;  // frames
    double seconds = 0.0;       // when the frame behind came, from the beginning of the recording
};

// One file, looked at.
struct RecordingReport {
    std::string file;
    bool recording = false;  // false: another program's
    zel::record::RecordingFacts facts{};
    std::optional<zel::record::RecordingEnd> end;
    std::string cut_off;
    std::size_t frames = 0;
    double first_seconds = 0.0;  // when the first frame came, from the beginning of the recording
    double seconds = 0.0;        // from the first frame to the last one
    double host_rate = 0.0;      // frames per second; 0: not known
    double camera_rate = 0.0;    // by the frames' own time stamps
    std::uint32_t step = 1;      // between the numbers of frames without a gap
    std::vector<RecordingGap> gaps;

    // All frames are there that it says it has.
    bool Complete() const { return recording ? end && end->frames == frames && cut_off.empty() : cut_off.empty(); }
    std::uint64_t Missing() const;
};

// Throws Failure when the file can't be read.
RecordingReport LookAtRecording(const std::string& file);

Json ToJson(const RecordingReport& report);
// The same as a table.
std::string ToText(const RecordingReport& report);

// Several files side by side: when each began, how it ran, and all gaps in the order of time. Times of files of other
// sessions than the first one's can't be compared.
bool OneSession(const std::vector<RecordingReport>& reports);
Json ToJson(const std::vector<RecordingReport>& reports);
std::string ToText(const std::vector<RecordingReport>& reports);

}  // namespace zelcam

#endif
