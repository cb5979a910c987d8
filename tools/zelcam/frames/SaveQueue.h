// Saving beside the thread that takes the frames.
//
//   taking thread --Add--> frames that wait --> workers: number, encode, write --> saved, reported in the order of
//   frames
//
// The frames stay on loan from the camera's pool until they are on the disk, so the pool is what a slow disk fills;
// what it then loses is a hole in the frame numbers.
#ifndef ZELCAM_SAVEQUEUE_H
#define ZELCAM_SAVEQUEUE_H

#include <cstddef>
#include <deque>
#include <exception>
#include <filesystem>
#include <functional>
#include <thread>
#include <vector>

#include "platform/Mutex.h"
#include "tools/zelcam/frames/PictureEncoder.h"
#include "tools/zelcam/text/Json.h"
#include "zel/Frame.h"

namespace zelcam {

class PictureSaver;

class SaveQueue {
  public:
    // Called with the description of a saved frame: on one of the queue's threads, one frame after the other in the
    // order in which they were added. What it throws is a failure like any other.
    using OnSaved = std::function<void(Json description)>;

    // most_frames: how many may be on loan here, which is what the pool has. on_failure: called on one of the queue's
    // threads when a picture can't be saved and no further frame is wanted. Everything must outlive the queue.
    SaveQueue(PictureSaver& saver, std::size_t most_frames, std::function<void()> on_failure);
    // Lets the frames go that nobody has begun with, and waits for the others.
    ~SaveQueue();
    SaveQueue(const SaveQueue&) = delete;
    SaveQueue& operator=(const SaveQueue&) = delete;

    // Waits until the camera has a buffer that is not on loan here: before that, no frame could come. False: no further
    // frame is wanted, since one could not be saved or the user wants to end.
    bool WaitForRoom();
    void Add(zel::Frame frame, OnSaved on_saved);
    // Waits until every frame is saved and reported; those that nobody has begun with are let go when one could not be
    // saved or the user wants to end. Throws what the first frame that was not saved failed with.
    void Finish();

  private:
    struct Item {
        std::size_t number;
        zel::Frame frame;
        OnSaved on_saved;
        bool settled = false;
        Json description{};  // null: it could not be saved
    };

    void StartWorker() ZEL_REQUIRES(m_Mutex);
    void Work();
    // The next frame and its picture's path without extension; null: there will be none.
    Item* NextItem(std::filesystem::path& stem);
    Item* WaitForItem();
    void Save(Item& item, const std::filesystem::path& stem, PictureEncoder& encoder);
    // The item may be gone when this returns.
    void Settle(Item& item, const std::exception_ptr& failure);
    void Report();
    void Fail(std::size_t number, const std::exception_ptr& failure);
    bool Ending() const ZEL_REQUIRES(m_Mutex);
    void LetWaitingGo() ZEL_REQUIRES(m_Mutex);

    PictureSaver& m_Saver;
    const std::size_t m_MostFrames;
    const std::function<void()> m_OnFailure;
    const std::size_t m_MostCompressing;
    CompressionSlots m_Slots;

    // Held by the worker that waits for the next frame and takes its number: numbers are in order, and whoever adds a
    // frame does not wait for the disk.
    zel::platform::Mutex m_Turn;
    // Held while frames are reported. After it comes m_Mutex, as after m_Turn.
    zel::platform::Mutex m_Reporting;
    zel::platform::Mutex m_Mutex;
    zel::platform::Condition m_Added;
    zel::platform::Condition m_Settled;
    // From the first one that is not reported on; references stay good while others come and go.
    std::deque<Item> m_Items ZEL_GUARDED_BY(m_Mutex);
    std::size_t m_Count ZEL_GUARDED_BY(m_Mutex) = 0;    // frames added
    std::size_t m_Waiting ZEL_GUARDED_BY(m_Mutex) = 0;  // frames that nobody has begun with, the last ones of m_Items
    std::size_t m_OnLoan ZEL_GUARDED_BY(m_Mutex) = 0;   // frames
    std::size_t m_Idle ZEL_GUARDED_BY(m_Mutex) = 0;     // workers
    bool m_Closed ZEL_GUARDED_BY(m_Mutex) = false;
    std::exception_ptr m_Failure ZEL_GUARDED_BY(m_Mutex);
    std::size_t m_FailedNumber ZEL_GUARDED_BY(m_Mutex) = 0;
    std::vector<std::thread> m_Workers ZEL_GUARDED_BY(m_Mutex);
};

}  // namespace zelcam

#endif
