// The camera behind the element: opened with its settings, run while the pipeline plays. It knows nothing of GStreamer.
//
// Threads: one opens, closes, plays and pauses; one takes frames (Next, AwaitLink) between Open() and Close(); any may
// call the rest.
#ifndef BINDINGS_GSTREAMER_CAMERASOURCE_H
#define BINDINGS_GSTREAMER_CAMERASOURCE_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "zel/Camera.h"
#include "zel/FrameCounter.h"
#include "zel/Sdk.h"

namespace zel::gst {

// What the element's properties say.
struct Settings {
    std::string camera = "0";  // number or serial number
    std::string plugins;       // a set or a folder; empty: those that the SDK finds
    unsigned exposure_us = 0;  // 0: as the camera is set
    int gain = -1;             // -1: as the camera is set
    Order order = Order::every;
    zel::Trigger trigger = zel::Trigger::as_set;
    std::string roi;         // "x,y,width,height"; empty: as the camera is set
    std::string binning;     // "x,y"; empty: as the camera is set
    std::string parameters;  // "NAME=VALUE;NAME=VALUE"
    unsigned buffers = 0;    // 0: as the SDK is set
    bool calibrated = false;
    bool color = true;
    bool scale = true;
    bool reconnect = false;
    bool zero_copy = false;
};

// What the frames are, as far as negotiation cares.
struct Picture {
    unsigned width = 0;
    unsigned height = 0;
    unsigned bits = 0;
    bool color = false;
    Binning binning;
    unsigned frame_us = 0;  // from frame to frame; 0: whenever a trigger comes

    bool operator==(const Picture&) const = default;
};

// Frames handed over since Open(), and those that were not.
struct Counts {
    std::uint64_t frames = 0;
    Drops drops;
};

struct Taken {
    Frame frame;        // empty: halted, or over
    bool over = false;  // the camera's sequence is
    bool hole = false;  // frames are missing before this one
};

class CameraSource {
  public:
    CameraSource() = default;
    ~CameraSource() { Close(); }
    CameraSource(const CameraSource&) = delete;
    CameraSource& operator=(const CameraSource&) = delete;

    // Throws Error; then it is closed.
    void Open(const Settings& settings);
    void Close();
    // Gives up a camera that Close() kept for frames that were held, now that they are back.
    void Release();

    // Between Play() and Pause() Next() takes frames; the camera is started by the first.
    void Play() { m_Playing = true; }
    void Pause();
    // Ends Next() and AwaitLink() at once, until GoOn().
    void Halt();
    void GoOn() { m_Halted = false; }
    bool IsHalted() const { return m_Halted; }

    // The next frame. Throws Error with the reason when none comes.
    Taken Next();
    // Waits until a lost link is back and makes the settings again. Throws Error.
    void AwaitLink();
    // Whether a frame may be held for as long as somebody likes: half of the pool stays for those to come.
    bool MayLend() const { return m_Settings.zero_copy && m_Camera->frames_held() * 2 <= m_Buffers; }

    bool Reconnects() const { return m_Settings.reconnect; }

    bool IsOpen() const { return Current() != nullptr; }
    int Buffers() const { return m_Buffers; }
    Picture CurrentPicture() const;
    Counts CurrentCounts() const;
    // Missing frames that were not passed over on purpose; asks nobody.
    std::uint64_t Dropped() const;
    std::uint64_t Frames() const;

    // Change a running camera, without one the settings that it will have. Throw Error.
    void SetExposure(unsigned microseconds);
    void SetGain(int gain);
    // Takes one frame with Trigger::software.
    void Trigger();

  private:
    using CameraPointer = std::shared_ptr<Camera>;

    CameraPointer Current() const;
    bool Halts() const { return m_Halted || !m_Playing; }
    CameraPointer OpenCamera();
    void ReleaseParked();
    void Configure(Camera& camera);
    void Begin();
    void EndRun();
    void ReadTiming(Camera& camera);
    Taken Accept(Frame frame);

    std::unique_ptr<Sdk> m_Sdk;
    Settings m_Settings;
    std::atomic<int> m_Buffers = 0;

    std::mutex m_Access;  // held while settings are made, and by Open and Close
    CameraPointer m_Parked;
    std::string m_ParkedName;

    std::atomic<bool> m_Playing = false;
    std::atomic<bool> m_Halted = false;
    std::atomic<bool> m_Starting = false;
    std::atomic<bool> m_TimingChanged = false;

    mutable std::mutex m_Mutex;  // of what follows; held for moments
    std::condition_variable m_Changed;
    CameraPointer m_Camera;
    Picture m_Picture;
    FrameCounter m_Counter;  // of this run
    Counts m_Before;         // of the runs before
};

}  // namespace zel::gst

#endif
