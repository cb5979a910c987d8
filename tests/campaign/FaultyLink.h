// The simulated camera of a session, and what lies between the SDK and it: everything that passes is counted, and one
// fault happens where it was planned.
#ifndef TESTS_CAMPAIGN_FAULTYLINK_H
#define TESTS_CAMPAIGN_FAULTYLINK_H

#include <atomic>
#include <string>
#include <thread>

#include "devices/sim/link/SimControl.h"
#include "platform/DynamicLibrary.h"
#include "tests/campaign/Fault.h"

namespace zel::campaign {

struct LinkUnderTest {
    const char* name;
    const char* library;
    const char* counts[3];  // cameras on Camera Link, eBUS, USB
    int camera;             // number within the library, and for the SDK
    bool color;
    int taps_index;
    bool through_c = false;  // the session goes through the C interface
};
inline constexpr LinkUnderTest kLinks[] = {
    {"camera-link", "edt_camera_link.dll", {"1", "0", "0"}, 0, false, 2},
    {"ebus", "pleora_ebus.dll", {"0", "1", "0"}, 0, false, 1},
    {"usb-mono", "zel_usb.dll", {"0", "0", "2"}, 1, false, 0},
    {"usb-color", "zel_usb.dll", {"0", "0", "2"}, 0, true, 0},
#if defined(ZEL_CAMPAIGN_WITH_C)
    {"c-interface", "zel_usb.dll", {"0", "0", "2"}, 0, true, 0, true},
#endif
};

class FaultyLink {
  public:
    explicit FaultyLink(const LinkUnderTest& link);
    ~FaultyLink();
    FaultyLink(const FaultyLink&) = delete;
    FaultyLink& operator=(const FaultyLink&) = delete;

    // Counts from the beginning; the fault happens at its occasion with this number. Null: none.
    void Plan(const FaultKind* kind, int at);
    // The camera is there and well again.
    void Mend();
    // Called by the application's thread outside of the SDK.
    void BetweenCalls();

    bool Happened() const;
    // The fault was one of an operation; the link is as before.
    bool OperationFailed() const {
        return m_Happened && m_Kind && (m_Kind->effect == Effect::kRefuse || m_Kind->effect == Effect::kFail);
    }
    int Count(Occasion occasion) const { return m_Counts[static_cast<int>(occasion)]; }

    // For the transport and the exports. Whether the planned fault happens on this occasion.
    const FaultKind* Next(Occasion occasion);
    void Unplug(const char* operation, int plug_in_again);
    bool Has(platform::LibraryHandle library) const { return library == m_Library; }
    int Camera() const { return m_Link.camera; }
    std::atomic<bool> dead{false};
    std::atomic<int> silent{0};  // so many replies do not come

    static FaultyLink* Current() { return s_Current; }

  private:
    bool Control(std::string command);  // # stands for the camera's number

    static inline FaultyLink* s_Current = nullptr;
    const LinkUnderTest& m_Link;
    platform::LibraryHandle m_Library;
    ZelSimControlFunction m_Control;
    const FaultKind* m_Kind = nullptr;
    int m_At = 0;
    std::atomic<int> m_Counts[kOccasions] = {};
    std::atomic<bool> m_Happened{false};
    std::atomic<bool> m_PlugIn{false};
    std::atomic<bool> m_Mending{false};
    std::thread m_Other;
};

}  // namespace zel::campaign

#endif
