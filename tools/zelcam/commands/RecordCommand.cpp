// zelcam record: keeps every frame of one or several cameras.
#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <list>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

#include "platform/Memory.h"
#include "platform/Terminal.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/commands/Command.h"
#include "tools/zelcam/record/RecordPlan.h"
#include "tools/zelcam/record/RecordRun.h"
#include "tools/zelcam/text/Interrupt.h"
#include "tools/zelcam/text/NumberCheck.h"
#include "tools/zelcam/text/Output.h"
#include "tools/zelcam/text/Progress.h"
#include "tools/zelcam/text/TextTools.h"
#include "tools/zelcam/text/UtcTime.h"
#include "zel/Sdk.h"

namespace zelcam {

namespace {

using zel::platform::Utf8Path;
using zel::platform::Utf8Text;
using zel::record::DiskNeed;
using zel::record::RecordingFacts;

// Memory of the pool, when the user does not say how many buffers; what waits for the disk lies in it.
constexpr std::uint64_t kPoolBytes = std::uint64_t{256} << 20;
constexpr std::size_t kLeastBuffers = 16, kMostBuffers = 256;
// Of the pool's buffers, so many stay the camera's.
constexpr std::size_t kCamerasOwn = 4;
// The share of the memory there is that a ring may take.
constexpr double kMostMemory = 0.7;
// A camera that waits for its trigger input may wait long.
constexpr double kTriggerWait = 86400.0;
constexpr std::chrono::milliseconds kLook{100};
constexpr std::chrono::milliseconds::rep kNoTime = 0;
// Of lines that tell of frames lost to the disk.
constexpr std::chrono::seconds kBetweenLines{1};

constexpr const char* kSoftware = "zelcam " ZELCAM_VERSION;

std::atomic<int> s_Requests{0};  // of the user: write the ring

CLI::Validator AmountCheck(bool frames, bool bytes, bool seconds, const char* form) {
    const auto fault = [=](const std::string& text) {
        Amount amount;
        const bool good = ParseAmount(text, amount) && (frames || amount.frames == 0) && (bytes || amount.bytes == 0) &&
                          (seconds || amount.seconds == 0.0);
        return good ? std::string() : "'" + text + "' is not as in " + form;
    };
    return CLI::Validator(fault, form, "");
}

class RecordCommand : public Command {
  public:
    const char* Name() const override { return "record"; }
    const char* Help() const override { return "Record every frame into a file that microscopy programs open"; }
    const char* Example() const override { return "record --seconds 60 --pixel-size 0.325 run.ome.tif"; }

    void Declare(CLI::App& command) override {
        command.add_option("file", m_File, "File to record into (default: recording_DATE_TIME.ome.tif)");
        command
            .add_option("-c,--camera", m_Camera,
                        "Number or serial number, several with commas, or all: a file each, with its serial number")
            ->capture_default_str();
        command.add_option("-n,--frames", m_Frames, "End after so many frames")
            ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1000000000}));
        command.add_option("-s,--seconds", m_Seconds, "End after so many seconds (default: with Ctrl-C)")
            ->check(SecondsBetween(0.01, 1e7));
        command.add_option("--size", m_Size, "End at this size of a camera's files: 500MB, 20GB")
            ->check(AmountCheck(false, true, false, "500MB, 20GB"));
        command
            .add_option("--split", m_Split, "Begin a new file after so many frames, bytes or seconds: 1000, 4GB, 10min")
            ->check(AmountCheck(true, true, true, "1000, 4GB, 10min"));
        command.add_option("--every", m_Every, "Record every Nth frame only")->check(CLI::Range(1u, 1000000u));
        command.add_option("--compress", m_Compress, "none, zstd (fast) or deflate (read by more programs)")
            ->check(CLI::IsMember({"none", "zstd", "deflate"}))
            ->capture_default_str();
        command.add_option("--pixel-size", m_PixelUm, "Micrometres from pixel to pixel in the object")
            ->check(CLI::Range(1e-6, 1e6));
        command
            .add_option("--trigger", m_Trigger, "What starts a frame: free (the camera itself), software or hardware")
            ->check(CLI::IsMember({"free", "software", "hardware"}))
            ->capture_default_str();
        command.add_option("--interval", m_IntervalMs, "Milliseconds from one software trigger to the next")
            ->check(CLI::Range(0, 3600000))
            ->capture_default_str();
        command
            .add_option("--ring", m_Ring,
                        "Keep the last seconds in memory; Enter, the signal USR1 or --on-event write them to a file")
            ->excludes("--frames")
            ->excludes("--size")
            ->excludes("--split")
            ->check(SecondsBetween(0.01, 86400.0));
        command.add_option("--on-event", m_Event, "With --ring: write it when the camera sends this event, 0 to 5")
            ->needs("--ring")
            ->check(CLI::Range(0, 5));
        command.add_flag("--force", m_Force, "Begin although disk or memory are too small");
        command.add_flag("--allow-loss", m_AllowLoss, "No failure when frames between the recorded ones were lost");
        m_Settings.Declare(command);
        m_Settings.processing.Declare(command);
        DeclareJson(command);
    }

    void Run(Json& result) override {
        SettleOptions();
        zel::Sdk sdk;
        std::list<zel::Camera> cameras;
        for (const std::string& name : CameraNames(sdk)) cameras.push_back(sdk.open(name));
        const RecordingSession session = RecordingSession::Begin();
        std::vector<zel::SetResult> settings;
        std::vector<RecordingFacts> facts;
        for (zel::Camera& camera : cameras) {
            Prepare(camera, session, settings);
            facts.push_back(FactsOf(camera, session, kSoftware));
            facts.back().averaged = m_Settings.processing.average;
            facts.back().pixel_um = m_PixelUm;
        }
        RequireRoom(facts);
        CatchInterrupts();
        Tell(settings, result);
        std::list<RecordRun> runs;
        m_Starting = std::make_shared<std::atomic<int>>(static_cast<int>(cameras.size()));
        try {
            auto fact = facts.begin();
            for (zel::Camera& camera : cameras) Begin(camera, *fact++, cameras.size() > 1, session, runs);
        } catch (const zel::record::RecordError& error) {
            throw Failure("nothing was recorded", error.what(), "choose another name or folder", kOutput);
        }
        if (m_Json) {
            result["session"] = session.id;
            result["started"] = session.started;
        }
        Record(runs);
        Report(runs, result);
        for (const RecordRun& run : runs) run.ThrowFailure();
        RefuseLoss(runs);
        // Without an end of its own the run ends as it should.
        if (m_Frames > 0 || m_Seconds > 0.0 || !m_Size.empty()) FailIfInterrupted("what was taken is recorded");
    }

  private:
    using Clock = std::chrono::steady_clock;

    void SettleOptions() {
        if (m_File.empty()) {
            const std::string now = UtcNow();  // 2026-11-22T04:31:00.000Z
            m_File = "recording_" + now.substr(0, 10) + "_" + now.substr(11, 2) + now.substr(14, 2) + now.substr(17, 2);
        }
        m_Path = Utf8Path(m_File);
        std::error_code error;
        if (m_Path.has_parent_path()) std::filesystem::create_directories(m_Path.parent_path(), error);
        if (error) throw Failure("the folder of '" + m_File + "' can't be made", error.message(), "", kOutput);
        if (m_Trigger == "hardware" && m_Settings.timeout_s <= 0.0) m_Settings.timeout_s = kTriggerWait;
        ParseAmount(m_Size, m_End);
        m_End.frames = m_Frames;
        m_End.seconds = m_Seconds;
    }

    std::vector<std::string> CameraNames(zel::Sdk& sdk) const {
        std::vector<std::string> names;
        if (m_Camera == "all") {
            for (const zel::CameraInfo& camera : sdk.cameras()) names.push_back(std::to_string(camera.number));
            if (names.empty()) names.emplace_back("0");  // opening it tells what is wrong
            return names;
        }
        return CLI::detail::split(m_Camera, ',');
    }

    // Settings, and a pool that holds what shall wait in memory.
    void Prepare(const zel::Camera& camera, const RecordingSession& session, std::vector<zel::SetResult>& settings) {
        AcquisitionSettings own = m_Settings;
        for (zel::SetResult& result : own.Apply(camera)) settings.push_back(std::move(result));
        // So that the frame rate is the one of these settings.
        camera.parameter(ZEL_PARAM_UPDATE_PARAMETERS).try_set(1LL);
        if (!m_Settings.buffers.empty()) return;
        const std::size_t buffers = BuffersFor(camera, FactsOf(camera, session, kSoftware));
        settings.push_back(camera.set(zel::settings::buffers, static_cast<unsigned>(buffers)));
    }

    std::size_t BuffersFor(const zel::Camera& camera, const RecordingFacts& facts) const {
        const std::uint64_t frame = std::max<std::uint64_t>(PoolBytes(camera), 1);
        if (m_Ring <= 0.0) return std::clamp(static_cast<std::size_t>(kPoolBytes / frame), kLeastBuffers, kMostBuffers);
        const auto frames = static_cast<std::size_t>(m_Ring * facts.frames_per_second / m_Every) + 2;
        const double bytes = static_cast<double>(frames) * static_cast<double>(frame);
        const std::uint64_t memory = zel::platform::AvailablePhysicalMemory();
        if (!m_Force && memory > 0 && bytes > kMostMemory * static_cast<double>(memory)) {
            throw Failure(fmt::format("a ring of {} s", m_Ring),
                          fmt::format("it takes {} of the {} of memory that are free",
                                      SizeText(static_cast<std::uint64_t>(bytes)), SizeText(memory)),
                          "use a shorter --ring, or --force", kRefused);
        }
        return frames + kLeastBuffers;
    }

    // A buffer of the pool takes a whole frame of the sensor.
    static std::uint64_t PoolBytes(const zel::Camera& camera) {
        return std::uint64_t{camera.get(zel::settings::sensor_width)} * camera.get(zel::settings::sensor_height) * 2;
    }

    void RequireRoom(const std::vector<RecordingFacts>& facts) {
        m_Need = {};
        for (const RecordingFacts& camera : facts) {
            const DiskNeed need = NeedOf(camera, m_End, m_Every);
            m_Need.frames += need.frames;
            m_Need.bytes += need.bytes;
            m_Need.bytes_per_second += need.bytes_per_second;
        }
        m_Room = zel::record::FreeSpace(m_Path);
        // What compression makes of it is not known before.
        if (m_Force || m_Compress != "none" || m_Need.bytes <= m_Room) return;
        throw Failure("the disk can't hold the recording",
                      "it takes " + SizeText(m_Need.bytes) + ", and " + SizeText(m_Room) + " are free",
                      "make room, record less (--every, --roi, --compress), or use --force", kOutput);
    }

    void Begin(zel::Camera& camera, const RecordingFacts& facts, bool several, const RecordingSession& session,
               std::list<RecordRun>& runs) {
        RunOptions run{m_Settings, zel::Trigger::as_set, m_IntervalMs, m_Ring > 0.0 ? 0 : m_Frames, m_End.bytes,
                       m_Starting};
        if (m_Trigger != "free")
            run.trigger = m_Trigger == "software" ? zel::Trigger::software : zel::Trigger::hardware;
        Amount split;
        ParseAmount(m_Split, split);
        const DiskNeed need = NeedOf(facts, m_End, m_Every);
        RecorderOptions recorder;
        recorder.files.file = zel::record::FileOfCamera(m_Path, facts.serial, several);
        recorder.files.split_frames = split.frames;
        recorder.files.split_bytes = split.bytes;
        recorder.files.split_seconds = split.seconds;
        using zel::record::Compression;
        if (m_Compress == "zstd") recorder.files.compression = Compression::kZstd;
        if (m_Compress == "deflate") recorder.files.compression = Compression::kDeflate;
        if (m_Compress == "none" && need.frames > 0.0) recorder.files.reserve = need.bytes;
        const auto buffers = static_cast<std::size_t>(std::max(camera.number(ZEL_PARAM_NUM_IMAGE_BUFFERS), 1LL));
        recorder.most_waiting = buffers - std::min(kCamerasOwn, buffers / 2);
        recorder.every = m_Every;
        recorder.ring_seconds = m_Ring;
        recorder.gain = static_cast<std::int32_t>(camera.number(ZEL_PARAM_GAIN));
        recorder.link_drops = [&camera] { return camera.link_lost() ? 0 : camera.link_drops(); };
        runs.emplace_back(camera, facts, std::move(run), recorder, session);
        if (m_Json) return;
        if (m_Ring > 0.0) {
            Print("{}: the last {} s, at most {} frames and {} of memory, go to '{}' with Enter\n", camera.label(),
                  m_Ring, recorder.most_waiting, SizeText(recorder.most_waiting * PoolBytes(camera)),
                  Utf8Text(recorder.files.file.generic_u8string()));
        } else {
            Print("{}: recording into '{}'{}; {} are free\n", camera.label(),
                  Utf8Text(runs.back().Status().file.generic_u8string()),
                  need.frames > 0.0 ? ", up to " + SizeText(need.bytes) : "", SizeText(m_Room));
        }
        FlushOutput();
    }

    void Record(std::list<RecordRun>& runs) {
        if (m_Ring > 0.0) zel::platform::InstallRequestHandler([] { ++s_Requests; });
        if (m_Event >= 0) {
            for (RecordRun& run : runs) {
                run.Camera().on_event([this, &run](const zel::CameraEvent& event) {
                    if (event.kind == zel::CameraEvent::Kind::camera && event.code == m_Event) run.Keep("event");
                });
            }
        }
        // Opened and set up, they start at once, each on its thread.
        for (RecordRun& run : runs) run.Start();
        {
            Progress progress("recording", !m_Json);
            while (std::any_of(runs.begin(), runs.end(), [](const RecordRun& run) { return !run.Ended(); })) {
                LookForRequests(runs);
                if (!m_Begun && *m_Starting == 0) m_Begun = Clock::now();
                if (m_Seconds > 0.0 && Passed() >= m_Seconds) EndAll(runs, "seconds");
                TellLoss(runs, progress, false);
                ShowProgress(runs, progress);
            }
            TellLoss(runs, progress, true);
        }
        for (RecordRun& run : runs) run.Wait();
        for (RecordRun& run : runs) run.Camera().on_event(nullptr);
    }

    // Also what the loop's time goes by: what the user asks for within it counts once.
    void LookForRequests(std::list<RecordRun>& runs) {
        auto end = Clock::now() + (m_Begun ? kLook : kLook / 20);
        if (m_Seconds > 0.0 && m_Begun) {
            end = std::min(
                end, *m_Begun + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(m_Seconds)));
        }
        bool typed = false;
        while (Clock::now() < end) {
            if (m_Ring <= 0.0 || !m_Typing) {
                std::this_thread::sleep_until(end);
                break;
            }
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
            const auto input = zel::platform::WaitForLine(static_cast<unsigned>(std::max(left.count(), kNoTime)));
            m_Typing = input != zel::platform::Typed::kEnded;
            typed = typed || input == zel::platform::Typed::kLine;
        }
        const bool signalled = s_Requests.exchange(0) > 0;
        if (!typed && !signalled) return;
        for (RecordRun& run : runs) run.Keep(typed ? "key" : "signal");
    }

    static void EndAll(std::list<RecordRun>& runs, const char* reason) {
        for (RecordRun& run : runs) run.End(reason);
    }

    double Passed() const { return m_Begun ? std::chrono::duration<double>(Clock::now() - *m_Begun).count() : 0.0; }

    void TellLoss(std::list<RecordRun>& runs, Progress& progress, bool now) {
        if (!now && Clock::now() < m_NextLine) return;
        for (RecordRun& run : runs) {
            const std::string loss = run.NewLoss();
            if (loss.empty()) continue;
            m_NextLine = Clock::now() + kBetweenLines;
            progress.Wipe();
            std::fprintf(stderr, "zelcam: %s\n", loss.c_str());
        }
    }

    void ShowProgress(const std::list<RecordRun>& runs, Progress& progress) const {
        RecordingStatus sum;
        for (const RecordRun& run : runs) {
            const RecordingStatus status = run.Status();
            sum.taken += status.taken;
            sum.bytes += status.bytes;
            sum.waiting += status.waiting;
        }
        const double passed = Passed();
        if (m_Ring > 0.0) {
            return progress.Show(
                0, 0, fmt::format("{} in memory, {} on disk", Counted(sum.waiting, "frame"), SizeText(sum.bytes)));
        }
        std::string text = fmt::format("{}, {}", Counted(sum.taken, "frame"), SizeText(sum.bytes));
        const std::uint64_t frames = m_Frames * runs.size();
        if (m_Frames > 0 && sum.taken > 0) {
            const auto left = static_cast<double>(frames - std::min(frames, sum.taken));
            text += ", " + DurationText(left * passed / static_cast<double>(sum.taken)) + " left";
        } else if (m_Seconds > 0.0) {
            text += ", " + DurationText(std::max(m_Seconds - passed, 0.0)) + " left";
        }
        const std::uint64_t room = m_Room - std::min(m_Room, sum.bytes);
        const double rate = passed > 0.5 ? static_cast<double>(sum.bytes) / passed : m_Need.bytes_per_second;
        text += "; room for " + (rate > 0.0 ? DurationText(static_cast<double>(room) / rate) : SizeText(room));
        if (m_Frames > 0) return progress.Show(sum.taken, frames, text);
        constexpr double kSteps = 1000.0;
        if (m_Seconds > 0.0)
            text = BarText(static_cast<std::uint64_t>(passed / m_Seconds * kSteps), 1000, 20) + " " + text;
        progress.Show(0, 0, text);
    }

    void Report(const std::list<RecordRun>& runs, Json& result) const {
        if (m_Json) result["cameras"] = Json::array();
        for (const RecordRun& run : runs) {
            if (m_Json) {
                result["cameras"].push_back(run.ToJson());
            } else {
                WriteOutput(run.Text());
            }
        }
        FlushOutput();
    }

    void RefuseLoss(const std::list<RecordRun>& runs) const {
        std::uint64_t lost = 0;
        for (const RecordRun& run : runs) lost += run.Lost();
        if (m_AllowLoss || lost == 0) return;
        throw Failure(
            Counted(lost, "frame") + " went missing between those recorded", "",
            "use a faster disk, more --buffers, a longer --exposure or --every, or accept it with --allow-loss",
            kFramesLost);
    }

    std::string m_File;
    std::filesystem::path m_Path;
    std::uint64_t m_Frames = 0;
    double m_Seconds = 0.0;
    std::string m_Size;
    std::string m_Split;
    unsigned m_Every = 1;
    std::string m_Compress = "none";
    double m_PixelUm = 0.0;
    std::string m_Trigger = "free";
    int m_IntervalMs = 0;
    double m_Ring = 0.0;
    int m_Event = -1;
    bool m_Force = false;
    bool m_AllowLoss = false;
    AcquisitionSettings m_Settings;

    Amount m_End;
    DiskNeed m_Need;
    std::uint64_t m_Room = 0;  // on the disk, before space was reserved
    std::shared_ptr<std::atomic<int>> m_Starting;
    std::optional<Clock::time_point> m_Begun;  // when all cameras ran
    Clock::time_point m_NextLine{};
    bool m_Typing = true;
};

}  // namespace

std::unique_ptr<Command> MakeRecordCommand() { return std::make_unique<RecordCommand>(); }

}  // namespace zelcam
