// Everything that an application does with a camera, once, and what came of each call.
#ifndef TESTS_CAMPAIGN_SESSION_H
#define TESTS_CAMPAIGN_SESSION_H

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "include/ZelCameraInternal.h"
#include "include/ZelSDK.h"
#include "tests/campaign/FaultyLink.h"

namespace zel::campaign {

class Session {
  public:
    struct Answer {
        const char* call;
        int value;
        bool operator==(const Answer& other) const { return value == other.value; }
    };
    // The slowest call by the simulated clock.
    struct Slowest {
        const char* call = "";
        std::uint32_t milliseconds = 0;
    };

    Session(const LinkUnderTest& link, FaultyLink& faults) : m_Link(link), m_Faults(faults) {}
    virtual ~Session() = default;

    // On the SDK that is there, or on a new one; the camera is closed in the end. `sound`: no fault is planned, and all
    // frames are waited for. `close_sdk`: the SDK is closed, too, and stays to be opened again.
    const std::vector<Answer>& Run(bool sound, bool close_sdk);
    virtual void DestroySdk();

    const Slowest& SlowestCall() const { return m_Slowest; }
    // What must never be, whatever the fault was; empty when all was well.
    const std::string& Complaint() const { return m_Complaint; }
    std::atomic<const char*> current{""};
    bool traced = false;  // each call is printed

  protected:
    virtual void Calls(bool close_sdk);
    int Do(const char* name, const std::function<int()>& call);
    void Complain(const std::string& text) {
        if (m_Complaint.empty()) m_Complaint = text;
    }
    bool Await(const std::function<bool()>& holds);

    const LinkUnderTest& m_Link;
    FaultyLink& m_Faults;
    bool m_Sound = true;
    std::vector<Answer> m_Answers;

  private:
    void Search();
    void Parameters();
    void Settings();
    void Colors();
    void Frames();
    void Triggers();
    void CheckRecords();
    int TakeFrames(int count);

    static void ZEL_CALL OnImage(ZelImage* image, void* session);
    static int ZEL_CALL OnScratchpad(ZelColorImage*, void*) { return 0; }
    static void ZEL_CALL OnText(const char*, void* session) { ++static_cast<Session*>(session)->m_Moves; }
    static void ZEL_CALL OnNotification(int, void* session) { ++static_cast<Session*>(session)->m_Moves; }
    static void ZEL_CALL OnControl(int, void* session) { ++static_cast<Session*>(session)->m_Moves; }
    static void ZEL_CALL OnConnect(int, int, const char*, const char*, const char*, void* session) {
        ++static_cast<Session*>(session)->m_Moves;
    }

    ZelSDK* m_Sdk = nullptr;
    ZelCameraInternal* m_Camera = nullptr;
    std::array<std::array<unsigned char, 128>, 80> m_Delivered{};  // the parameters of a camera that is new
    bool m_KnowsDelivered = false;
    Slowest m_Slowest;
    std::string m_Complaint;
    std::atomic<int> m_Moves{0}, m_Images{0};
};

}  // namespace zel::campaign

#endif
