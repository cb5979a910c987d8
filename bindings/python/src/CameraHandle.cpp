#include "bindings/python/src/CameraHandle.h"

#include <set>
#include <utility>
#include <vector>

#include "bindings/python/src/Errors.h"
#include "bindings/python/src/Interpreter.h"

namespace zel::python {

namespace {

// Never destroyed: handles may go at the end of the program.
struct Handles {
    std::mutex mutex;
    std::set<std::weak_ptr<CameraHandle>, std::owner_less<>> all;
};

Handles& handles() {
    static Handles* const instance = new Handles;
    return *instance;
}

}  // namespace

std::shared_ptr<CameraHandle> CameraHandle::make(Camera camera) {
    std::shared_ptr<CameraHandle> handle(new CameraHandle(std::move(camera)));
    Handles& open = handles();
    const std::lock_guard lock(open.mutex);
    std::erase_if(open.all, [](const auto& entry) { return entry.expired(); });
    open.all.insert(handle);
    return handle;
}

// Wherever the camera is let go of, its handlers may be waiting for the interpreter's lock.
CameraHandle::CameraHandle(Camera camera)
    : m_Camera(new Camera(std::move(camera)), [](Camera* last) { surely_unlocked([last] { delete last; }); }),
      m_Info(m_Camera->info()) {}

CameraHandle::~CameraHandle() {
    // On purpose: in a forked process the camera is left where it is. Its threads did not come along, and closing it
    // would wait for them.
    if (is_forked()) new CameraPointer(std::move(m_Camera));
}

CameraPointer CameraHandle::camera() const {
    require_sdk();
    {
        const std::lock_guard lock(m_Mutex);
        if (m_Camera) return m_Camera;
    }
    raise("Closed", label() + " is closed", "", "open it again");
}

bool CameraHandle::closed() const {
    const std::lock_guard lock(m_Mutex);
    return !m_Camera;
}

void CameraHandle::close() noexcept {
    if (is_forked()) return;
    CameraPointer camera;
    {
        const std::lock_guard lock(m_Mutex);
        camera.swap(m_Camera);
    }
    if (!camera) return;
    camera->on_frame(nullptr);
    camera->on_event(nullptr);
    camera->interrupt();
    camera->stop();
}

void CameraHandle::close_all() noexcept {
    std::vector<std::shared_ptr<CameraHandle>> open;
    {
        Handles& known = handles();
        const std::lock_guard lock(known.mutex);
        for (const auto& entry : known.all) {
            if (auto handle = entry.lock()) open.push_back(std::move(handle));
        }
    }
    for (const auto& handle : open) handle->close();
}

FrameResult CameraHandle::wait(const CameraPointer& camera, std::chrono::milliseconds timeout, Order order,
                               const std::function<bool()>& cancelled) {
    FrameResult result = camera->wait_frame(timeout, order, cancelled);
    if (result) count(*result);
    return result;
}

void CameraHandle::begin_count() {
    const std::lock_guard lock(m_Mutex);
    m_Counter = {};
}

void CameraHandle::count(const Frame& frame) {
    const std::lock_guard lock(m_Mutex);
    m_Counter.frame(frame.number(), frame.native()->arrival_time_ms);
}

Drops CameraHandle::drops(const Camera& camera) const {
    const std::uint64_t link = camera.link_drops();
    const std::lock_guard lock(m_Mutex);
    FrameCounter counter = m_Counter;
    counter.set_skipped(camera.skipped());
    return counter.count(link);
}

}  // namespace zel::python
