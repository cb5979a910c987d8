// Records a camera's frames beside the thread that takes them.
//
//   taking thread --Offer--> frames that wait --> worker: encode, write in order --> file, one or several
//
// Frames stay on loan from the camera's pool until they are written; most_waiting bounds them, and should leave the
// camera buffers of its own. A frame that finds no place is lost to the disk, and counted as such at once. With a ring,
// frames wait until Keep() has those that are there written; the oldest goes when a new one needs its place.
#ifndef ZEL_CAMERARECORDER_H
#define ZEL_CAMERARECORDER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "record/RecordingFacts.h"
#include "record/camera/RecordingFiles.h"
#include "zel/Camera.h"

namespace zel::record {

// What the files of cameras that are recorded together share.
struct RecordingSession {
    static RecordingSession Begin();

    std::chrono::steady_clock::time_point start;
    std::string started;  // the same moment by the clock on the wall, UTC
    std::string id;
};

// What the camera says of itself now; what its frames say better comes with the first one. software: that records, with
// its version.
RecordingFacts FactsOf(const zel::Camera& camera, const RecordingSession& session, const std::string& software);

struct RecorderOptions {
    FileOptions files;
    std::size_t most_waiting = 8;               // frames
    unsigned every = 1;                         // of so many frames one is recorded
    double ring_seconds = 0.0;                  // 0: no ring
    std::int32_t gain = 0;                      // that is set, since frames do not tell
    std::function<std::uint64_t()> link_drops;  // the camera's count since the start; asked where numbers are missing
    std::function<void()> before_writing;       // for tests: a disk that takes its time
};

struct RecordingStatus {
    std::uint64_t taken = 0;        // frames that were offered and not lost or passed over
    std::uint64_t written = 0;      // of these
    std::uint64_t waiting = 0;      // frames in memory
    std::uint64_t bytes = 0;        // of all files
    std::uint64_t lost_disk = 0;    // frames that the disk was too slow for
    std::uint64_t missing = 0;      // numbers that were not offered
    std::uint64_t passed_over = 0;  // left out, since every Nth is wanted
    double seconds = 0.0;           // from the first frame to the last
    std::filesystem::path file;     // that is being written
    bool disk_full = false;
    std::string failure;  // why nothing more is recorded; empty: all is well
};

enum class Offered {
    kTaken,
    kPassedOver,  // it is none of every Nth
    kLost,        // the disk is too slow
    kEnded,       // nothing more is recorded: see the status
};

class CameraRecorder {
  public:
    // Makes the file; with a ring there is none before Keep(). Throws record::RecordError.
    CameraRecorder(RecordingFacts facts, RecorderOptions options, const RecordingSession& session);
    ~CameraRecorder();  // as Finish("ended")
    CameraRecorder(const CameraRecorder&) = delete;
    CameraRecorder& operator=(const CameraRecorder&) = delete;

    // Does not wait. As soon as the frame is in hand, since that is its time; one thread at a time.
    Offered Offer(std::shared_ptr<const zel::Frame> frame);
    // The gain was changed.
    void SetGain(std::int32_t gain);
    // Has the frames of the ring written to a file of their own. False: there are none.
    bool Keep(const std::string& reason);
    // Any thread.
    RecordingStatus Status() const;
    // Writes what waits, except in a ring, and completes the file. What could not be written stands in the status.
    // Result: the files, from the first on; one without a frame is removed. A second call answers the same.
    std::vector<RecordedFile> Finish(const std::string& reason);

  private:
    struct State;
    std::unique_ptr<State> m_State;
};

}  // namespace zel::record

#endif
