#include "tools/zelcam/view/ViewRecording.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/UserTexts.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/TextTools.h"

namespace zelcam {

namespace fs = std::filesystem;
using zel::platform::Utf8Path;
using zel::platform::Utf8Text;
using zel::record::CameraRecorder;
using zel::record::Offered;
using zel::record::RecorderOptions;
using zel::record::RecordingSession;
using zel::record::RecordingStatus;

namespace {

// Buffers that the camera, the page and whoever takes a snapshot need while the others wait for the disk.
constexpr long long kOtherBuffers = 5;

std::string PathText(const fs::path& path) { return Utf8Text(path.generic_u8string()); }

// What the frames that are wanted take of the disk; 0 when nobody knows.
std::uint64_t BytesOf(const zel::record::RecordingFacts& facts, const RecordingWish& wish) {
    if (wish.compression != zel::record::Compression::kNone) return 0;
    const double of_time = wish.seconds * facts.frames_per_second;
    const double frames = wish.frames > 0 && of_time > 0.0 ? std::min(static_cast<double>(wish.frames), of_time)
                                                           : std::max(static_cast<double>(wish.frames), of_time);
    return static_cast<std::uint64_t>(frames * 2.0 * facts.width * facts.height);
}

void RequireSpace(const fs::path& folder, std::uint64_t bytes) {
    std::error_code error;
    const fs::space_info space = fs::space(folder, error);
    if (error || bytes <= space.available) return;
    throw Failure("nothing is recorded",
                  "it takes " + std::to_string(bytes >> 20) + " MiB, and the disk has room for " +
                      std::to_string(space.available >> 20),
                  "choose fewer frames or another --out", kOutput);
}

}  // namespace

ViewRecording::ViewRecording(FrameTaker& taker, std::function<void(std::string)> ended)
    : m_Taker(taker), m_Ended(std::move(ended)) {}

std::string ViewRecording::Begin(const std::shared_ptr<zel::Camera>& camera, const RecordingWish& wish) {
    const RecordingSession session = RecordingSession::Begin();
    zel::record::RecordingFacts facts = FactsOf(*camera, session, "zelcam " ZELCAM_VERSION);
    facts.averaged = wish.averaged;
    const fs::path folder = Utf8Path(wish.folder);
    std::error_code error;
    fs::create_directories(folder, error);
    RecorderOptions options;
    options.files.file = folder / Utf8Path("camera" + std::to_string(camera->info().number) + ".ome.tif");
    options.files.numbered = true;
    options.files.compression = wish.compression;
    options.files.reserve = BytesOf(facts, wish);
    RequireSpace(folder, options.files.reserve);
    const long long buffers = camera->number(ZEL_PARAM_NUM_IMAGE_BUFFERS);
    options.most_waiting = static_cast<std::size_t>(std::max(buffers - kOtherBuffers, 1LL));
    options.gain = static_cast<std::int32_t>(camera->number(ZEL_PARAM_GAIN));
    options.link_drops = [camera] { return camera->link_drops(); };
    const auto recorder = std::make_shared<CameraRecorder>(facts, options, session);
    {
        const std::lock_guard lock(m_Mutex);
        m_Recorder = recorder;
    }
    m_LossTold = 0;
    const auto over = std::make_shared<std::atomic<bool>>(false);
    m_Taker.SetEveryFrame([this, recorder, over, wish](const std::shared_ptr<const zel::Frame>& frame) {
        if (*over) return;
        const Offered offered = recorder->Offer(frame);
        const RecordingStatus status = recorder->Status();
        const char* const reason = offered == Offered::kEnded                             ? "failed"
                                   : wish.frames > 0 && status.taken >= wish.frames       ? "frames"
                                   : wish.seconds > 0.0 && status.seconds >= wish.seconds ? "seconds"
                                                                                          : nullptr;
        if (reason && !over->exchange(true)) m_Ended(reason);
    });
    return PathText(recorder->Status().file);
}

std::shared_ptr<CameraRecorder> ViewRecording::Recorder() const {
    const std::lock_guard lock(m_Mutex);
    return m_Recorder;
}

bool ViewRecording::Runs() const { return Recorder() != nullptr; }

std::string ViewRecording::End(const std::string& reason) {
    const auto recorder = Recorder();
    if (!recorder) return "";
    m_Taker.SetEveryFrame(nullptr);
    const auto files = recorder->Finish(reason);
    const RecordingStatus status = recorder->Status();
    {
        const std::lock_guard lock(m_Mutex);
        m_Recorder.reset();
    }
    const zel::record::RecordingEnd sum = SumOf(files);
    m_WentWrong = !status.failure.empty() || sum.lost_link + sum.lost_buffer + sum.lost_disk > 0;
    std::string text = "recording ended (" + reason + ")";
    if (!status.failure.empty()) text += ": " + status.failure;
    if (files.empty()) return text + "; no frame was recorded";
    return text + "; " + Counted(sum.frames, "frame") + " in " + PathText(files.front().path) +
           "; lost: " + std::to_string(sum.lost_link) + " on the link, " + std::to_string(sum.lost_buffer) +
           " without a free buffer, " + std::to_string(sum.lost_disk) + " to the disk";
}

std::uint64_t ViewRecording::NewlyLost() {
    const auto recorder = Recorder();
    if (!recorder) return 0;
    const std::uint64_t lost = recorder->Status().lost_disk;
    return lost - std::exchange(m_LossTold, lost);
}

void ViewRecording::SetGain(std::int32_t gain) {
    if (const auto recorder = Recorder()) recorder->SetGain(gain);
}

Json ViewRecording::State() const {
    const auto recorder = Recorder();
    if (!recorder) return nullptr;
    const RecordingStatus status = recorder->Status();
    return {{"file", PathText(status.file)},
            {"frames", status.written},
            {"bytes", status.bytes},
            {"seconds", status.seconds},
            {"lost", status.lost_disk + status.missing}};
}

}  // namespace zelcam
