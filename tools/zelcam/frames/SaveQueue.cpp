#include "tools/zelcam/frames/SaveQueue.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "tools/zelcam/frames/PictureSaver.h"
#include "tools/zelcam/text/Interrupt.h"

namespace zelcam {

using zel::platform::Mutex;
using zel::platform::ScopedLock;

namespace {

// How long the user's wish to end may go unnoticed.
constexpr std::chrono::milliseconds kInterruptCheck{50};

// One core is left to the frames that come in.
std::size_t CoresToSpare() { return std::max(std::thread::hardware_concurrency(), 2u) - 1; }

}  // namespace

SaveQueue::SaveQueue(PictureSaver& saver, std::size_t most_frames, std::function<void()> on_failure)
    : m_Saver(saver),
      m_MostFrames(std::max<std::size_t>(most_frames, 1)),
      m_OnFailure(std::move(on_failure)),
      m_MostCompressing(CoresToSpare()),
      m_Slots(m_MostCompressing) {}

SaveQueue::~SaveQueue() {
    std::vector<std::thread> workers;
    {
        const ScopedLock lock(m_Mutex);
        m_Closed = true;
        LetWaitingGo();
        workers.swap(m_Workers);
        m_Added.notify_all();
    }
    for (std::thread& worker : workers) worker.join();
}

bool SaveQueue::WaitForRoom() {
    ScopedLock lock(m_Mutex);
    while (!Ending()) {
        if (m_OnLoan < m_MostFrames) return true;
        m_Settled.wait_until(lock, std::chrono::steady_clock::now() + kInterruptCheck);
    }
    return false;
}

void SaveQueue::Add(zel::Frame frame, OnSaved on_saved) {
    const ScopedLock lock(m_Mutex);
    m_Items.push_back({m_Count, std::move(frame), std::move(on_saved)});
    ++m_Count;
    ++m_Waiting;
    ++m_OnLoan;
    // One more than may compress at a time: the others compress while it writes.
    if (m_Waiting > m_Idle && m_Workers.size() <= m_MostCompressing) StartWorker();
    m_Added.notify_one();
}

void SaveQueue::StartWorker() {
    try {
        m_Workers.emplace_back([this] { Work(); });
        ++m_Idle;
    } catch (const std::exception&) {
        if (!m_Workers.empty()) return;  // those that run do its work
        LetWaitingGo();
        throw;
    }
}

void SaveQueue::Finish() {
    ScopedLock lock(m_Mutex);
    while (true) {
        if (Ending()) LetWaitingGo();
        if (m_Items.empty()) break;
        m_Settled.wait_until(lock, std::chrono::steady_clock::now() + kInterruptCheck);
    }
    if (m_Failure) std::rethrow_exception(m_Failure);
}

void SaveQueue::Work() {
    PictureEncoder encoder(m_Saver, &m_Slots);
    std::filesystem::path stem;
    while (Item* const item = NextItem(stem)) {
        Save(*item, stem, encoder);
        Report();
        const ScopedLock lock(m_Mutex);
        ++m_Idle;
    }
}

SaveQueue::Item* SaveQueue::NextItem(std::filesystem::path& stem) {
    const ScopedLock turn(m_Turn);
    while (Item* const item = WaitForItem()) {
        try {
            stem = m_Saver.ClaimStem();
            return item;
        } catch (...) {
            Settle(*item, std::current_exception());
        }
        Report();
        const ScopedLock lock(m_Mutex);
        ++m_Idle;
    }
    return nullptr;
}

SaveQueue::Item* SaveQueue::WaitForItem() {
    ScopedLock lock(m_Mutex);
    while (true) {
        if (Ending()) LetWaitingGo();
        if (m_Waiting > 0) break;
        if (m_Closed) return nullptr;
        m_Added.wait(lock);
    }
    Item* const item = &m_Items[m_Items.size() - m_Waiting];
    --m_Waiting;
    --m_Idle;
    return item;
}

void SaveQueue::Save(Item& item, const std::filesystem::path& stem, PictureEncoder& encoder) {
    std::exception_ptr failure;
    try {
        item.description = m_Saver.Save(stem, *item.frame.native(), encoder);
    } catch (...) {
        failure = std::current_exception();
    }
    Settle(item, failure);
}

void SaveQueue::Settle(Item& item, const std::exception_ptr& failure) {
    if (failure) Fail(item.number, failure);
    item.frame.reset();  // whoever waits for room finds the buffer free
    const ScopedLock lock(m_Mutex);
    item.settled = true;
    --m_OnLoan;
    m_Settled.notify_all();
}

void SaveQueue::Report() {
    const ScopedLock reporting(m_Reporting);
    while (true) {
        Item* first = nullptr;
        {
            const ScopedLock lock(m_Mutex);
            if (m_Items.empty() || !m_Items.front().settled) return;
            first = &m_Items.front();
        }
        try {
            if (!first->description.is_null()) first->on_saved(std::move(first->description));
        } catch (...) {
            Fail(first->number, std::current_exception());
        }
        const ScopedLock lock(m_Mutex);
        m_Items.pop_front();
        m_Settled.notify_all();
    }
}

void SaveQueue::Fail(std::size_t number, const std::exception_ptr& failure) {
    {
        const ScopedLock lock(m_Mutex);
        const bool first = !m_Failure;
        if (first || number < m_FailedNumber) {
            m_Failure = failure;
            m_FailedNumber = number;
        }
        if (!first) return;
    }
    m_OnFailure();
}

bool SaveQueue::Ending() const { return m_Failure || Interrupted(); }

void SaveQueue::LetWaitingGo() {
    for (; m_Waiting > 0; --m_Waiting) {
        m_Items.pop_back();
        --m_OnLoan;
    }
    m_Settled.notify_all();
}

}  // namespace zelcam
