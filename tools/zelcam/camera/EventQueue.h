// Events on their way from the transports' threads to the main thread.
#ifndef ZELCAM_EVENTQUEUE_H
#define ZELCAM_EVENTQUEUE_H

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>

#include "tools/zelcam/text/Json.h"
#include "zel/HotPlug.h"

namespace zelcam {

class EventQueue {
  public:
    // Takes the oldest event; false when none came within the time-out.
    bool Next(Json& event, std::chrono::milliseconds timeout);

    void Add(const zel::HotPlugEvent& event);
    void Add(int camera, const zel::CameraEvent& event);

  private:
    template <class Describe>
    void Push(Describe describe);

    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::deque<Json> m_Events;
};

}  // namespace zelcam

#endif
