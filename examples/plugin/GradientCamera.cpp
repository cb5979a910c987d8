// A camera of one's own: a plug-in with one camera whose picture is a moving gradient. Copy it, put your hardware in
// the places marked "Hardware:", and build it as the library of the kind of link it has
// (docs/guide/writing-a-plugin.md).
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>
#include <vector>

#include "devices/kit/Plugin.h"

namespace {

using namespace zel::kit;
using namespace zel;  // the names of the entries

constexpr SensorSize kSensor{640, 480, 12};
constexpr int kFullScale = (1 << 12) - 1;
constexpr int kReadoutUs = 5000;

class GradientCamera final : public BackEnd {
  public:
    // Who it is. Hardware: what the driver's search told.
    Description Describe() const override { return {"Gradient", "900001", "none", {"gradient 1", "", ""}}; }

    // Hardware: open and close the driver here. Anything but 0 makes the host's open fail.
    int Connect() override { return 0; }
    void Disconnect() override {}

    // Switched on: the texts are stored, numbers have their defaults.
    void PowerOn(ParameterTable& table) override {
        table.Store(HW_MODEL, "GRADIENT-640");
        table.Store(SERIAL_NUMBER, "900001");
        table.Store(FW_VERSION, "1.0");
        if (table.Text(CAMERA_NAME).empty()) table.Store(CAMERA_NAME, "Gradient");
        m_ExposureUs = kDefaultExposureUs;
        m_Gain = 0;
    }

    // Which entries there are, and in what range. The kit refuses every value outside.
    std::optional<Attributes> AttributesOf(int index) override {
        const Attributes attributes = SensorAttributes(index, kSensor);
        switch (index) {
            case EXPOSURE_TIME:
                return attributes.Bounded(100, 1000000, kDefaultExposureUs);
            case EXPOSURE_ACTUAL:
            case FRAME_TIME:
            case READOUT_TIME:
            case VGA_GAIN:
                return attributes;
            default:
                return IsBasicEntry(index) ? std::optional(attributes) : std::nullopt;
        }
    }

    // What the host reads: entries that follow from others, or that the hardware measures.
    int Read(int index, Value& value) override {
        if (index == EXPOSURE_ACTUAL) value = m_ExposureUs.load();
        if (index == READOUT_TIME) value = kReadoutUs;
        if (index == FRAME_TIME) value = PeriodUs();
        return 0;
    }

    // What the host writes, in range. This camera has a clock of 10 us: what stands in `value` afterwards is the truth.
    // Hardware: write the register; answer kExceptionChange when it refuses.
    int Write(int index, Value& value) override {
        if (index == EXPOSURE_TIME) {
            const int asked_for = std::get<int>(value);
            m_ExposureUs = std::max(asked_for / 10 * 10, 100);
            value = m_ExposureUs.load();
        }
        if (index == VGA_GAIN) m_Gain = std::get<int>(value);
        return 0;
    }

    // Frames, on a thread of the kit's, until the sink has ended. Hardware: start, wait for buffers, give them, stop.
    // Drivers that wait by themselves are woken in Stop().
    void Start(FrameSink& sink, const Run& run) override {
        auto due = FrameSink::Clock::now();
        while (run.triggered ? sink.WaitForTrigger() : !sink.Ended()) {
            const auto period = std::chrono::microseconds(PeriodUs());
            due = run.triggered ? FrameSink::Clock::now() + period : std::max(due + period, FrameSink::Clock::now());
            if (!sink.WaitUntil(due)) return;
            FrameFacts facts;
            facts.ready = due;
            const unsigned number = sink.NextNumber();
            sink.Give(facts, [&](std::span<std::uint8_t> memory) { return Fill(number, memory); });
        }
    }

  private:
    static constexpr int kDefaultExposureUs = 10000;

    int PeriodUs() const { return std::max(m_ExposureUs.load(), kReadoutUs); }

    // A diagonal gradient that moves by one column a frame; its brightness goes with the exposure.
    bool Fill(unsigned number, std::span<std::uint8_t> memory) {
        const int light = std::min(m_ExposureUs / 100 + m_Gain, kFullScale);
        m_Row.resize(std::size_t{kSensor.width});
        const std::size_t row_bytes = m_Row.size() * sizeof(m_Row[0]);
        for (int y = 0; y < kSensor.height && memory.size() >= row_bytes; ++y, memory = memory.subspan(row_bytes)) {
            for (int x = 0; x < kSensor.width; ++x) {
                const auto place = (static_cast<unsigned>(x + y) + number) % unsigned{kSensor.width};
                m_Row[static_cast<std::size_t>(x)] =
                    static_cast<std::uint16_t>(place * static_cast<unsigned>(light) / unsigned{kSensor.width});
            }
            std::memcpy(memory.data(), m_Row.data(), row_bytes);
        }
        return true;
    }

    std::atomic<int> m_ExposureUs{kDefaultExposureUs};  // written in the conversation, read by the frame thread
    std::atomic<int> m_Gain{0};
    std::vector<std::uint16_t> m_Row;
};

// The library: its cameras are added once. Hardware: search here, and again in Search(); a thread of your own may add
// cameras and report plugs at any time.
class GradientPlugin final : public Plugin {
  public:
    explicit GradientPlugin(Cameras& cameras) { cameras.Add(std::make_unique<GradientCamera>()); }
};

}  // namespace

ZEL_CAMERA_PLUGIN(GradientPlugin, "USB", "gradient 1.0", CAMERA_TYPE_USB);
