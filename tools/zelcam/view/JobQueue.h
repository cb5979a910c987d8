// Work for one thread, in the order in which it comes.
#ifndef ZELCAM_JOBQUEUE_H
#define ZELCAM_JOBQUEUE_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <utility>

namespace zelcam {

class JobQueue {
  public:
    using Job = std::function<void()>;

    void Post(Job job) {
        const std::lock_guard lock(m_Mutex);
        m_Jobs.push_back(std::move(job));
        m_Changed.notify_all();
    }
    // The oldest one; an empty one when none came in time.
    Job Next(std::chrono::milliseconds timeout) {
        std::unique_lock lock(m_Mutex);
        if (!m_Changed.wait_for(lock, timeout, [this] { return !m_Jobs.empty(); })) return {};
        Job job = std::move(m_Jobs.front());
        m_Jobs.pop_front();
        return job;
    }
    std::size_t Waiting() const {
        const std::lock_guard lock(m_Mutex);
        return m_Jobs.size();
    }

  private:
    mutable std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::deque<Job> m_Jobs;
};

}  // namespace zelcam

#endif
