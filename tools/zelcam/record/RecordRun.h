// One camera's part in a recording: takes its frames and offers them to its recorder.
#ifndef ZELCAM_RECORDRUN_H
#define ZELCAM_RECORDRUN_H

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/Mutex.h"
#include "record/camera/CameraRecorder.h"
#include "tools/zelcam/frames/Acquisition.h"
#include "tools/zelcam/text/Json.h"
#include "zel/Camera.h"

namespace zelcam {

using zel::record::CameraRecorder;
using zel::record::Offered;
using zel::record::RecordedFile;
using zel::record::RecorderOptions;
using zel::record::RecordingSession;
using zel::record::RecordingStatus;

struct RunOptions {
    AcquisitionSettings settings;
    zel::Trigger trigger = zel::Trigger::as_set;
    int interval_ms = 0;       // from one software trigger to the next
    std::uint64_t frames = 0;  // 0: no such end
    std::uint64_t bytes = 0;
    std::shared_ptr<std::atomic<int>> starting{};  // cameras of the recording that have not started yet
};

class RecordRun {
  public:
    // The recorder makes its file here. Throws Failure.
    RecordRun(zel::Camera& camera, const zel::record::RecordingFacts& facts, RunOptions options,
              RecorderOptions recorder, const RecordingSession& session);
    ~RecordRun();
    RecordRun(const RecordRun&) = delete;
    RecordRun& operator=(const RecordRun&) = delete;

    // Starts the camera, on a thread of its own. Frames are recorded from the moment on in which all cameras run.
    void Start();
    bool Begun() const { return *m_Options.starting == 0; }
    // Ends it for this reason, unless it has ended.
    void End(const std::string& reason);
    // The frames of the ring go to a file.
    bool Keep(const std::string& reason) { return m_Recorder.Keep(reason); }
    bool Ended() const { return m_Ended; }
    // Waits until the camera is stopped and the files are complete.
    void Wait();

    zel::Camera& Camera() const { return m_Camera; }
    RecordingStatus Status() const { return m_Recorder.Status(); }
    const std::vector<RecordedFile>& Files() const { return m_Files; }
    // A line when more frames have been lost to the disk than at the call before; empty: none.
    std::string NewLoss();
    // After Wait().
    std::string Text() const;
    Json ToJson() const;
    std::uint64_t Lost() const;
    // Why it did not end as it should; throws that.
    void ThrowFailure() const;

  private:
    void Run();
    void Take();
    void TakeFrames(Acquisition& acquisition);
    bool WaitForTrigger(std::chrono::steady_clock::time_point& next);
    bool Wanted(Offered offered);

    zel::Camera& m_Camera;
    const Json m_Description;  // of the camera, while it answers
    RunOptions m_Options;
    CameraRecorder m_Recorder;
    std::thread m_Thread;
    std::atomic<bool> m_Ended = false;
    std::vector<RecordedFile> m_Files;
    std::exception_ptr m_Failure;
    std::uint64_t m_LossTold = 0;

    zel::platform::Mutex m_Mutex;
    Acquisition* m_Acquisition ZEL_GUARDED_BY(m_Mutex) = nullptr;
    std::string m_Reason ZEL_GUARDED_BY(m_Mutex);
};

}  // namespace zelcam

#endif
