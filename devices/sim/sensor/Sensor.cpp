#include "devices/sim/sensor/Sensor.h"

#include <algorithm>
#include <array>
#include <new>
#include <vector>

#include "devices/sim/scene/Noise.h"
#include "devices/sim/sensor/LightPicture.h"
#include "devices/sim/sensor/SignalTable.h"

namespace zel::sim {
namespace {

// The frame number lies in the first two samples: low 16 bits, then the next 16.
void WriteFrameNumber(std::uint64_t frame, std::span<std::uint16_t> image) {
    for (std::size_t i = 0; i < std::min<std::size_t>(image.size(), 2); ++i) {
        image[i] = static_cast<std::uint16_t>(frame >> (16 * i));
    }
}

// Renders up to kGaussianStretch pixels. The two noises are independent: shot noise goes with the charge and is cut by
// the full well, read noise comes on top.
void RenderStretch(const SignalTable& table, float largest, std::span<const std::uint16_t> levels,
                   RandomNumbers& numbers, std::uint16_t* out) {
    const float* shot = GaussianStretch(numbers);
    const float* read = GaussianStretch(numbers);
    std::array<float, kGaussianStretch> mean;
    std::array<float, kGaussianStretch> sigma;
    const SignalTable::Signal* signals = table.Signals();
    for (std::size_t i = 0; i < levels.size(); ++i) {
        mean[i] = signals[levels[i]].mean;
        sigma[i] = signals[levels[i]].sigma;
    }
    const float full_well = table.FullWell();
    const float read_noise = table.ReadNoise();
    const float offset = table.BlackLevel() + 0.5f;
    const float ceiling = largest + 0.5f;
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const float charge = std::min(mean[i] + sigma[i] * shot[i], full_well);
        const float counts = charge + read_noise * read[i] + offset;
        out[i] = static_cast<std::uint16_t>(static_cast<int>(std::min(std::max(counts, 0.0f), ceiling)));
    }
}

}  // namespace

struct Sensor::State {
    explicit State(const SensorModel& wanted) : model(wanted) {}

    bool Prepare(const SensorSettings& wanted);
    void RenderNoise(std::uint64_t frame, std::span<const std::uint16_t> levels, std::span<std::uint16_t> image) const;
    void RenderStatic(std::uint64_t frame, std::span<std::uint16_t> image);

    SensorModel model;
    SensorSettings settings;
    LightPicture light;
    MovingLight film;
    bool moves = false;
    SignalTable table;
    TapGains taps;
    bool looked = false;               // at the scene
    bool tabulated = false;            // for `settings`
    std::vector<std::uint16_t> still;  // the repeated frame, empty when there is none for `settings`
};

// Looks at the scene before the first frame only, tabulates whenever the settings differ from the last frame's.
bool Sensor::State::Prepare(const SensorSettings& wanted) {
    if (!looked) {
        looked = true;
        light.Look(model.scene, model.width, model.height, model.cfa_phase);
        moves = model.motion.Any() &&
                film.Begin(model.motion, light.Levels(), model.width, model.height, model.cfa_phase, model.seed);
    }
    if (!tabulated || !(wanted == settings)) {
        settings = wanted;
        still.clear();
        tabulated = table.Build(model, settings) && taps.Build(model.taps, settings.readout, model.bits);
    }
    return tabulated && !light.Levels().empty();
}

void Sensor::State::RenderNoise(std::uint64_t frame, std::span<const std::uint16_t> levels,
                                std::span<std::uint16_t> image) const {
    RandomNumbers numbers(RandomNumbers(model.seed).Next() ^ frame);
    const auto largest = static_cast<float>(taps.Ceiling());
    for (std::size_t start = 0; start < levels.size(); start += kGaussianStretch) {
        const std::size_t count = std::min(kGaussianStretch, levels.size() - start);
        RenderStretch(table, largest, levels.subspan(start, count), numbers, image.data() + start);
    }
    taps.Apply(image, model.width, model.height);
}

void Sensor::State::RenderStatic(std::uint64_t frame, std::span<std::uint16_t> image) {
    if (still.empty()) {
        RenderNoise(0, light.Levels(), image);
        try {
            still.assign(image.begin(), image.end());
        } catch (const std::bad_alloc&) {
            still.clear();  // rendered anew each time
        }
    } else {
        std::copy(still.begin(), still.end(), image.begin());
    }
    WriteFrameNumber(frame, image);
}

Sensor::Sensor(const SensorModel& model) {
    try {
        m_State = std::make_unique<State>(model);
    } catch (const std::bad_alloc&) {
        // Without a state every frame stays as it is.
    }
}

Sensor::~Sensor() = default;

const SensorModel& Sensor::Model() const {
    static const SensorModel none;
    return m_State ? m_State->model : none;
}

void Sensor::Render(const SensorSettings& settings, SensorFill fill, std::uint64_t frame,
                    std::span<std::uint16_t> image) {
    if (!m_State) return;
    const std::uint64_t pixels = std::uint64_t{m_State->model.width} * m_State->model.height;
    if (image.size() < pixels) return;
    image = image.first(static_cast<std::size_t>(pixels));
    if (fill == SensorFill::kNone) {
        WriteFrameNumber(frame, image);
    } else if (!m_State->Prepare(settings)) {
        std::fill(image.begin(), image.end(), std::uint16_t{0});
    } else if (fill == SensorFill::kStatic) {
        m_State->RenderStatic(frame, image);
    } else {
        const auto levels = m_State->moves ? m_State->film.Levels(frame) : m_State->light.Levels();
        m_State->RenderNoise(frame, levels, image);
    }
}

void Sensor::Prepare(const SensorSettings& settings) {
    if (m_State && m_State->Prepare(settings)) GaussianTable();
}

}  // namespace zel::sim
