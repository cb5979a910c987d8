#include "tools/zelcam/frames/Acquisition.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <utility>

#include "include/ZelCamera.h"
#include "tools/zelcam/frames/WaitState.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/NumberCheck.h"

namespace zelcam {

namespace {

// How long a frame may take beyond what the camera's own figures say.
constexpr long long kGraceMs = 10000;

// How often a camera that may have stopped by itself is asked whether it has.
constexpr std::chrono::milliseconds kStateCheck{200};

std::string StartAdvice(int code, bool averaging) {
    switch (code) {
        case ZEL_ERROR_INVALID_NUMBER_OF_IMAGE_BUFFERS:
        case ZEL_ERROR_TOO_MANY_IMAGE_BUFFERS:
            return "choose another number of --buffers";
        case ZEL_ERROR_IMAGE_BUFFER_ALLOCATION_FAILURE:
            return "memory is short: use fewer --buffers";
        case ZEL_ERROR_INVALID_ROI:
        case ZEL_ERROR_INVALID_BINNING:
        case ZEL_ERROR_INVALID_BINNING_SELECTION:
            return "check ROI_BIN with 'zelcam get ROI_BIN'";
        default:
            return averaging ? "memory may be short: use a smaller --average" : "check cable and power, then try again";
    }
}

// Without buffers a camera runs and not one frame comes.
void RequireBuffers(ZelCamera* camera) {
    const auto buffers = ReadParameter(camera, ParameterById(ZEL_PARAM_NUM_IMAGE_BUFFERS));
    if (!buffers || buffers->Integer() > 0) return;
    throw Failure("NUM_IMAGE_BUFFERS is 0", "no frame could come", "use --buffers 8", kUsage);
}

}  // namespace

void AcquisitionSettings::Declare(CLI::App& command) {
    command.add_option("-e,--exposure", exposure_us, "Exposure time in microseconds");
    command.add_option("-g,--gain", gain, "Gain");
    command.add_option("-b,--buffers", buffers, "Image buffers in the pool");
    command.add_option("--set", assignments, "Any other parameter, NAME=VALUE; may be repeated")
        ->allow_extra_args(false);
    command.add_option("--timeout", timeout_s, "Seconds to wait for a frame (default: from exposure and frame time)")
        ->check(SecondsBetween(0.001, 86400.0));
}

void AcquisitionSettings::DeclareProcessing(CLI::App& command) {
    processing.Declare(command);
    color.Declare(command);
}

std::vector<WriteOutcome> AcquisitionSettings::Apply(ZelCamera* camera) const {
    std::vector<WriteOutcome> outcomes;
    std::vector<Assignment> wanted;
    for (const std::string& text : assignments) wanted.push_back(ParseAssignment(text));
    PutUnitsFirst(wanted);
    for (const Assignment& assignment : wanted) {
        outcomes.push_back(RequireParameter(camera, *assignment.info, assignment.value));
    }
    const std::pair<unsigned, const std::string*> named[] = {
        {ZEL_PARAM_EXPOSURE_TIME_US, &exposure_us}, {ZEL_PARAM_GAIN, &gain}, {ZEL_PARAM_NUM_IMAGE_BUFFERS, &buffers}};
    for (const auto& [id, value] : named) {
        if (!value->empty()) outcomes.push_back(RequireParameter(camera, ParameterById(id), *value));
    }
    RequireBuffers(camera);
    for (WriteOutcome& outcome : processing.Apply(camera)) outcomes.push_back(std::move(outcome));
    return outcomes;
}

Acquisition::Acquisition(OpenCamera& camera, FrameMode frames, StartMode start, const AcquisitionSettings& settings)
    : m_Camera(camera),
      m_Start(start),
      m_Waiter(camera.Get(), frames, settings.color.color),
      m_Processing(settings.processing) {
    m_ExposureUs = ReadNumber(camera.Get(), ZEL_PARAM_EXPOSURE_TIME_US);
    m_Sequence = ReadNumber(camera.Get(), ZEL_PARAM_FRAME_COUNT);
    camera->FreeAllPendingImages();  // those of an earlier run
    camera->ClearLastError();
    m_Running = start == StartMode::kFree ? camera->Start() : camera->StartTriggerAcquisition();
    if (!m_Running) FailToStart();
    // Frame times are settled when the camera has recalculated its settings, at the start.
    const long long frame_us = m_ExposureUs + ReadNumber(camera.Get(), ZEL_PARAM_FRAME_TIME);
    m_Timeout = std::chrono::milliseconds(settings.timeout_s > 0.0 ? static_cast<long long>(settings.timeout_s * 1000.0)
                                                                   : kGraceMs + 2 * frame_us / 1000);
}

Acquisition::~Acquisition() { Stop(); }

void Acquisition::Stop() {
    if (!m_Running) return;
    m_Running = false;
    if (m_Start == StartMode::kTriggered) m_Camera->StopTriggerAcquisition(0);
    m_Camera->Stop();
}

void Acquisition::FailToStart() const {
    throw Failure(m_Camera.Label() + " can't be started", m_Camera.LastError(),
                  StartAdvice(m_Camera->GetLastError(), m_Processing.average > 1), kRefused);
}

void Acquisition::FailWithoutFrame() const {
    WaitState state;
    state.link_lost = m_Waiter.LinkLost();
    state.waited_ms = m_Timeout.count();
    state.exposure_us = m_ExposureUs;
    // A lost link answers nothing: its questions would only cost their time-outs.
    if (!state.link_lost) {
        state.started = !CameraStopped() || (m_Start == StartMode::kTriggered && m_Sequence == 0);
        state.sequence = m_Sequence;
        state.waits_for_hardware = ReadNumber(m_Camera.Get(), ZEL_PARAM_HW_TRIGGER_ACTIVE) != 0;
        state.waits_for_software = m_Start == StartMode::kTriggered && !state.waits_for_hardware;
        state.buffers = static_cast<int>(ReadNumber(m_Camera.Get(), ZEL_PARAM_NUM_IMAGE_BUFFERS));
    }
    const bool waited = !state.link_lost && !state.SequenceOver();
    throw Failure(fmt::format("no {}frame from {}{}", state.SequenceOver() ? "further " : "", m_Camera.Label(),
                              waited ? fmt::format(" within {} ms", state.waited_ms) : ""),
                  WhyNoFrame(state), AdviceForNoFrame(state), state.link_lost ? kLinkLost : kTimeout);
}

bool Acquisition::CameraStopped() const {
    const auto state = ReadParameter(m_Camera.Get(), ParameterById(ZEL_PARAM_CAMSTATE));
    return state && state->Integer() == 0;
}

// A camera that stops after a number of frames need not be waited for when it has; its last frames may still be on
// their way then.
Frame Acquisition::WaitForFrame() {
    if (m_Sequence == 0) return m_Waiter.Next(m_Timeout);
    const auto deadline = std::chrono::steady_clock::now() + m_Timeout;
    bool stopped = false;
    while (true) {
        Frame frame = m_Waiter.Next(std::min(m_Timeout, kStateCheck));
        const bool late = std::chrono::steady_clock::now() >= deadline;
        if (frame || stopped || late || Interrupted() || m_Waiter.LinkLost()) return frame;
        stopped = CameraStopped();
    }
}

Frame Acquisition::Next() {
    Frame frame = WaitForFrame();
    if (!frame && !Interrupted()) FailWithoutFrame();
    if (frame && !m_SizeChecked) m_Processing.CheckSize(*frame.Get());
    m_SizeChecked = true;
    return frame;
}

std::uint64_t Acquisition::LinkDrops() const {
    return static_cast<std::uint64_t>(ReadNumber(m_Camera.Get(), ZEL_PARAM_DROPPED_FRAMES));
}

}  // namespace zelcam
