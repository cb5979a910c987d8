// ***  Runs two cameras at once, a thread each, and pairs their frames by the time at which they arrived.
//
//   two_cameras [--first NUMBER-OR-SERIAL] [--second NUMBER-OR-SERIAL] [--within MILLISECONDS] [--frames PAIRS]
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

#include "Options.h"
#include "zel/Zel.h"

using namespace std::chrono_literals;

namespace {

// By how many milliseconds one frame arrived after another. Both cameras' frames are stamped by the same clock, whose
// 32 bits wrap.
int after(const zel::Frame& later, const zel::Frame& earlier) {
    return static_cast<int>(later.info().arrival_ms - earlier.info().arrival_ms);
}

// Frames of two threads on their way to the one that pairs them.
class Pairs {
  public:
    explicit Pairs(int within_ms) : m_Within(within_ms) {}

    void add(std::size_t camera, zel::Frame frame) {
        // Frames that wait here occupy image buffers, of which a camera has a few: the oldest make room.
        constexpr std::size_t kMostWaiting = 4;
        const std::lock_guard lock(m_Mutex);
        m_Waiting[camera].push_back(std::move(frame));
        if (m_Waiting[camera].size() > kMostWaiting) drop(camera);
        m_Changed.notify_one();
    }
    // Ends the wait for a pair with what a thread failed with; null: without a failure.
    void fail(std::exception_ptr failure) {
        const std::lock_guard lock(m_Mutex);
        if (!m_Failure) m_Failure = failure;
        m_Changed.notify_one();
    }
    // The next pair. Throws what a thread failed with.
    std::array<zel::Frame, 2> next() {
        std::unique_lock lock(m_Mutex);
        while (true) {
            if (m_Failure) std::rethrow_exception(m_Failure);
            if (m_Waiting[0].empty() || m_Waiting[1].empty()) {
                m_Changed.wait(lock);
                continue;
            }
            const std::size_t older = after(m_Waiting[1].front(), m_Waiting[0].front()) >= 0 ? 0 : 1;
            const auto& candidates = m_Waiting[older];
            const auto& others = m_Waiting[1 - older];
            const int apart = after(others.front(), candidates.front());
            const bool one_follows = candidates.size() > 1;
            if (!one_follows && after(others.back(), others.front()) < apart) {
                m_Changed.wait(lock);  // a frame that is on its way may be nearer
                continue;
            }
            if (apart > m_Within || (one_follows && std::abs(after(candidates[1], others.front())) < apart)) {
                drop(older);
                continue;
            }
            std::array<zel::Frame, 2> pair{std::move(m_Waiting[0].front()), std::move(m_Waiting[1].front())};
            m_Waiting[0].pop_front();
            m_Waiting[1].pop_front();
            return pair;
        }
    }
    int unpaired(std::size_t camera) {
        const std::lock_guard lock(m_Mutex);
        return m_Unpaired[camera];
    }

  private:
    void drop(std::size_t camera) {
        m_Waiting[camera].pop_front();
        ++m_Unpaired[camera];
    }

    const int m_Within;
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::array<std::deque<zel::Frame>, 2> m_Waiting;
    std::array<int, 2> m_Unpaired{};
    std::exception_ptr m_Failure;
};

// A thread that brings the frames of a running camera to their pairs; ends with its object.
class Bringer {
  public:
    Bringer(zel::Camera& camera, std::size_t which, Pairs& pairs)
        : m_Camera(camera), m_Thread([this, which, &pairs] { run(which, pairs); }) {}
    ~Bringer() {
        m_Ends = true;
        m_Camera.stop();  // which ends the wait for a frame, too
        m_Thread.join();
    }

  private:
    void run(std::size_t which, Pairs& pairs) {
        try {
            while (!m_Ends) {
                zel::FrameResult result = m_Camera.wait_frame(m_Camera.frame_timeout());
                if (result) {
                    pairs.add(which, result.take());
                } else if (!m_Ends) {
                    m_Camera.throw_no_frame(result.no_frame());
                }
            }
        } catch (...) {
            pairs.fail(std::current_exception());
        }
    }

    zel::Camera& m_Camera;
    std::atomic<bool> m_Ends = false;
    std::thread m_Thread;  // last: it uses the others
};

}  // namespace

int main(int argc, char** argv) try {
    const Options options(argc, argv, {{"--first", "0"}, {"--second", "1"}, {"--within", "40"}, {"--frames", "10"}});
    const int wanted = options.number("--frames");

    zel::Sdk sdk;
    zel::Camera first = sdk.open(options.text("--first"));
    zel::Camera second = sdk.open(options.text("--second"));
    for (zel::Camera* camera : {&first, &second}) {
        camera->set(zel::settings::exposure, 20ms);
        camera->start();
    }

    Pairs pairs(options.number("--within"));
    {
        const Bringer from_first(first, 0, pairs);
        const Bringer from_second(second, 1, pairs);
        for (int i = 0; i < wanted; ++i) {
            const auto [a, b] = pairs.next();
            std::printf("frame %u of %s and frame %u of %s: %+d ms\n", a.number(), first.info().serial.c_str(),
                        b.number(), second.info().serial.c_str(), after(b, a));
            std::fflush(stdout);
        }
    }
    std::printf("%d pairs; without a partner: %d and %d\n", wanted, pairs.unpaired(0), pairs.unpaired(1));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "two_cameras: %s\n", error.what());
    return 1;
}
