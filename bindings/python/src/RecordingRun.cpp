#include "bindings/python/src/RecordingRun.h"

#include <algorithm>
#include <set>
#include <system_error>
#include <utility>

#include "bindings/python/src/Errors.h"
#include "bindings/python/src/Interpreter.h"
#include "platform/UserTexts.h"

namespace zel::python {

namespace fs = std::filesystem;
using record::Compression;
using record::Offered;
using record::RecordError;

namespace {

// Of the pool's buffers, so many stay the camera's.
constexpr std::size_t kCamerasOwn = 4;

// Never destroyed: runs may go at the end of the program.
struct Runs {
    std::mutex mutex;
    std::set<RecordingRun*> all;
};

Runs& runs() {
    static Runs* const instance = new Runs;
    return *instance;
}

Compression compression_of(const std::string& name) {
    return name == "zstd" ? Compression::kZstd : name == "deflate" ? Compression::kDeflate : Compression::kNone;
}

std::string megabytes(std::uint64_t bytes) { return std::to_string(bytes / 1000000) + " MB"; }

}  // namespace

RecordingRun::RecordingRun(std::shared_ptr<CameraHandle> handle, RecordingOptions options)
    : m_Handle(std::move(handle)), m_Camera(m_Handle->camera()), m_Options(std::move(options)) {
    const Unlocked section;
    // So that the frame rate is the one of the settings as they are.
    if (!m_Camera->running()) m_Camera->parameter(ZEL_PARAM_UPDATE_PARAMETERS).try_set(1LL);
    m_Session = record::RecordingSession::Begin();
    m_Facts = record::FactsOf(*m_Camera, m_Session, "zel " ZEL_VERSION " for Python");
    m_Facts.averaged = m_Options.averaged;
    m_Facts.pixel_um = m_Options.pixel_um;
    m_File = record::FileOfCamera(fs::path(m_Options.path), m_Facts.serial, false);
    const std::string name = platform::Utf8Text(m_File);
    std::error_code error;
    if (m_File.has_parent_path()) fs::create_directories(m_File.parent_path(), error);
    if (error) throw Error(ErrorKind::output, "the folder of '" + name + "' can't be made", error.message());
    std::uint64_t room = record::FreeSpace(m_File);
    if (m_Options.split_frames == 0 && fs::exists(fs::symlink_status(m_File, error))) {
        if (!m_Options.overwrite || !fs::is_regular_file(m_File, error)) {
            throw Error(ErrorKind::output, "nothing was recorded", "there is a file '" + name + "' already",
                        "choose another name, or use overwrite=True");
        }
        room += std::min(fs::file_size(m_File, error), UINT64_MAX - room);
    }
    const record::DiskNeed need = record::NeedOf(m_Facts, m_Options.ends, m_Options.every);
    // What compression makes of it is not known before.
    if (m_Options.compression != "none") return;
    if (!m_Options.force && need.bytes > room) {
        throw Error(ErrorKind::output, "the disk can't hold the recording",
                    "it takes " + megabytes(need.bytes) + ", and " + megabytes(room) + " are free",
                    "make room, record less, or use force=True");
    }
    if (need.frames > 0.0) m_Reserve = need.bytes;
}

RecordingRun::~RecordingRun() {
    // On purpose: in a forked process all of it is left where it is, since its threads did not come along.
    if (is_forked()) {
        m_Thread.detach();
        (void)m_Recorder.release();
        new CameraPointer(m_Camera);
        return;
    }
    end("ended");
    surely_unlocked([this] {
        finish();
        const std::lock_guard lock(runs().mutex);
        runs().all.erase(this);
    });
}

void RecordingRun::begin() {
    const Unlocked section;
    record::RecorderOptions options;
    options.files.file = m_File;
    options.files.compression = compression_of(m_Options.compression);
    options.files.reserve = m_Reserve;
    options.files.split_frames = m_Options.split_frames;
    options.every = m_Options.every;
    const auto buffers = static_cast<std::size_t>(std::max(m_Camera->number(ZEL_PARAM_NUM_IMAGE_BUFFERS), 1LL));
    options.most_waiting = buffers - std::min(kCamerasOwn, buffers / 2);
    options.gain = static_cast<std::int32_t>(m_Camera->number(ZEL_PARAM_GAIN));
    options.link_drops = [camera = m_Camera] { return camera->link_lost() ? 0 : camera->link_drops(); };
    try {
        std::error_code error;
        if (m_Options.overwrite) fs::remove(m_File, error);
        m_Recorder = std::make_unique<record::CameraRecorder>(m_Facts, std::move(options), m_Session);
    } catch (const RecordError& error) {
        throw Error(ErrorKind::output, "nothing was recorded", error.what(), "choose another name or folder");
    }
    if (m_Options.ends.seconds > 0.0) {
        m_Deadline = Clock::now() +
                     std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(m_Options.ends.seconds));
    }
    m_Thread = std::thread([this] { run(); });
    const std::lock_guard lock(runs().mutex);
    runs().all.insert(this);
}

bool RecordingRun::wait(std::chrono::milliseconds most) {
    const Unlocked section;
    const Clock::time_point until = std::min(Clock::now() + most, m_Deadline);
    {
        std::unique_lock lock(m_Mutex);
        if (m_Changed.wait_until(lock, until, [this] { return m_Over; })) return true;
    }
    if (Clock::now() >= m_Deadline) end("seconds");
    return false;
}

void RecordingRun::end(const std::string& reason) {
    const std::lock_guard lock(m_Mutex);
    if (m_Reason.empty()) m_Reason = reason;
    m_Ending = true;
}

void RecordingRun::finish() {
    if (m_Thread.joinable()) m_Thread.join();
}

void RecordingRun::finish_all() {
    Runs& known = runs();
    const std::lock_guard lock(known.mutex);
    for (RecordingRun* const run : known.all) {
        run->end("ended");
        std::unique_lock over(run->m_Mutex);
        run->m_Changed.wait(over, [run] { return run->m_Over; });
    }
}

record::RecordingStatus RecordingRun::status() const {
    return m_Recorder ? m_Recorder->Status() : record::RecordingStatus{};
}

void RecordingRun::run() {
    try {
        take_frames();
    } catch (...) {
        m_Failure = std::current_exception();
        end("failed");
    }
    std::string reason;
    {
        const std::lock_guard lock(m_Mutex);
        reason = m_Reason.empty() ? "failed" : m_Reason;
    }
    m_Files = m_Recorder->Finish(reason);
    const std::lock_guard lock(m_Mutex);
    m_Over = true;
    m_Changed.notify_all();
}

void RecordingRun::take_frames() {
    const auto timeout = m_Options.timeout_s > 0.0
                             ? std::chrono::milliseconds(static_cast<long long>(m_Options.timeout_s * 1000.0))
                             : m_Camera->frame_timeout();
    // The first frames of an average are of fewer frames than the user asked for.
    int skip = std::max(m_Options.averaged, 1) - 1;
    while (!m_Ending) {
        FrameResult result = m_Camera->wait_frame(timeout, Order::every, [this] { return m_Ending.load(); });
        if (!result) {
            if (!m_Ending && ends_by(result.no_frame())) m_NoFrame = result.no_frame();
            return;
        }
        m_Handle->count(*result);
        if (skip-- > 0) continue;
        if (!wanted(m_Recorder->Offer(std::make_shared<const Frame>(result.take())))) return;
    }
}

bool RecordingRun::ends_by(const NoFrame& why) {
    const Reason reason = why.reason();
    end(reason == Reason::link_lost       ? "link lost"
        : reason == Reason::interrupted   ? "interrupted"
        : reason == Reason::sequence_over ? "sequence over"
        : reason == Reason::not_started   ? "stopped"
                                          : "no frame came");
    if (reason == Reason::interrupted) return m_Handle->closed();
    // Without a number of its own a run ends as it should when the camera does.
    return m_Options.ends.frames > 0 || (reason != Reason::sequence_over && reason != Reason::not_started);
}

bool RecordingRun::wanted(Offered offered) {
    if (offered == Offered::kEnded) return false;
    if (m_Options.ends.frames == 0 || m_Recorder->Status().taken < m_Options.ends.frames) return true;
    end("frames");
    return false;
}

void RecordingRun::check() const {
    const record::RecordingStatus found = status();
    if (!found.failure.empty()) {
        raise("OutputError", "the recording of " + m_Handle->label() + " ended", found.failure,
              found.disk_full ? "make room on the disk or record to another one" : "record to another folder or disk");
    }
    if (m_Failure) std::rethrow_exception(m_Failure);
    if (!m_NoFrame) return;
    if (m_Handle->closed()) (void)m_Handle->camera();  // raises
    raise_no_frame(m_Handle->label(), *m_NoFrame);
}

}  // namespace zel::python
