#include "tools/zelcam/frames/FrameWaiter.h"

#include <algorithm>
#include <new>
#include <utility>

#include "include/ZelCamera.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Interrupt.h"

namespace zelcam {

namespace {
// The user's wish to end comes without a notification, so a wait looks for it now and then.
constexpr std::chrono::milliseconds kInterruptCheck{50};
}  // namespace

Frame::Frame(ZelCamera* camera, ZelImage* image, bool color, double hand_over_us)
    : m_Camera(camera), m_Image(static_cast<ZelColorImage*>(image)), m_Color(color), m_HandOverUs(hand_over_us) {}

Frame::~Frame() {
    if (!m_Image) return;
    if (m_Color) {
        static_cast<ZelColorCamera*>(m_Camera)->FreeColorImage(m_Image);
    } else {
        m_Camera->FreeImage(m_Image);
    }
}

Frame::Frame(Frame&& other) noexcept
    : m_Camera(other.m_Camera),
      m_Image(std::exchange(other.m_Image, nullptr)),
      m_Color(other.m_Color),
      m_HandOverUs(other.m_HandOverUs) {}

Frame& Frame::operator=(Frame&& other) noexcept {
    std::swap(m_Camera, other.m_Camera);
    std::swap(m_Image, other.m_Image);
    std::swap(m_Color, other.m_Color);
    std::swap(m_HandOverUs, other.m_HandOverUs);
    return *this;
}

FrameWaiter::FrameWaiter(ZelCamera* camera, FrameMode mode, bool color)
    : m_Camera(camera), m_Mode(mode), m_Color(color) {
    if (!m_Camera->SetImageNotificationCallback(&FrameWaiter::Notified, this) ||
        !m_Camera->SetCameraControlCallback(&FrameWaiter::ControlEvent, this)) {
        m_Camera->SetImageNotificationCallback(nullptr, nullptr);
        throw Failure("frames can't be received", "the interface library does not take the callbacks",
                      "update the interface library");
    }
}

FrameWaiter::~FrameWaiter() {
    m_Camera->SetImageNotificationCallback(nullptr, nullptr);
    m_Camera->SetCameraControlCallback(nullptr, nullptr);
}

void FrameWaiter::Notified(int kind, void* context) {
    if (kind != ZEL_IMAGE_NOTIFICATION_PENDING) return;
    auto* const waiter = static_cast<FrameWaiter*>(context);
    const std::lock_guard lock(waiter->m_Mutex);
    try {
        waiter->m_Notifications.push_back(Clock::now());
    } catch (const std::bad_alloc&) {
        // The frame stays pending and is taken with the next notification.
    }
    waiter->m_Changed.notify_one();
}

void FrameWaiter::ControlEvent(int event_code, void* context) {
    auto* const waiter = static_cast<FrameWaiter*>(context);
    const std::lock_guard lock(waiter->m_Mutex);
    if (event_code == ZEL_CAMERA_CONTROL_DISCONNECT) waiter->m_LinkLost = true;
    if (event_code == ZEL_CAMERA_CONTROL_RECONNECT) waiter->m_LinkLost = false;
    waiter->m_Changed.notify_one();
}

bool FrameWaiter::WaitForNotification(Clock::time_point deadline, Clock::time_point& notified) {
    std::unique_lock lock(m_Mutex);
    while (m_Notifications.empty()) {
        if (m_LinkLost || Interrupted() || Clock::now() >= deadline) return false;
        m_Changed.wait_until(lock, std::min(deadline, Clock::now() + kInterruptCheck));
    }
    if (m_Mode == FrameMode::kEvery) {
        notified = m_Notifications.front();
        m_Notifications.pop_front();
        ++m_Consumed;
    } else {
        notified = m_Notifications.back();
        m_Consumed += m_Notifications.size();
        m_Notifications.clear();
    }
    return true;
}

ZelImage* FrameWaiter::Take() {
    const bool newest = m_Mode == FrameMode::kNewest;
    if (!m_Color) return newest ? m_Camera->GetLastPendingImage() : m_Camera->GetPendingImage();
    auto* const camera = static_cast<ZelColorCamera*>(m_Camera);
    return newest ? camera->GetLastPendingColorImage() : camera->GetPendingColorImage();
}

Frame FrameWaiter::Next(std::chrono::milliseconds timeout) {
    const Clock::time_point deadline = Clock::now() + timeout;
    Clock::time_point notified;
    while (WaitForNotification(deadline, notified)) {
        ZelImage* const image = Take();
        // Nothing pending: the frame of this notification was taken with an earlier one.
        if (!image) continue;
        const std::chrono::duration<double, std::micro> hand_over = Clock::now() - notified;
        const std::lock_guard lock(m_Mutex);
        ++m_Taken;
        return {m_Camera, image, m_Color, hand_over.count()};
    }
    return {};
}

bool FrameWaiter::LinkLost() const {
    const std::lock_guard lock(m_Mutex);
    return m_LinkLost;
}

std::uint64_t FrameWaiter::Skipped() const {
    const std::lock_guard lock(m_Mutex);
    return m_Consumed > m_Taken ? m_Consumed - m_Taken : 0;
}

}  // namespace zelcam
