#include "devices/gige/Discovery.h"

#include <arv.h>

#include <chrono>

namespace zel::gige {

namespace {

constexpr auto kPause = std::chrono::seconds(2);

// The process's: two looks at a time confuse Aravis' list, and a search that ends may be followed by another at once.
platform::Mutex s_DeviceList;

std::vector<FoundCamera> Look() {
    const platform::ScopedLock lock(s_DeviceList);
    // The network alone; Aravis also offers a camera that is none, and USB.
    arv_disable_interface("Fake");
    arv_disable_interface("USB3Vision");
    arv_update_device_list();
    std::vector<FoundCamera> found;
    for (unsigned i = 0; i < arv_get_n_devices(); ++i) {
        FoundCamera camera{Readable(arv_get_device_vendor(i)), Readable(arv_get_device_model(i)),
                           Readable(arv_get_device_serial_nbr(i)), Readable(arv_get_device_address(i)),
                           Readable(arv_get_device_physical_id(i))};
        if (!camera.address.empty()) found.push_back(std::move(camera));
    }
    return found;
}

}  // namespace

std::string Readable(const char* text) {
    std::string readable = text ? text : "";
    for (char& c : readable) {
        if (static_cast<unsigned char>(c) < ' ' || c == 127) c = '?';
    }
    return readable;
}

Discovery::Discovery(Handler handler) : m_Handler(std::move(handler)) {
    m_Thread.Start([](void* self) { static_cast<Discovery*>(self)->Run(); }, this);
}

Discovery::~Discovery() {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Ending = true;
    }
    m_Changed.notify_all();
    m_Thread.Join();
}

void Discovery::Run() {
    const auto ending = [&]() ZEL_REQUIRES(m_Lock) { return m_Ending; };
    platform::ScopedLock lock(m_Lock);
    while (!m_Ending) {
        lock.unlock();
        m_Handler(Look());
        lock.lock();
        m_Changed.wait_for(lock, kPause, ending);
    }
}

}  // namespace zel::gige
