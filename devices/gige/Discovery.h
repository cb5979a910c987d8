// The search for cameras: a thread of its own, because Aravis' list of devices is made for one, and because each look
// takes a second.
#ifndef GIGE_DISCOVERY_H
#define GIGE_DISCOVERY_H

#include <functional>
#include <string>
#include <vector>

#include "platform/Mutex.h"
#include "platform/Thread.h"

namespace zel::gige {

// A camera that answered.
struct FoundCamera {
    std::string vendor;
    std::string model;
    std::string serial;
    std::string address;   // IPv4
    std::string hardware;  // Ethernet address

    bool SameMake(const FoundCamera& other) const {
        return vendor == other.vendor && model == other.model && serial == other.serial;
    }
};

// Texts come from the network: what is no character of a line becomes a question mark.
std::string Readable(const char* text);

class Discovery {
  public:
    using Handler = std::function<void(std::vector<FoundCamera> found)>;

    // Looks now, and two seconds after each look again; the handler is called on the search's thread.
    explicit Discovery(Handler handler);
    ~Discovery();  // waits for the look that is under way
    Discovery(const Discovery&) = delete;
    Discovery& operator=(const Discovery&) = delete;

    bool Running() const { return m_Thread.Started(); }

  private:
    void Run();

    const Handler m_Handler;
    platform::Mutex m_Lock;
    platform::Condition m_Changed;
    bool m_Ending ZEL_GUARDED_BY(m_Lock) = false;
    platform::Thread m_Thread;
};

}  // namespace zel::gige

#endif
