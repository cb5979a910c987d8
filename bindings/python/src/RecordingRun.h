// A camera's frames on their way into files, beside the interpreter: threads of its own take, compress and write them.
#ifndef BINDINGS_PYTHON_RECORDINGRUN_H
#define BINDINGS_PYTHON_RECORDINGRUN_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "bindings/python/src/CameraHandle.h"
#include "record/camera/CameraRecorder.h"
#include "record/camera/RecordingPlan.h"

namespace zel::python {

struct RecordingOptions {
    std::string path;              // in the system's bytes
    record::RecordingLimits ends;  // frames and seconds; neither: until it is ended
    std::string compression = "none";
    unsigned every = 1;
    std::uint64_t split_frames = 0;
    double pixel_um = 0.0;
    int averaged = 0;
    double timeout_s = 0.0;  // 0: by the camera's own figures
    bool overwrite = false;
    bool force = false;  // also when the disk is too small
};

class RecordingRun {
  public:
    // Looks whether it can be: the file's name, the room on the disk. Throws Error.
    RecordingRun(std::shared_ptr<CameraHandle> handle, RecordingOptions options);
    ~RecordingRun();
    RecordingRun(const RecordingRun&) = delete;
    RecordingRun& operator=(const RecordingRun&) = delete;

    // Makes the file and takes frames from now on, of a camera that runs. Throws Error.
    void begin();
    // Result: it is over, and the files are complete.
    bool wait(std::chrono::milliseconds most);
    // Ends it for this reason, unless it has ended.
    void end(const std::string& reason);
    // Waits until it is over, once it was ended.
    void finish();
    // Of all runs that there are: for the end of the interpreter.
    static void finish_all();

    record::RecordingStatus status() const;
    // After finish().
    const std::vector<record::RecordedFile>& files() const { return m_Files; }
    // Raises why it did not end as it should.
    void check() const;

  private:
    using Clock = std::chrono::steady_clock;

    void run();
    void take_frames();
    // Why no frame came: false where the run just ends.
    bool ends_by(const NoFrame& why);
    bool wanted(record::Offered offered);

    const std::shared_ptr<CameraHandle> m_Handle;
    const CameraPointer m_Camera;
    RecordingOptions m_Options;
    record::RecordingSession m_Session;
    record::RecordingFacts m_Facts;
    std::filesystem::path m_File;
    std::uint64_t m_Reserve = 0;
    Clock::time_point m_Deadline = Clock::time_point::max();

    std::unique_ptr<record::CameraRecorder> m_Recorder;
    std::thread m_Thread;
    std::atomic<bool> m_Ending = false;
    std::optional<NoFrame> m_NoFrame;
    std::exception_ptr m_Failure;
    std::vector<record::RecordedFile> m_Files;

    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::string m_Reason;  // why it ends
    bool m_Over = false;
};

}  // namespace zel::python

#endif
