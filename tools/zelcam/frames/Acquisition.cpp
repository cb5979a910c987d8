#include "tools/zelcam/frames/Acquisition.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <utility>

#include "tools/zelcam/camera/Assignments.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/NumberCheck.h"

namespace zelcam {

namespace {

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

std::string AdviceFor(const zel::NoFrame& why) {
    switch (why.reason()) {
        case zel::Reason::link_lost:
            return "plug the camera in and try again";
        case zel::Reason::no_buffers:
            return "use --buffers 8";
        case zel::Reason::buffers_held:
            return "use more --buffers";
        case zel::Reason::waits_for_hardware:
            return "send a trigger, or set HW_TRIGGER_ACTIVE=0";
        case zel::Reason::sequence_over:
            return "ask for fewer frames, or set FRAME_COUNT=0";
        case zel::Reason::not_started:
            return "the camera refused to run; look at 'zelcam info'";
        case zel::Reason::exposing:
            return "wait longer with --timeout";
        case zel::Reason::waits_for_software:
        case zel::Reason::silent:
            return "check the cable, or wait longer with --timeout";
        case zel::Reason::interrupted:
            break;
    }
    return "";
}

// The start would refuse it, too, when the run has been announced.
void RequireBuffers(const zel::Camera& camera) {
    const auto buffers = camera.parameter(ZEL_PARAM_NUM_IMAGE_BUFFERS).try_value();
    if (!buffers || buffers->integer() > 0) return;
    throw Failure("NUM_IMAGE_BUFFERS is 0", "no frame could come", "use --buffers 8", kUsage);
}

// A camera that does not tell has some.
std::size_t BuffersOf(const zel::Camera& camera) {
    return static_cast<std::size_t>(std::max(camera.number(ZEL_PARAM_NUM_IMAGE_BUFFERS), 1LL));
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

std::vector<zel::SetResult> AcquisitionSettings::Apply(const zel::Camera& camera) const {
    std::vector<Assignment> wanted;
    for (const std::string& text : assignments) wanted.push_back(ParseAssignment(text));
    PutUnitsFirst(wanted);
    const std::pair<unsigned, const std::string*> named[] = {
        {ZEL_PARAM_EXPOSURE_TIME_US, &exposure_us}, {ZEL_PARAM_GAIN, &gain}, {ZEL_PARAM_NUM_IMAGE_BUFFERS, &buffers}};
    for (const auto& [id, value] : named) {
        if (!value->empty()) wanted.push_back({id, *value});
    }
    std::vector<zel::SetResult> results;
    for (const Assignment& assignment : wanted) results.push_back(Require(camera, assignment));
    RequireBuffers(camera);
    processing.Apply(camera, results);
    return results;
}

Acquisition::Acquisition(zel::Camera& camera, const AcquisitionSettings& settings, zel::Trigger trigger,
                         zel::Order order)
    : m_Camera(camera),
      m_Order(order),
      m_Processing(settings.processing),
      m_Buffers(BuffersOf(camera)),
      m_OnInterrupt([&camera] { camera.interrupt(); }) {
    try {
        camera.start({.trigger = trigger});
    } catch (const zel::Error& error) {
        throw Failure(error, StartAdvice(camera.native()->GetLastError(), m_Processing.average > 1));
    }
    const std::chrono::duration<double> timeout(settings.timeout_s);
    m_Timeout = settings.timeout_s > 0.0 ? std::chrono::duration_cast<std::chrono::milliseconds>(timeout)
                                         : camera.frame_timeout();
}

void Acquisition::End() {
    m_Ended = true;
    m_Camera.interrupt();
}

zel::Frame Acquisition::Next() {
    const auto ended = [this] { return m_Ended || Interrupted(); };
    if (ended()) return {};
    zel::FrameResult result = m_Camera.wait_frame(m_Timeout, m_Order);
    if (!result) {
        if (ended()) return {};
        try {
            m_Camera.throw_no_frame(result.no_frame());
        } catch (const zel::Error& error) {
            throw Failure(error, AdviceFor(result.no_frame()));
        }
    }
    if (!m_SizeChecked) m_Processing.CheckSize(*result);
    m_SizeChecked = true;
    return result.take();
}

}  // namespace zelcam
