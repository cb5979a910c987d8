#include "tools/zelcam/record/RecordRun.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/UserTexts.h"
#include "tools/zelcam/camera/CameraFacts.h"
#include "tools/zelcam/record/RecordPlan.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

using zel::platform::ScopedLock;
using zel::platform::Utf8Text;

namespace {

// How long a wish to end may go unnoticed between two triggers.
constexpr std::chrono::milliseconds kEndCheck{20};

double Rate(const RecordingStatus& status) {
    return status.seconds > 0.0 ? static_cast<double>(status.taken - 1) / status.seconds : 0.0;
}

}  // namespace

RecordRun::RecordRun(zel::Camera& camera, const zel::record::RecordingFacts& facts, RunOptions options,
                     RecorderOptions recorder, const RecordingSession& session)
    : m_Camera(camera),
      m_Description(zelcam::ToJson(ReadFacts(camera))),
      m_Options(std::move(options)),
      m_Recorder(facts, std::move(recorder), session) {}

RecordRun::~RecordRun() {
    End("ended");
    Wait();
}

void RecordRun::Start() {
    m_Thread = std::thread([this] { Run(); });
}

void RecordRun::Wait() {
    if (m_Thread.joinable()) m_Thread.join();
}

void RecordRun::End(const std::string& reason) {
    const ScopedLock lock(m_Mutex);
    if (m_Reason.empty()) m_Reason = reason;
    if (m_Acquisition) m_Acquisition->End();
}

void RecordRun::Run() {
    try {
        Take();
    } catch (const Failure& failure) {
        m_Failure = std::current_exception();
        const bool lost = failure.Kind().exit_code == kLinkLost.exit_code;
        End(lost ? "link lost" : failure.Kind().exit_code == kTimeout.exit_code ? "no frame came" : "failed");
    } catch (const std::exception&) {
        m_Failure = std::current_exception();
        End("failed");
    }
    std::string reason;
    {
        const ScopedLock lock(m_Mutex);
        reason = m_Reason.empty() ? "interrupted" : m_Reason;
    }
    m_Files = m_Recorder.Finish(reason);
    m_Ended = true;
}

void RecordRun::Take() {
    // Those that don't start keep nobody waiting.
    struct Arrival {
        explicit Arrival(std::atomic<int>& count) : starting(count) {}
        ~Arrival() { --starting; }
        std::atomic<int>& starting;
    };
    std::optional<Arrival> arrival(std::in_place, *m_Options.starting);
    Acquisition acquisition(m_Camera, m_Options.settings, m_Options.trigger);
    arrival.reset();
    const auto publish = [this](Acquisition* running) {
        const ScopedLock lock(m_Mutex);
        m_Acquisition = running;
        if (running && !m_Reason.empty()) running->End();
    };
    publish(&acquisition);
    try {
        TakeFrames(acquisition);
    } catch (...) {
        publish(nullptr);
        throw;
    }
    publish(nullptr);
}

void RecordRun::TakeFrames(Acquisition& acquisition) {
    auto next = std::chrono::steady_clock::now();
    // The first frames of an average are of fewer frames than the user asked for.
    int skip = m_Options.settings.processing.FramesBefore();
    while (true) {
        if (m_Options.trigger == zel::Trigger::software && !WaitForTrigger(next)) return;
        auto frame = std::make_shared<const zel::Frame>(acquisition.Next());
        if (!*frame) return;
        if (skip-- > 0 || !Begun()) continue;
        if (!Wanted(m_Recorder.Offer(std::move(frame)))) return;
    }
}

bool RecordRun::WaitForTrigger(std::chrono::steady_clock::time_point& next) {
    const auto ending = [this] {
        const ScopedLock lock(m_Mutex);
        return !m_Reason.empty() || Interrupted();
    };
    while (!ending()) {
        const auto now = std::chrono::steady_clock::now();
        if (now >= next) {
            next += std::chrono::milliseconds(m_Options.interval_ms);
            m_Camera.trigger();
            return true;
        }
        std::this_thread::sleep_until(std::min(next, now + kEndCheck));
    }
    return false;
}

bool RecordRun::Wanted(Offered offered) {
    if (offered == Offered::kEnded) return false;
    if (offered != Offered::kTaken || m_Options.frames + m_Options.bytes == 0) return true;
    const RecordingStatus status = m_Recorder.Status();
    if (m_Options.frames > 0 && status.taken >= m_Options.frames) {
        End("frames");
        return false;
    }
    // Those that wait count as large as those that are written.
    const std::uint64_t frame = status.bytes / std::max<std::uint64_t>(status.written, 1);
    if (m_Options.bytes > 0 && status.written > 0 && status.bytes + (status.waiting + 1) * frame > m_Options.bytes) {
        End("size");
        return false;
    }
    return true;
}

std::string RecordRun::NewLoss() {
    const std::uint64_t lost = m_Recorder.Status().lost_disk;
    if (lost <= m_LossTold) return "";
    m_LossTold = lost;
    return fmt::format("{}: the disk is too slow, {} lost so far", m_Camera.label(), Counted(lost, "frame"));
}

std::uint64_t RecordRun::Lost() const {
    const auto sum = SumOf(m_Files);
    return sum.lost_link + sum.lost_buffer + sum.lost_disk;
}

std::string RecordRun::Text() const {
    const RecordingStatus status = m_Recorder.Status();
    const auto sum = SumOf(m_Files);
    std::string text;
    for (const RecordedFile& file : m_Files) {
        text += fmt::format("{}: {}, {}\n", Utf8Text(file.path.generic_u8string()), Counted(file.end.frames, "frame"),
                            SizeText(file.bytes));
    }
    text += fmt::format("{}: {} recorded", m_Camera.label(), Counted(sum.frames, "frame"));
    if (sum.frames > 1 && Rate(status) > 0.0)
        text += fmt::format(" in {:.2f} s, {:.1f} frames/s", status.seconds, Rate(status));
    text += fmt::format("; lost: {} on the link, {} without a free buffer, {} to the disk", sum.lost_link,
                        sum.lost_buffer, sum.lost_disk);
    if (sum.passed_over > 0) text += fmt::format("; {} passed over", sum.passed_over);
    return text + "\n";
}

Json RecordRun::ToJson() const {
    const RecordingStatus status = m_Recorder.Status();
    const auto sum = SumOf(m_Files);
    Json json;
    json["camera"] = m_Description;
    json["frames"] = sum.frames;
    json["bytes"] = status.bytes;
    json["seconds"] = status.seconds;
    json["frames_per_second"] = Rate(status) > 0.0 ? Json(Rate(status)) : Json();
    json["ended"] = sum.reason;
    json["dropped"] = {{"link", sum.lost_link}, {"no_free_buffer", sum.lost_buffer}, {"disk", sum.lost_disk}};
    json["passed_over"] = sum.passed_over;
    json["files"] = Json::array();
    for (const RecordedFile& file : m_Files) {
        json["files"].push_back({{"path", Utf8Text(file.path.generic_u8string())},
                                 {"frames", file.end.frames},
                                 {"bytes", file.bytes},
                                 {"ended", file.end.reason}});
    }
    return json;
}

void RecordRun::ThrowFailure() const {
    const RecordingStatus status = m_Recorder.Status();
    if (!status.failure.empty()) {
        const char* const advice =
            status.disk_full ? "make room on the disk or record to another one" : "record to another folder or disk";
        throw Failure("the recording of " + m_Camera.label() + " ended", status.failure, advice, kOutput);
    }
    if (m_Failure) std::rethrow_exception(m_Failure);
}

}  // namespace zelcam
