// The recording that a page wanted: every frame of the run goes to a file, whatever the pages look at.
#ifndef ZELCAM_VIEWRECORDING_H
#define ZELCAM_VIEWRECORDING_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "record/camera/CameraRecorder.h"
#include "tools/zelcam/text/Json.h"
#include "tools/zelcam/view/FrameTaker.h"

namespace zelcam {

struct RecordingWish {
    std::string folder;
    std::uint64_t frames = 0;  // 0: no such end
    double seconds = 0.0;      // 0: no such end
    zel::record::Compression compression = zel::record::Compression::kNone;
    int averaged = 0;
};

class ViewRecording {
  public:
    // ended: called on the taking thread when the recording has what it wants, or can't go on; End() is to follow.
    ViewRecording(FrameTaker& taker, std::function<void(std::string reason)> ended);

    // Result: the file. Throws RecordError or Failure.
    std::string Begin(const std::shared_ptr<zel::Camera>& camera, const RecordingWish& wish);
    bool Runs() const;
    // Completes the file. Result: what became of it, for the user; empty when nothing was recorded.
    std::string End(const std::string& reason);
    // Whether the last one lost frames or failed.
    bool WentWrong() const { return m_WentWrong; }
    // Frames that the disk was too slow for since the last call.
    std::uint64_t NewlyLost();
    void SetGain(std::int32_t gain);
    // As the state has it; null when none runs. Any thread.
    Json State() const;

  private:
    std::shared_ptr<zel::record::CameraRecorder> Recorder() const;

    FrameTaker& m_Taker;
    std::function<void(std::string)> m_Ended;
    mutable std::mutex m_Mutex;
    std::shared_ptr<zel::record::CameraRecorder> m_Recorder;
    std::uint64_t m_LossTold = 0;
    bool m_WentWrong = false;
};

}  // namespace zelcam

#endif
