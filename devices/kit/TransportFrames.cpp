// The frame thread of a transport: where a back end's frames go to the SDK.
#include <algorithm>
#include <atomic>
#include <exception>

#include "devices/kit/Transport.h"
#include "include/ZelImage.h"
#include "platform/Clock.h"

namespace zel::kit {

namespace {

// How often a patient camera looks for memory.
constexpr auto kMemoryCheck = std::chrono::microseconds(250);

void Prepare(BackEnd& device) {
    try {
        device.Prepare();
    } catch (const std::exception&) {
        // It shows when the run begins.
    }
}

}  // namespace

// One run.
class Transport::Sink final : public FrameSink {
  public:
    Sink(Transport& transport, const RunControl::Ticket& ticket) : m_Transport(transport), m_Ticket(ticket) {}
    virtual ~Sink() = default;

    HandOver Give(const FrameFacts& facts, const Fill& fill) override {
        if (!Control().Count(m_Ticket)) return HandOver::kEnded;
        unsigned& next = m_Transport.m_FrameNumber;
        const unsigned number = std::max(facts.number.value_or(next), next);
        next = number + 1;
        bool filled = false;
        while (!m_Transport.TryHandOver(facts, number, fill, filled)) {
            if (facts.patient && Control().WaitForMemory(m_Ticket, kMemoryCheck)) continue;
            ++m_Transport.m_Camera.Frames().no_buffer;
            return HandOver::kNoBuffer;
        }
        return filled ? HandOver::kTaken : HandOver::kNoBuffer;
    }
    void Lose(unsigned frames) override {
        for (unsigned i = 0; i < frames && Control().Count(m_Ticket); ++i) {
            ++m_Transport.m_FrameNumber;
            ++m_Transport.m_Dropped;
            ++m_Transport.m_Camera.Frames().lost_on_link;
        }
    }
    unsigned NextNumber() const override { return m_Transport.m_FrameNumber; }
    bool Ended() const override { return Control().Ended(m_Ticket); }
    bool WaitUntil(Clock::time_point time) override { return Control().WaitUntil(m_Ticket, time); }
    bool WaitForTrigger() override { return Control().TakeTrigger(m_Ticket); }
    // One that comes again may come when the camera is already back.
    void Vanish() override {
        if (!m_Vanished.exchange(true)) m_Transport.m_Camera.Vanish();
    }

  private:
    RunControl& Control() const { return m_Transport.m_Camera.Control(); }

    Transport& m_Transport;
    const RunControl::Ticket m_Ticket;
    std::atomic<bool> m_Vanished = false;
};

void Transport::FrameLoop() {
    m_FrameThreadId = std::this_thread::get_id();
    m_FrameNumber = 0;
    const platform::TimerResolution resolution;
    RunControl& control = m_Camera.Control();
    BackEnd& device = m_Camera.Device();
    Prepare(device);
    if (control.AwaitRelease()) {
        Prepare(device);  // with the settings of the run
        control.SetReady();
    }
    while (const auto ticket = control.Await()) {
        Sink sink(*this, *ticket);
        try {
            device.Start(sink, ticket->run);
        } catch (const std::exception&) {
            // The run is over, which the host sees by the camera's state.
        }
        control.Finish(*ticket);
    }
    m_FrameThreadId = std::thread::id();
}

// False when there is no free record.
bool Transport::TryHandOver(const FrameFacts& facts, unsigned number, const FrameSink::Fill& fill, bool& filled) {
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
    filled = FillAndQueue(*common, *image, facts, number, fill);
    if (!filled) {
        common->ReleaseImage(image);
        ++m_Camera.Frames().no_buffer;
        return true;
    }
    ReportEvent({CAMERA_EVENT_IMAGE_READY, static_cast<int>(number), {}});
    if (handler) handler(image, camera);
    return true;
}

bool Transport::FillAndQueue(IZelCameraCommon& common, ZelImage& image, const FrameFacts& facts, unsigned number,
                             const FrameSink::Fill& fill) {
    auto& record = static_cast<ZelColorImage&>(image);
    try {
        if (!fill({reinterpret_cast<std::uint8_t*>(image.pixels), std::size_t{record.buffer_size}})) return false;
    } catch (const std::exception&) {
        return false;
    }
    common.FillImageInfo(&image);
    image.image_number = number;
    record.arrival_time_ms = platform::MillisecondClock();
    if (!common.SetPendingImage(&image)) return false;
    const platform::ScopedLock lock(m_RateLock);
    const auto now = RateMeter::Clock::now();
    m_Rate.Add(facts.link_bytes ? facts.link_bytes : m_Camera.FrameBytes(), now);
    m_LatencySeconds = std::chrono::duration<double>(now - facts.ready).count();
    ++m_Camera.Frames().delivered;
    return true;
}

}  // namespace zel::kit
