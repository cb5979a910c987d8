// Events on their way from the transports' threads to the main thread.
#ifndef ZELCAM_EVENTQUEUE_H
#define ZELCAM_EVENTQUEUE_H

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>

#include "include/ZelCallbacks.h"
#include "tools/zelcam/text/Json.h"

namespace zelcam {

class EventQueue {
  public:
    // Takes the oldest event; false when none came within the time-out.
    bool Next(Json& event, std::chrono::milliseconds timeout);

    // The SDK's callbacks. context: the queue for hot-plug events, an EventSource for a camera's own.
    static void ZEL_CALL CameraConnected(int event_id, int camera_index, const char* name, const char* serial_number,
                                         const char* interface_type, void* context);
    static void ZEL_CALL CameraEvent(int event_code, void* context);
    static void ZEL_CALL CameraEventEx(int event_code, const ZelCameraControlRecord* record, void* context);

  private:
    void Push(Json event);

    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::deque<Json> m_Events;
};

// Which camera an event comes from.
struct EventSource {
    EventQueue* queue = nullptr;
    int camera = 0;
};

}  // namespace zelcam

#endif
