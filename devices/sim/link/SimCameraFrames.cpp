// The frame thread of a simulated camera's transport.
#include <algorithm>
#include <new>

#include "devices/sim/link/Complaints.h"
#include "devices/sim/link/SimCameraTransport.h"
#include "devices/sim/sensor/Sensor.h"
#include "include/ZelImage.h"
#include "platform/Clock.h"

namespace zel::sim {

void SimCameraTransport::FrameLoop() {
    m_FrameThreadId = std::this_thread::get_id();
    m_FrameNumber = 0;
    const platform::TimerResolution resolution;
    FrameJob job;
    while (NextFrame(job)) {
        if (!Fetch(job)) continue;
        switch (Expose(job)) {
            case Outcome::kHandOver:
                HandOver(job);
                break;
            case Outcome::kLost:
                LoseOnLink();
                break;
            case Outcome::kAborted:
                break;
        }
    }
    m_FrameThreadId = std::thread::id();
}

// Waits until a frame is due. False when the acquisition was stopped.
bool SimCameraTransport::NextFrame(FrameJob& job) {
    platform::ScopedLock lock(m_Camera.Lock());
    Firmware& firmware = m_Camera.FirmwareLocked();
    m_Camera.Changed().wait(lock, [&]() ZEL_REQUIRES(m_Camera.Lock()) {
        return m_StopRequested || (m_Camera.PluggedLocked() && firmware.FrameDue());
    });
    if (m_StopRequested) return false;
    job.free_run = firmware.FreeRunning();
    job.acquisition = firmware.Acquisition();
    job.settings = firmware.Settings();
    job.timing = firmware.Timing();
    job.taps = firmware.Taps();
    firmware.BeginFrame();
    return true;
}

// Has the frame ready before its time has come. Frames that can't be had any more are a cable that was pulled.
bool SimCameraTransport::Fetch(FrameJob& job) {
    FrameSource& source = m_Camera.Source();
    const std::string reason = source.Fetch(m_FrameNumber);
    job.next_us = source.Pause(m_FrameNumber).value_or(job.timing.Period());
    if (reason.empty()) return true;
    Complain("camera " + m_Camera.Model().serial + " lost the recording that it played (" + reason + ")");
    m_Camera.VanishNow();
    return false;
}

// Whether the frame was given up meanwhile: stopped, halted, started anew or unplugged.
bool SimCameraTransport::Forgotten(const FrameJob& job) const {
    const Firmware& firmware = m_Camera.FirmwareLocked();
    return m_StopRequested || !m_Camera.PluggedLocked() || !firmware.Acquiring() ||
           firmware.Acquisition() != job.acquisition;
}

bool SimCameraTransport::WaitUntil(platform::ScopedLock<platform::Mutex>& lock, Clock::time_point time,
                                   const FrameJob& job) {
    return !m_Camera.Changed().wait_until(lock, time, [&]() ZEL_REQUIRES(m_Camera.Lock()) { return Forgotten(job); });
}

bool SimCameraTransport::Stall(platform::ScopedLock<platform::Mutex>& lock, int milliseconds, const FrameJob& job) {
    const unsigned clears = m_Camera.FaultClearsLocked();
    const auto over = [&]() ZEL_REQUIRES(m_Camera.Lock()) {
        return Forgotten(job) || m_Camera.FaultClearsLocked() != clears;
    };
    if (milliseconds > 0) {
        m_Camera.Changed().wait_for(lock, std::chrono::milliseconds(milliseconds), over);
    } else {
        m_Camera.Changed().wait(lock, over);
    }
    return !Forgotten(job);
}

SimCameraTransport::Clock::duration SimCameraTransport::Scaled(std::int64_t microseconds) const {
    return std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double, std::micro>(static_cast<double>(microseconds) / m_Camera.PluginSettings().speed));
}

// How far frames may be behind their time and still be made up for, because waits of the system are coarse.
constexpr auto kMadeUpFor = std::chrono::milliseconds(50);

// Lets the time of exposure and readout pass, then counts the frame. Free running, frames become ready one period apart
// from the first one on, however long each took to render; a camera that fell far behind goes on from now.
SimCameraTransport::Outcome SimCameraTransport::Expose(FrameJob& job) {
    platform::ScopedLock lock(m_Camera.Lock());
    if (Forgotten(job)) return Outcome::kAborted;
    Firmware& firmware = m_Camera.FirmwareLocked();
    job.ready = Clock::now();
    if (m_Camera.PluginSettings().Paced()) {
        const auto period = Scaled(job.next_us);
        const auto allowance = std::max<Clock::duration>(period, kMadeUpFor);
        const bool goes_on =
            job.free_run && m_PacedAcquisition == job.acquisition && m_NextReady + allowance > job.ready;
        const auto fresh = job.ready + Scaled(job.timing.exposure_us + job.timing.readout_us);
        job.ready = goes_on ? m_NextReady : fresh;
        m_PacedAcquisition = job.acquisition;
        m_NextReady = job.ready + period;
        firmware.SetExposureState(1);
        if (!WaitUntil(lock, job.ready - Scaled(job.timing.readout_us), job)) return Outcome::kAborted;
        firmware.SetExposureState(2);
        if (!WaitUntil(lock, job.ready, job)) return Outcome::kAborted;
    }
    const std::optional<Fault> fault = m_Camera.FaultsLocked().Next(FaultOccasion::kFrame);
    if (fault && fault->kind == FaultKind::kStall && !Stall(lock, fault->argument, job)) return Outcome::kAborted;
    job.number = m_FrameNumber++;
    firmware.FinishFrame();
    if (fault && fault->kind == FaultKind::kLose) return Outcome::kLost;
    if (fault && fault->kind == FaultKind::kUnplugFrame) {
        lock.unlock();
        m_Camera.VanishNow();
        return Outcome::kAborted;
    }
    return Outcome::kHandOver;
}

// The count that the host asks for has what the link lost; a frame without a free record shows as a hole in the
// numbers.
void SimCameraTransport::LoseOnLink() {
    const platform::ScopedLock lock(m_Camera.Lock());
    ++m_Dropped;
    ++m_Camera.FramesLocked().lost_on_link;
}

// A camera without a pace would take one frame after the other just to drop it. It takes as long for a frame that is
// dropped as for one that is handed over, within bounds, so that it loses as many as it would and comes back soon.
constexpr auto kShortestDrop = std::chrono::microseconds(250);
constexpr auto kLongestDrop = std::chrono::milliseconds(5);

void SimCameraTransport::DropWithoutBuffer(const FrameJob& job) {
    platform::ScopedLock lock(m_Camera.Lock());
    ++m_Camera.FramesLocked().no_buffer;
    if (m_Camera.PluginSettings().Paced() && Scaled(job.next_us) > kShortestDrop) return;
    WaitUntil(lock, Clock::now() + std::clamp<Clock::duration>(m_FrameCost, kShortestDrop, kLongestDrop), job);
}

// A recording that is played as fast as the computer can loses nothing: it waits for the application. False when the
// frame is not wanted any more. The last frame of a run is, although the camera has halted.
bool SimCameraTransport::WaitForBuffer(const FrameJob& job) {
    const Settings& settings = m_Camera.PluginSettings();
    if (!settings.recording || settings.Paced()) return false;
    platform::ScopedLock lock(m_Camera.Lock());
    return !m_Camera.Changed().wait_for(lock, kShortestDrop, [&]() ZEL_REQUIRES(m_Camera.Lock()) {
        return m_StopRequested || !m_Camera.PluggedLocked() ||
               m_Camera.FirmwareLocked().Acquisition() != job.acquisition;
    });
}

void SimCameraTransport::HandOver(const FrameJob& job) {
    while (!TryHandOver(job)) {
        if (!WaitForBuffer(job)) return DropWithoutBuffer(job);
    }
}

// False when there is no free record.
bool SimCameraTransport::TryHandOver(const FrameJob& job) {
    const GatedCall call(m_Calls);
    IZelCameraCommon* common = nullptr;
    ZelImageHandler handler = nullptr;
    ZelCamera* camera = nullptr;
    {
        const platform::ScopedLock lock(m_BoundLock);
        common = m_Common;
        handler = m_ImageHandler;
        camera = m_ImageCamera;
    }
    if (!common) return true;
    ZelImage* const image = common->GetFreeImage();
    if (!image) return false;
    if (!FillAndQueue(*common, *image, job)) {
        common->ReleaseImage(image);
        DropWithoutBuffer(job);
        return true;
    }
    ReportEvent({CAMERA_EVENT_IMAGE_READY, static_cast<int>(job.number), {}});
    if (handler) handler(image, camera);
    return true;
}

bool SimCameraTransport::FillAndQueue(IZelCameraCommon& common, ZelImage& image, const FrameJob& job) {
    const auto begun = Clock::now();
    try {
        Fill(image, job);
    } catch (const std::exception&) {
        return false;
    }
    common.FillImageInfo(&image);
    image.image_number = job.number;
    static_cast<ZelColorImage&>(image).arrival_time_ms = platform::MillisecondClock();
    if (!common.SetPendingImage(&image)) return false;
    const CameraModel& model = m_Camera.Model();
    const std::uint64_t samples = std::uint64_t{model.width} * model.height;
    const platform::ScopedLock lock(m_Camera.Lock());
    const auto now = Clock::now();
    m_FrameCost = now - begun;
    m_Rate.Add(Packed(job) ? samples * 3 / 2 : samples * 2, now);
    m_LatencySeconds = std::chrono::duration<double>(now - job.ready).count();
    ++m_Camera.FramesLocked().delivered;
    return true;
}

// Two taps pack their samples; one alone sends them whole, and the host leaves them as they are.
bool SimCameraTransport::Packed(const FrameJob& job) const { return m_Camera.Model().packed && job.taps > 1; }

// What the camera sends, cut off where the record's memory ends.
void SimCameraTransport::Fill(ZelImage& image, const FrameJob& job) {
    const CameraModel& model = m_Camera.Model();
    const std::size_t samples = std::size_t{model.width} * model.height;
    const std::size_t capacity = static_cast<ZelColorImage&>(image).buffer_size;
    const SensorFill fill = m_Camera.PluginSettings().fill;
    FrameSource& source = m_Camera.Source();
    auto* const sensor = dynamic_cast<Sensor*>(&source);
    if (sensor && fill == SensorFill::kNone && job.taps == 1 && capacity >= samples * 2) {
        sensor->Render(job.settings, fill, job.number, {image.pixels, samples});
        return;
    }
    m_Readout.ReadOut(source, job.settings, fill, job.number, job.taps, Packed(job),
                      {reinterpret_cast<std::uint8_t*>(image.pixels), capacity});
}

}  // namespace zel::sim
