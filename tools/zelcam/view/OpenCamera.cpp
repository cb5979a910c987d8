#include "tools/zelcam/view/OpenCamera.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace zelcam {

namespace {

// How long those who look at a frame, or write it to a disk, may take to let go of it.
constexpr std::chrono::seconds kLettingGo{5};

// Image buffers: so much memory is spent on frames that somebody may look at or write to a disk while others come.
constexpr long long kBufferBytes = 256LL << 20;
constexpr long long kFewestBuffers = 8, kMostBuffers = 32;

long long BuffersFor(const zel::Camera& camera) {
    const long long frame = std::max(camera.number(ZEL_PARAM_HSIZE) * camera.number(ZEL_PARAM_VSIZE) * 2, 1LL);
    return std::clamp(kBufferBytes / frame, kFewestBuffers, kMostBuffers);
}

}  // namespace

OpenCamera::OpenCamera(zel::Sdk& sdk, FrameTaker& taker, NewestFrame& newest, FrameLoans& loans)
    : m_Sdk(sdk), m_Taker(taker), m_Newest(newest), m_Loans(loans) {}

OpenCamera::~OpenCamera() { Close(); }

void OpenCamera::Connect(int number, bool calibrated) {
    m_Camera = std::make_shared<zel::Camera>(m_Sdk.open_found(number, {.calibrated = calibrated}));
    m_Camera->on_event(m_OnEvent);
}

void OpenCamera::Open(int number, zel::CameraEventHandler on_event) {
    Close();
    m_Runs = m_Wanted = false;
    m_Chosen.clear();
    m_Trigger = zel::Trigger::as_set;
    m_Averaging = 0;
    m_Color.reset();
    m_CalibrationOn = m_HasCalibration = m_CalibrationMissing = false;
    m_OnEvent = std::move(on_event);
    Connect(number, false);
    const long long buffers = BuffersFor(*m_Camera);
    if (m_Camera->number(ZEL_PARAM_NUM_IMAGE_BUFFERS) < buffers) {
        Set(ZEL_PARAM_NUM_IMAGE_BUFFERS, std::to_string(buffers));
    }
}

void OpenCamera::OpenAgain(int number, bool calibrated) {
    const bool runs = m_Runs, wanted = m_Wanted;
    Close();
    m_Wanted = wanted;
    Connect(number, calibrated);
    m_HasCalibration = calibrated && m_Camera->set_calibration(m_CalibrationOn || calibrated);
    m_Runs = runs;
}

void OpenCamera::Close() {
    if (!m_Camera) return;
    Stop();
    LetGoOfFrames();
    m_Camera.reset();
}

void OpenCamera::LetGoOfFrames() {
    m_Newest.Put(nullptr);
    m_Loans.WaitUntilBack(kLettingGo);
}

void OpenCamera::Start() {
    m_Wanted = true;
    m_Taker.End();
    if (m_OnStop) m_OnStop();
    LetGoOfFrames();
    try {
        m_Camera->start({.trigger = m_Trigger});
    } catch (const zel::Error& error) {
        // A camera that was unplugged runs when it is back.
        m_Runs = error.kind() == zel::ErrorKind::link_lost || m_Camera->link_lost();
        throw;
    }
    m_Runs = true;
    if (m_OnRun) m_OnRun();
    m_Taker.Begin(m_Camera);
}

void OpenCamera::Stop() {
    m_Runs = m_Wanted = false;
    Halt();
}

void OpenCamera::Halt() {
    m_Taker.End();
    if (m_OnStop && m_Camera) m_OnStop();
    if (m_Camera) m_Camera->stop();
}

bool OpenCamera::ChangeStopped(const std::function<void()>& change) {
    if (!m_Runs) {
        change();
        return false;
    }
    Halt();
    try {
        change();
    } catch (...) {
        Start();
        throw;
    }
    Start();
    return true;
}

zel::SetResult OpenCamera::Set(unsigned id, const std::string& value) {
    zel::SetResult result = m_Camera->parameter(id).try_set(value);
    Remember(result);
    return result;
}

void OpenCamera::Remember(const zel::SetResult& result) {
    if (!result.accepted || result.info->access != zel::Access::read_write) return;
    Forget(result.info->id);
    m_Chosen.emplace_back(result.info->id, result.requested);
}

void OpenCamera::Forget(unsigned id) {
    std::erase_if(m_Chosen, [&](const auto& chosen) { return chosen.first == id; });
}

std::vector<std::string> OpenCamera::Restore() {
    std::vector<std::string> refused;
    const auto attempt = [&](const auto& action) {
        try {
            action();
        } catch (const zel::Error& error) {
            refused.emplace_back(error.what());
        }
    };
    m_Taker.End();
    m_Camera->stop();
    for (const auto& chosen : m_Chosen) {
        attempt([&] { m_Camera->parameter(chosen.first).set(chosen.second); });
    }
    if (m_HasCalibration) m_Camera->set_calibration(m_CalibrationOn);
    if (m_Averaging > 1) attempt([&] { m_Camera->set_averaging(m_Averaging); });
    if (m_Color) attempt([&] { m_Camera->use_color({zel::ColorFormat::rgb16, *m_Color}); });
    if (m_Wanted) attempt([&] { Start(); });
    return refused;
}

void OpenCamera::SetTrigger(zel::Trigger trigger) {
    // A start for a trigger writes the switch itself.
    if (trigger == zel::Trigger::as_set) {
        Set(ZEL_PARAM_HW_TRIGGER_ACTIVE, "0");
    } else {
        Forget(ZEL_PARAM_HW_TRIGGER_ACTIVE);
    }
    m_Trigger = trigger;
}

void OpenCamera::SetAveraging(int frames) {
    m_Camera->set_averaging(frames);
    m_Averaging = frames > 1 ? frames : 0;
}

void OpenCamera::SetColor(std::optional<zel::ColorSpace> space) {
    m_Color.reset();
    if (!space) return m_Camera->use_grey();
    m_Camera->use_color({zel::ColorFormat::rgb16, *space});
    m_Color = space;
}

bool OpenCamera::SetCalibration(bool on) {
    if (on && !m_HasCalibration) {
        m_CalibrationOn = true;
        OpenAgain(m_Camera->info().number, true);
        Restore();
    } else {
        m_Camera->set_calibration(on);
    }
    m_CalibrationOn = on && m_HasCalibration;
    m_CalibrationMissing = on && !m_HasCalibration;
    return m_HasCalibration || !on;
}

}  // namespace zelcam
