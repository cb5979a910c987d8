// A small stand-in for the SDK's camera object: talks to a camera through a transport's datagrams, gives the transport
// records to fill, and notes every call that the transport makes.
#ifndef ZELCAM_HOSTCAMERA_H
#define ZELCAM_HOSTCAMERA_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "include/ZelImage.h"
#include "link/ICameraInterface.h"
#include "link/IZelCameraCommon.h"
#include "link/SyncTableIndex.h"

namespace zelcam::check {

using enum zel::SyncTableIndex;
using enum zel::SyncTableCommand;
using enum zel::SyncTableException;

// The camera's answer to one table request.
struct TableAnswer {
    bool complete = false;  // both datagrams came
    std::vector<std::uint8_t> data;
    int exception = 0;
};

class HostCamera final : public IZelCameraCommon {
  public:
    static constexpr std::uint8_t kGuard = 0xA5;  // the bytes behind each record's memory
    static constexpr std::size_t kGuardBytes = 64;

    explicit HostCamera(ICameraInterface& transport) : m_Transport(transport) {}

    // Exchanges with the camera.
    TableAnswer Request(int command, int index, std::span<const std::uint8_t> data = {});
    bool Get(int index, int& value);
    int Set(int index, int value);  // 0, an exception code, or -1 when the camera did not answer
    std::string GetText(int index);
    bool Text(const std::string& command, std::string& reply);
    bool Receive(std::span<std::uint8_t> into);

    // Registers the handlers below with the transport.
    void RegisterHandlers();

    // What to do, and what was seen. Read under Lock() while frames flow.
    struct Seen {
        int connects = 0;
        int starts = 0;
        int trigger_starts = 0;
        int stops = 0;
        int free_requests = 0;
        int taken = 0;                        // records that the transport got
        int returned = 0;                     // of those made pending or released
        bool foreign_record = false;          // one was handed over that it had not got
        std::vector<std::string> calls;       // of the frames, in order; the first kMostNotes
        std::vector<unsigned> image_numbers;  // as the image handler saw them
        std::vector<unsigned> events;         // ids
        std::thread::id connect_thread;
        std::thread::id frame_thread;
        bool guard_damaged = false;  // a frame was written past its record
        std::size_t written = 0;     // bytes from the beginning of a record to the last one that a frame changed
        std::vector<std::uint16_t> last_frame;
    };
    static constexpr std::size_t kMostNotes = 4000;
    std::mutex& Lock() { return m_Lock; }
    Seen& SeenLocked() { return m_Seen; }
    Seen Snapshot();
    bool WaitForFrames(std::size_t frames, int timeout_ms);
    bool WaitForRequests(int requests, int timeout_ms);  // of free records
    bool WaitForEvent(unsigned id, int timeout_ms);
    // The application's GetPendingImage and FreeImage.
    ZelImage* TakePending();
    void GiveBack(ZelImage* image);
    // Calls that the transport has made so far, of whatever kind.
    int Calls() const { return m_Calls; }
    void Forget();

    int m_ConnectCode = 0;
    int m_StartCode = 0;
    int m_Buffers = 4;
    std::atomic<bool> m_Recycle{true};  // a frame's record is free again after the image handler
    std::size_t m_BufferSize = 0;       // bytes; 0: what the frame needs
    std::function<void()> m_OnConnect;  // called by ConnectCommon
    std::function<void()> m_OnImage;    // called by the image handler
    std::function<void(unsigned)> m_OnEvent;

    // IZelCameraCommon
    int ConnectCommon() override;
    int StopCommon() override;
    int StartCommon() override;
    int StartTriggerCommon() override;
    int TextCommandCommon(const char* text, bool expect_reply) override;
    bool GetCameraParameter(int index, int* value) override;
    int* GetLastErrorPtr() override;
    bool SyncTapBalanceGain() override;
    ZelImage* GetFreeImage() override;
    ZelImage* GetPendingImage() override;
    bool SetPendingImage(ZelImage* image) override;
    bool ReleaseImage(ZelImage* image) override;
    void FillImageInfo(ZelImage* image) override;
    void FreeAllInUseImages() override;

  private:
    struct Record {
        ZelColorImage image{};
        std::vector<std::uint8_t> memory;
        bool out = false;         // the transport has it
        std::uint8_t before = 0;  // what its bytes were when it was taken
    };

    static void ZEL_CALL OnImage(ZelImage* image, ZelCamera* camera);
    static void ZEL_CALL OnEvent(const ZelCameraEvent* event, ZelCamera* camera);
    void HandleImage(ZelImage* image);
    bool Calculate();
    void MakeRecords();
    void Note(const char* call);
    void Return(ZelImage* image);
    ZelCamera* Identity() { return reinterpret_cast<ZelCamera*>(this); }  // never looked into

    ICameraInterface& m_Transport;
    int m_LastError = 0;
    std::atomic<int> m_Calls{0};
    std::mutex m_ExchangeLock;
    std::mutex m_Lock;
    std::condition_variable m_Changed;
    std::vector<std::unique_ptr<Record>> m_Records;
    std::deque<ZelImage*> m_Free;
    std::deque<ZelImage*> m_Pending;
    Seen m_Seen;
};

}  // namespace zelcam::check

#endif
