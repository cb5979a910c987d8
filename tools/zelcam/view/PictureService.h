// Makes what the pages see: pictures, statistics and the state, on a thread of its own.
#ifndef ZELCAM_PICTURESERVICE_H
#define ZELCAM_PICTURESERVICE_H

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "tools/zelcam/view/CameraCondition.h"
#include "tools/zelcam/view/FrameStatistics.h"
#include "tools/zelcam/view/FrameTaker.h"
#include "tools/zelcam/view/LiveFrame.h"
#include "tools/zelcam/view/ViewMessages.h"
#include "tools/zelcam/view/ViewServer.h"

namespace zelcam {

class PictureService {
  public:
    using Clock = std::chrono::steady_clock;
    using ConditionSource = std::function<CameraCondition()>;

    // All of them must outlive this object. bell: rings when the newest frame changes.
    PictureService(PageOutlet& pages, NewestFrame& newest, Bell& bell, const FrameTaker& taker,
                   ConditionSource condition);
    ~PictureService();
    PictureService(const PictureService&) = delete;
    PictureService& operator=(const PictureService&) = delete;

    // What the pages do; any thread.
    void Join(int client);
    void Leave(int client);
    void Look(int client, const ViewRequest& view);
    void Measure(int client, const Probe& probe);
    // The page has the picture of this frame on its screen since then (milliseconds since 1970 by the page's clock).
    void Shown(int client, std::uint32_t frame, double at);
    // A run begins: what is counted for it begins at 0.
    void BeginRun();

  private:
    struct Client {
        std::optional<ViewRequest> view;
        Probe probe;
        bool again = false;       // wants the frame that is there, although it has had it
        bool under_way = false;   // a picture is
        std::uint32_t frame = 0;  // the number of that picture's
        double hand_over_ms = 0.0;
        double sent_ms = 0.0;
        std::uint64_t sequence = 0;           // of the frame sent last
        std::uint64_t sequence_at_shown = 0;  // of the newest frame when the page was ready for another
        std::uint64_t shown = 0;
        std::uint64_t skipped = 0;
        std::uint64_t passed_over = 0;
        std::optional<double> latency_ms;
        std::deque<Clock::time_point> shown_at;
    };
    // A picture to be made.
    struct Order {
        int client;
        ViewRequest view;
    };

    void Work();
    void SendPictures(const LiveFramePointer& frame);
    std::vector<Order> TakeOrders(const LiveFrame& frame);
    void SendStatistics(const LiveFrame& frame);
    void SendState();
    Json StateFor(Client& client, const CameraCondition& condition, const TakenFrames& taken, std::size_t clients);
    static void CountGap(Client& client, std::uint64_t sequence);

    PageOutlet& m_Pages;
    NewestFrame& m_Newest;
    Bell& m_Bell;
    const FrameTaker& m_Taker;
    ConditionSource m_Condition;

    std::mutex m_Mutex;
    std::map<int, Client> m_Clients;
    bool m_ProbesChanged = false;
    bool m_Quit = false;

    // Of the working thread.
    StatisticsMaker m_Statistics;
    FrameStatistics m_Measured;
    std::uint64_t m_MeasuredSequence = 0;
    Clock::time_point m_NextStatistics{};
    Clock::time_point m_NextState{};
    std::thread m_Thread;
};

}  // namespace zelcam

#endif
