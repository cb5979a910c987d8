#include "tools/zelcam/view/FrameTaker.h"

#include <chrono>
#include <utility>

namespace zelcam {

namespace {

// A wait for a frame; the end of a run interrupts it.
constexpr std::chrono::milliseconds kWait{200};
// How long a camera is left alone that can't send anything now.
constexpr std::chrono::milliseconds kPause{20};
constexpr std::uint32_t kRateWindowMs = 2000;

}  // namespace

FrameTaker::FrameTaker(NewestFrame& newest, FrameLoans& loans)
    : m_Newest(newest), m_Loans(loans), m_Thread([this] { Work(); }) {}

FrameTaker::~FrameTaker() {
    End();
    {
        const std::lock_guard lock(m_Mutex);
        m_Quit = true;
        m_Changed.notify_all();
    }
    m_Thread.join();
}

void FrameTaker::Begin(std::shared_ptr<zel::Camera> camera) {
    const std::lock_guard lock(m_Mutex);
    m_Camera = std::move(camera);
    m_Counter = {};
    m_Taken = {};
    m_Arrivals.clear();
    m_Changed.notify_all();
}

void FrameTaker::End() {
    std::unique_lock lock(m_Mutex);
    if (!m_Camera) return;
    m_Camera->interrupt();
    m_Camera.reset();
    m_Changed.notify_all();
    m_Changed.wait(lock, [this] { return !m_Inside; });
}

void FrameTaker::SetEveryFrame(EveryFrame receiver) {
    const std::lock_guard lock(m_Mutex);
    m_EveryFrame = receiver ? std::make_shared<const EveryFrame>(std::move(receiver)) : nullptr;
}

TakenFrames FrameTaker::Taken() const {
    const std::lock_guard lock(m_Mutex);
    return m_Taken;
}

void FrameTaker::Work() {
    std::unique_lock lock(m_Mutex);
    while (true) {
        m_Changed.wait(lock, [this] { return m_Quit || m_Camera; });
        if (m_Quit) return;
        std::shared_ptr<zel::Camera> camera = m_Camera;
        m_Inside = true;
        lock.unlock();
        const auto start = std::chrono::steady_clock::now();
        zel::Frame frame = camera->try_frame(kWait);
        // It answers at once where none can come.
        const bool idle = !frame && std::chrono::steady_clock::now() - start < kWait / 2;
        if (frame) Take(std::move(frame));
        camera.reset();
        lock.lock();
        m_Inside = false;
        m_Changed.notify_all();
        if (idle) m_Changed.wait_for(lock, kPause, [this] { return m_Quit || !m_Camera; });
    }
}

void FrameTaker::Take(zel::Frame frame) {
    const zel::FrameInfo info = frame.info();
    const LiveFramePointer live = m_Loans.Lend({std::move(frame), m_Sequence + 1, WallClockMs()});
    std::shared_ptr<const EveryFrame> receiver;
    {
        const std::lock_guard lock(m_Mutex);
        Count(info);
        receiver = m_EveryFrame;
    }
    ++m_Sequence;
    m_Newest.Put(live);
    // Shares the life of what carries it.
    if (receiver) (*receiver)({live, &live->frame});
}

void FrameTaker::Count(const zel::FrameInfo& info) {
    m_Counter.frame(info.number, info.arrival_ms);
    m_Taken.delivered = m_Counter.frames();
    m_Taken.missing = m_Counter.missing();
    m_Taken.arrival_to_hand_ms = static_cast<std::int32_t>(info.hand_over_ms - info.arrival_ms);
    m_Arrivals.push_back({info.number, info.arrival_ms});
    while (m_Arrivals.size() > 2 && info.arrival_ms - m_Arrivals.front().ms > kRateWindowMs) m_Arrivals.pop_front();
    const std::uint32_t span = info.arrival_ms - m_Arrivals.front().ms;
    m_Taken.rate = span == 0 ? 0.0 : 1000.0 * (info.number - m_Arrivals.front().number) / span;
}

}  // namespace zelcam
