// The plug-in for GigE Vision cameras: a search that goes on, and what follows from it.
#include "devices/kit/Plugin.h"

#include <chrono>
#include <cstring>
#include <memory>

#include "devices/gige/Caretaker.h"
#include "devices/gige/Discovery.h"
#include "devices/gige/GObjects.h"
#include "devices/gige/Roster.h"
#include "link/ICameraInterface.h"

namespace zel::gige {

namespace {

constexpr auto kLongestFirstLook = std::chrono::seconds(4);

GLogFunc s_ApplicationsLog = nullptr;

// Aravis reports its own missteps on the terminal, as where a camera vanishes while a stream is opened; what follows
// from them is told by other means. Everything else goes where it went before.
void Log(const char* domain, GLogLevelFlags level, const char* message, void* data) {
    const bool aravis = (!domain || !*domain) && message && std::strncmp(message, "arv_", 4) == 0;
    if (!aravis) s_ApplicationsLog(domain, level, message, data);
}

void KeepAravisQuiet() {
    static const bool s_Done = [] {
        s_ApplicationsLog = g_log_default_handler;
        const GLogFunc before = g_log_set_default_handler(Log, nullptr);
        if (before) s_ApplicationsLog = before;
        return true;
    }();
    static_cast<void>(s_Done);
}

class Plugin : public kit::Plugin {
  public:
    explicit Plugin(kit::Cameras& cameras)
        : m_Caretaker(std::make_shared<Caretaker>()),
          m_Roster(cameras, m_Caretaker),
          m_Discovery([this](std::vector<FoundCamera> found) { Found(std::move(found)); }) {
        KeepAravisQuiet();
    }
    ~Plugin() override { m_Caretaker->Stop(); }  // the search goes on until m_Discovery ends; its finds are not taken

    // The search goes on all the time; the first question waits for the first answer.
    bool Search() override {
        platform::ScopedLock lock(m_Lock);
        return m_Discovery.Running() &&
               m_Changed.wait_for(lock, kLongestFirstLook, [&]() ZEL_REQUIRES(m_Lock) { return m_Looked; });
    }

  private:
    void Found(std::vector<FoundCamera> found) {
        m_Caretaker->Post([this, found = std::move(found)] {
            m_Roster.Update(found);
            const platform::ScopedLock lock(m_Lock);
            m_Looked = true;
            m_Changed.notify_all();
        });
    }

    platform::Mutex m_Lock;
    platform::Condition m_Changed;
    bool m_Looked ZEL_GUARDED_BY(m_Lock) = false;
    const std::shared_ptr<Caretaker> m_Caretaker;
    Roster m_Roster;
    Discovery m_Discovery;
};

}  // namespace

}  // namespace zel::gige

ZEL_CAMERA_PLUGIN(zel::gige::Plugin, "GigE", "GigE Vision over Aravis 1.0", CAMERA_TYPE_PLEORA_EBUS);
