// A camera as Python holds it: one that may be closed while other threads use it, and at the end of the interpreter.
#ifndef BINDINGS_PYTHON_CAMERAHANDLE_H
#define BINDINGS_PYTHON_CAMERAHANDLE_H

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "zel/Camera.h"
#include "zel/FrameCounter.h"

namespace zel::python {

using CameraPointer = std::shared_ptr<Camera>;

class CameraHandle {
  public:
    static std::shared_ptr<CameraHandle> make(Camera camera);
    ~CameraHandle();
    CameraHandle(const CameraHandle&) = delete;
    CameraHandle& operator=(const CameraHandle&) = delete;

    // The camera, open until the caller lets go of it. Throws Closed, Forked (with the interpreter's lock).
    CameraPointer camera() const;
    bool closed() const;
    const CameraInfo& info() const { return m_Info; }
    std::string label() const { return "camera " + std::to_string(m_Info.number); }

    // Without the interpreter's lock: stops the camera and ends the waits of other threads. It is closed when they have
    // let go of it, and all frames have gone back.
    void close() noexcept;
    // All that are open.
    static void close_all() noexcept;

    // Waits for a frame, interrupted when this handle is closed or `cancelled` answers true.
    FrameResult wait(const CameraPointer& camera, std::chrono::milliseconds timeout, Order order,
                     const std::function<bool()>& cancelled);
    // A run begins.
    void begin_count();
    // A frame was handed over to a handler.
    void count(const Frame& frame);
    Drops drops(const Camera& camera) const;

  private:
    explicit CameraHandle(Camera camera);

    mutable std::mutex m_Mutex;
    CameraPointer m_Camera;
    CameraInfo m_Info;
    FrameCounter m_Counter;
};

}  // namespace zel::python

#endif
