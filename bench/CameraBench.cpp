// What the camera object itself costs: a parameter read over a transport in memory, and a frame's way from the
// transport's hand-over to the application's callback. Logging is off: this folder has no logging library.
#include <chrono>
#include <cstring>

#include "bench/Figure.h"
#include "camera/ZelCameraControl.h"
#include "tests/support/ScriptedTransport.h"
#include "tests/support/TableCamera.h"

namespace {

using WallClock = std::chrono::steady_clock;

// Answers every read with the same value, at the price of a copy.
class InstantTransport : public zel::test::ScriptedTransport {
  public:
    bool m_Instant = false;

    int SendData(int len, const unsigned char* data) override {
        if (!m_Instant) return ScriptedTransport::SendData(len, data);
        m_Next = 0;
        return len;
    }
    int RecvData(int len, unsigned char* buffer, int timeout_ms) override {
        if (!m_Instant) return ScriptedTransport::RecvData(len, buffer, timeout_ms);
        const int count = std::min(len, static_cast<int>(m_Reply.size()) - m_Next);
        std::memcpy(buffer, m_Reply.data() + m_Next, static_cast<std::size_t>(count));
        m_Next += count;
        return count;
    }

  private:
    const zel::test::Bytes m_Reply = zel::test::ValueReply(640);
    int m_Next = 0;
};

// A camera that is set up for frames of 640 x 512 samples and a pool of 8.
struct Bench {
    Bench() : camera(&transport, "bench") {
        using namespace zel;
        table.m_Values = {{H_SIZE, 640},        {V_SIZE, 512},        {BITS_PER_PIXEL, 14}, {BYTES_PER_PIXEL, 2},
                          {H_ROI_PIXELS, 640},  {V_ROI_PIXELS, 512},  {H_BIN, 1},           {V_BIN, 1},
                          {SENSOR_TAPS_VAL, 1}, {CLOCK_SPEED_VAL, 20}};
        transport.SetHandler([this](const test::Bytes& datagram) {
            table.m_Values[CALC_STATE] = 2;
            return table.Answer(datagram);
        });
        transport.SetCameraCommon(&camera);
    }
    InstantTransport transport;
    zel::test::TableCamera table;
    zel::ZelCameraControl camera;
};

bool MeasureParameter(zel::bench::Report& report) {
    Bench bench;
    bench.transport.m_Instant = true;
    const int times = report.DryRun() ? 1 : 20000;
    bool right = true;
    const auto [read] = zel::bench::Medians(report.Repetitions(31), [&] {
        for (int i = 0; i < times; ++i) {
            int value = 0;
            right = bench.camera.GetParameter(ZEL_PARAM_HSIZE, sizeof value, &value) && value == 640 && right;
        }
    });
    report.Add({"camera.get_parameter", read / times * 1e6, "us", zel::bench::AtMost(3)});
    return right;
}

struct Arrivals {
    Bench* bench;
    WallClock::time_point handed_over;
    std::vector<double> microseconds;
};

void ZEL_CALL Take(ZelImage*, void* context) {
    auto* arrivals = static_cast<Arrivals*>(context);
    const std::chrono::duration<double, std::micro> way = WallClock::now() - arrivals->handed_over;
    arrivals->microseconds.push_back(way.count());
    ZelCamera& camera = arrivals->bench->camera;
    camera.FreeImage(camera.GetPendingImage());
}

bool MeasureFrames(zel::bench::Report& report) {
    Bench bench;
    Arrivals arrivals{&bench, {}, {}};
    if (bench.camera.StartCommon() != 0 || !bench.camera.SetImageCallback(Take, &arrivals)) return false;
    const int frames = report.DryRun() ? 10 : 100000;
    arrivals.microseconds.reserve(static_cast<std::size_t>(frames));
    IZelCameraCommon& common = bench.camera;
    int lost = 0;
    for (int n = 0; n < frames; ++n) {
        ZelImage* image = common.GetFreeImage();
        if (!image) {
            ++lost;
            continue;
        }
        common.FillImageInfo(image);
        arrivals.handed_over = WallClock::now();
        common.SetPendingImage(image);
        bench.transport.EmitEvent(CAMERA_EVENT_IMAGE_READY);
        bench.transport.EmitImage(image);
    }
    std::vector<double>& times = arrivals.microseconds;
    if (times.empty()) return false;
    std::sort(times.begin(), times.end());
    report.Add({"camera.frame_to_callback_median", times[times.size() / 2], "us", zel::bench::AtMost(200)});
    report.Add({"camera.frame_to_callback_99", times[times.size() * 99 / 100], "us"});
    report.Add({"camera.frames_lost_of_" + std::to_string(frames),
                static_cast<double>(frames) - static_cast<double>(times.size()), "frames", zel::bench::AtMost(0)});
    return lost == 0;
}

}  // namespace

int main(int argc, char** argv) {
    zel::bench::Report report(argc, argv);
    if (!MeasureParameter(report) || !MeasureFrames(report)) return 1;
    return report.Finish();
}
