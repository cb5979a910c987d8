#include "record/camera/CameraRecorder.h"

#include <algorithm>
#include <deque>
#include <random>
#include <thread>
#include <utility>

#include "platform/Mutex.h"
#include "platform/UtcTime.h"
#include "zel/FrameCounter.h"
#include "zel/detail/Texts.h"

namespace zel::record {

using platform::Condition;
using platform::Mutex;
using platform::ScopedLock;

namespace {

// One core is left to the frames that come in. Without compression one thread is as fast as the disk.
std::size_t Workers(Compression compression) {
    return compression == Compression::kNone ? 1 : std::max(std::thread::hardware_concurrency(), 2u) - 1;
}

// The phase of a region's top-left sample, of a sensor with this one.
int ShiftedPhase(int phase, unsigned x, unsigned y) {
    // What stands where in two columns and two rows, from a red top-left on: 1 3 / 4 2.
    constexpr int kTile[2][2] = {{1, 3}, {4, 2}};
    for (unsigned row = 0; row < 2; ++row) {
        for (unsigned column = 0; column < 2; ++column) {
            if (kTile[row][column] == phase) return kTile[(row + y) % 2][(column + x) % 2];
        }
    }
    return 0;
}

}  // namespace

RecordingSession RecordingSession::Begin() {
    RecordingSession session;
    session.start = std::chrono::steady_clock::now();
    session.started = platform::UtcText(std::chrono::system_clock::now());
    session.id = session.started + "-" + std::to_string(std::random_device{}());
    return session;
}

RecordingFacts FactsOf(const zel::Camera& camera, const RecordingSession& session, const std::string& software) {
    constexpr double kMilli = 1000.0;
    const auto number = [&](unsigned id) { return static_cast<unsigned>(std::max(camera.number(id), 0LL)); };
    const auto text = [&](unsigned id) {
        const auto value = camera.parameter(id).try_value();
        return value ? detail::trimmed(value->text()) : std::string();
    };
    RecordingFacts facts;
    const ZelRoiBin region = camera.get(zel::settings::region_and_binning);
    facts.x_origin = region.XOrigin;
    facts.y_origin = region.YOrigin;
    facts.x_bin = std::max(region.XBin, 1u);
    facts.y_bin = std::max(region.YBin, 1u);
    facts.width = region.XPixels / facts.x_bin;
    facts.height = region.YPixels / facts.y_bin;
    facts.bits = number(ZEL_PARAM_BITS_PER_PIXEL);
    if (!camera.is_monochrome()) facts.cfa_phase = static_cast<int>(number(ZEL_PARAM_COLOR_FILTER_PHASE));
    facts.corrected = number(ZEL_PARAM_TAP_BALANCE_ENABLE) != 0;
    facts.frames_per_second = number(ZEL_PARAM_FRAME_RATE) / kMilli;
    facts.camera = camera.info().name;
    facts.serial = camera.info().serial;
    facts.model = text(ZEL_PARAM_HW_MODEL);
    facts.firmware = text(ZEL_PARAM_FW_VER);
    facts.link = camera.info().interface_type;
    facts.software = software;
    facts.started = session.started;
    facts.session = session.id;
    return facts;
}

struct CameraRecorder::State {
    struct Item {
        std::shared_ptr<const zel::Frame> frame;
        FrameFacts facts;
        LossTally before;         // when it was offered
        std::string ends_file{};  // of the ring: why
        std::uint64_t place = 0;  // in the order of writing
    };

    State(const RecordingFacts& facts, RecorderOptions wanted, const RecordingSession& begun)
        : options(std::move(wanted)), session(begun), files(facts, options.files), sensor_phase(facts.cfa_phase) {}

    bool Ring() const { return options.ring_seconds > 0.0; }
    bool Wanted(const Item& item) ZEL_REQUIRES(mutex);
    bool MakeRoom(const Item& item) ZEL_REQUIRES(mutex);
    void Queue(Item item) ZEL_REQUIRES(mutex);
    void Work();
    bool Next(Item& item);
    void Settle(Item& item, const RecordError* failure);
    void Write(std::span<const std::byte> strip, const Item& item);
    void Fail(const RecordError& error) ZEL_REQUIRES(mutex);
    std::uint64_t LinkDrops() const { return options.link_drops ? options.link_drops() : 0; }
    void Describe(const zel::FrameInfo& info);

    const RecorderOptions options;
    const RecordingSession session;

    mutable Mutex mutex;
    Condition changed;
    std::deque<Item> waiting ZEL_GUARDED_BY(mutex);  // to be written
    std::deque<Item> ring ZEL_GUARDED_BY(mutex);
    std::size_t on_loan ZEL_GUARDED_BY(mutex) = 0;  // frames: waiting, in the ring, being written
    std::uint64_t queued ZEL_GUARDED_BY(mutex) = 0;
    std::uint64_t settled ZEL_GUARDED_BY(mutex) = 0;
    bool closed ZEL_GUARDED_BY(mutex) = false;
    bool finished ZEL_GUARDED_BY(mutex) = false;
    std::int32_t gain ZEL_GUARDED_BY(mutex) = 0;
    zel::FrameCounter counter ZEL_GUARDED_BY(mutex);
    LossTally tally ZEL_GUARDED_BY(mutex);
    std::uint64_t drops_before = 0;  // of the link, when this began
    bool any ZEL_GUARDED_BY(mutex) = false;
    std::uint32_t last_wanted ZEL_GUARDED_BY(mutex) = 0;
    std::int64_t first_ns ZEL_GUARDED_BY(mutex) = 0;
    RecordingStatus status ZEL_GUARDED_BY(mutex);

    // Of the worker whose turn it is, which is the one with place `settled`; after the workers, of Finish().
    RecordingFiles files;
    const int sensor_phase;
    bool described = false;  // by the first frame of the file

    Mutex finishing;
    std::vector<std::thread> workers;
};

CameraRecorder::CameraRecorder(RecordingFacts facts, RecorderOptions options, const RecordingSession& session) {
    options.files.numbered = options.files.numbered || options.ring_seconds > 0.0;
    options.every = std::max(options.every, 1u);
    options.most_waiting = std::max<std::size_t>(options.most_waiting, 1);
    m_State = std::make_unique<State>(facts, std::move(options), session);
    State& state = *m_State;
    state.drops_before = state.LinkDrops();
    if (!state.Ring()) state.files.Begin({});
    const ScopedLock lock(state.mutex);
    state.gain = state.options.gain;
    state.status.file = state.files.Path();
    const std::size_t count = Workers(state.options.files.compression);
    for (std::size_t i = 0; i < count; ++i) state.workers.emplace_back([&state] { state.Work(); });
}

CameraRecorder::~CameraRecorder() { Finish("ended"); }

void CameraRecorder::SetGain(std::int32_t gain) {
    const ScopedLock lock(m_State->mutex);
    m_State->gain = gain;
}

bool CameraRecorder::State::Wanted(const Item& item) {
    if (any && item.facts.number - last_wanted < options.every) {
        status.passed_over = ++tally.passed_over;
        return false;
    }
    last_wanted = item.facts.number;
    if (!any) first_ns = item.facts.host_ns;
    any = true;
    return true;
}

// In a ring the oldest frames go first.
bool CameraRecorder::State::MakeRoom(const Item& item) {
    const auto outlived = [&](const Item& old) {
        return SecondsOf(item.facts.host_ns - old.facts.host_ns) > options.ring_seconds;
    };
    while (!ring.empty() && (on_loan >= options.most_waiting || outlived(ring.front()))) {
        ring.pop_front();
        --on_loan;
    }
    return on_loan < options.most_waiting;
}

void CameraRecorder::State::Queue(Item item) {
    item.place = queued++;
    waiting.push_back(std::move(item));
    changed.notify_all();
}

Offered CameraRecorder::Offer(std::shared_ptr<const zel::Frame> frame) {
    State& state = *m_State;
    if (!frame || !*frame) return Offered::kEnded;
    const auto arrival = std::chrono::steady_clock::now() - frame->hand_over() - state.session.start;
    const zel::FrameInfo info = frame->info();
    State::Item item{std::move(frame), {}, {}};
    item.facts.number = info.number;
    item.facts.exposure_us = static_cast<std::uint32_t>(info.exposure.count());
    item.facts.arrival_ms = info.arrival_ms;
    item.facts.host_ns = std::chrono::duration_cast<std::chrono::nanoseconds>(arrival).count();
    ScopedLock lock(state.mutex);
    if (state.closed || !state.status.failure.empty()) return Offered::kEnded;
    item.facts.gain = state.gain;
    state.counter.frame(item.facts.number, item.facts.arrival_ms);
    if (state.counter.missing() > state.tally.missing) {
        state.tally.missing = state.status.missing = state.counter.missing();
        lock.unlock();  // this may ask the camera
        const std::uint64_t drops = state.LinkDrops();
        lock.lock();
        state.tally.link_drops = drops - (drops < state.drops_before ? 0 : state.drops_before);
    }
    item.before = state.tally;
    if (!state.Wanted(item)) return Offered::kPassedOver;
    if (!state.MakeRoom(item)) {
        state.status.lost_disk = ++state.tally.lost_disk;
        return Offered::kLost;
    }
    ++state.on_loan;
    ++state.status.taken;
    state.status.seconds = SecondsOf(item.facts.host_ns - state.first_ns);
    if (state.Ring()) {
        state.ring.push_back(std::move(item));
    } else {
        state.Queue(std::move(item));
    }
    return Offered::kTaken;
}

bool CameraRecorder::Keep(const std::string& reason) {
    State& state = *m_State;
    const ScopedLock lock(state.mutex);
    if (state.ring.empty() || state.closed || !state.status.failure.empty()) return false;
    state.ring.back().ends_file = reason;
    for (State::Item& item : state.ring) state.Queue(std::move(item));
    state.ring.clear();
    return true;
}

RecordingStatus CameraRecorder::Status() const {
    const ScopedLock lock(m_State->mutex);
    RecordingStatus status = m_State->status;
    status.waiting = m_State->on_loan;
    return status;
}

void CameraRecorder::State::Work() {
    Item item;
    while (Next(item)) {
        try {
            RecordingFacts shape;
            shape.width = item.frame->width();
            shape.height = item.frame->height();
            StripEncoder encoder(shape, options.files.compression);
            if (options.before_writing) options.before_writing();
            const std::span<const std::byte> strip = encoder.Encode(item.frame->pixels());
            {
                ScopedLock lock(mutex);
                changed.wait(lock, [&]() ZEL_REQUIRES(mutex) { return settled == item.place; });
                if (!status.failure.empty()) throw RecordError(status.failure);
            }
            Write(strip, item);
            Settle(item, nullptr);
        } catch (const RecordError& error) {
            Settle(item, &error);
        } catch (const std::exception& error) {
            const RecordError failure(error.what());
            Settle(item, &failure);
        }
    }
}

bool CameraRecorder::State::Next(Item& item) {
    ScopedLock lock(mutex);
    changed.wait(lock, [this]() ZEL_REQUIRES(mutex) { return closed || !waiting.empty(); });
    if (waiting.empty()) return false;
    item = std::move(waiting.front());
    waiting.pop_front();
    return true;
}

void CameraRecorder::State::Write(std::span<const std::byte> strip, const Item& item) {
    if (!files.Open()) files.Begin(item.before);
    if (files.SplitBefore(item.facts.host_ns)) {
        files.End("split", item.before);
        files.Begin(item.before);
        described = false;
    }
    const zel::FrameInfo info = item.frame->info();
    if (!std::exchange(described, true)) Describe(info);
    if (info.width != files.Facts().width || info.height != files.Facts().height) {
        throw RecordError("the frames have another size now");
    }
    files.Write(strip, item.facts);
    if (item.ends_file.empty()) return;
    files.End(item.ends_file, item.before);
    described = false;
}

void CameraRecorder::State::Describe(const zel::FrameInfo& info) {
    RecordingFacts facts = files.Facts();
    facts.width = info.width;
    facts.height = info.height;
    facts.bits = info.bits;
    facts.x_origin = info.region.x;
    facts.y_origin = info.region.y;
    facts.x_bin = std::max(info.binning.x, 1u);
    facts.y_bin = std::max(info.binning.y, 1u);
    const bool binned = facts.x_bin * facts.y_bin > 1;
    facts.cfa_phase = binned ? 0 : ShiftedPhase(sensor_phase, facts.x_origin, facts.y_origin);
    files.Describe(facts);
}

// The frame goes back before the next one has its turn, so that whoever waits for it to be written finds it free.
void CameraRecorder::State::Settle(Item& item, const RecordError* failure) {
    item.frame.reset();
    ScopedLock lock(mutex);
    // A frame that failed before its turn waits for it, too.
    changed.wait(lock, [&]() ZEL_REQUIRES(mutex) { return settled == item.place; });
    ++settled;
    --on_loan;
    status.bytes = files.Bytes();
    status.file = files.Path();
    if (failure) {
        Fail(*failure);
    } else {
        ++status.written;
    }
    changed.notify_all();
}

void CameraRecorder::State::Fail(const RecordError& error) {
    if (!status.failure.empty()) return;
    status.failure = error.what();
    status.disk_full = dynamic_cast<const DiskFullError*>(&error) != nullptr;
}

std::vector<RecordedFile> CameraRecorder::Finish(const std::string& reason) {
    State& state = *m_State;
    const ScopedLock finishing(state.finishing);
    {
        const ScopedLock lock(state.mutex);
        if (state.finished) return state.files.Ended();
        state.closed = state.finished = true;
        state.on_loan -= state.ring.size();
        state.ring.clear();
        state.changed.notify_all();
    }
    for (std::thread& worker : state.workers) worker.join();
    const RecordingStatus status = Status();
    std::string told = reason;
    if (!status.failure.empty()) told = status.disk_full ? "disk full" : status.failure;
    LossTally tally;
    {
        const ScopedLock lock(state.mutex);
        tally = state.tally;
    }
    try {
        // In a ring, files end with their last frame.
        if (state.files.Open()) state.files.End(told, tally);
    } catch (const RecordError& error) {
        const ScopedLock lock(state.mutex);
        state.Fail(error);
    }
    const ScopedLock lock(state.mutex);
    state.status.bytes = state.files.Bytes();
    return state.files.Ended();
}

}  // namespace zel::record
