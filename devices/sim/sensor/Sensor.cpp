#include "devices/sim/sensor/Sensor.h"

#include <algorithm>
#include <new>
#include <vector>

#include "devices/sim/scene/Noise.h"
#include "devices/sim/sensor/LightPicture.h"
#include "devices/sim/sensor/PixelKernels.h"
#include "devices/sim/sensor/SignalTable.h"

namespace zel::sim {
namespace {

// The frame number lies in the first two samples: low 16 bits, then the next 16.
void WriteFrameNumber(std::uint64_t frame, std::span<std::uint16_t> image) {
    for (std::size_t i = 0; i < std::min<std::size_t>(image.size(), 2); ++i) {
        image[i] = static_cast<std::uint16_t>(frame >> (16 * i));
    }
}

}  // namespace

struct Sensor::State {
    explicit State(const SensorModel& wanted) : model(wanted) {}

    bool Prepare(const SensorSettings& wanted);
    void BeginNoise(std::uint64_t frame, std::span<const std::uint16_t> light_levels);
    void BeginStill();
    void RenderRow(unsigned y, std::uint16_t* out) const;

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
    const PixelKernel render = FastestPixelKernel();

    // Of the frame begun last.
    enum class Content { kBlack, kStill, kNoise } content = Content::kBlack;
    bool numbered = false;
    std::uint64_t number = 0;
    RandomNumbers noise{0};
    std::span<const std::uint16_t> levels;
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

void Sensor::State::BeginNoise(std::uint64_t frame, std::span<const std::uint16_t> light_levels) {
    content = Content::kNoise;
    noise = RandomNumbers(RandomNumbers(model.seed).Next() ^ frame);
    levels = light_levels;
}

// Frame 0 of what stands still. Without memory it is rendered anew each time.
void Sensor::State::BeginStill() {
    if (still.empty()) {
        BeginNoise(0, light.Levels());
        try {
            still.resize(levels.size());
        } catch (const std::bad_alloc&) {
            return;
        }
        for (unsigned y = 0; y < model.height; ++y) RenderRow(y, still.data() + std::size_t{y} * model.width);
    }
    content = Content::kStill;
}

// Each stretch of the picture takes two numbers, for its shot noise and for its read noise. A row has a part in one or
// more of them, and its halves are read by different taps.
void Sensor::State::RenderRow(unsigned y, std::uint16_t* out) const {
    const std::size_t begin = std::size_t{y} * model.width;
    const std::size_t middle = begin + model.width / 2;
    const std::size_t end = begin + model.width;
    PixelSettings pixel{.signals = table.Signals(),
                        .map = {},
                        .full_well = table.FullWell(),
                        .read_noise = table.ReadNoise(),
                        .offset = table.BlackLevel() + 0.5f,
                        .ceiling = static_cast<float>(taps.Ceiling()) + 0.5f};
    RandomNumbers numbers = noise;
    numbers.Skip(begin / kGaussianStretch * 2);
    for (std::size_t stretch = begin - begin % kGaussianStretch; stretch < end; stretch += kGaussianStretch) {
        const float* const shot = GaussianStretch(numbers);
        const float* const read = GaussianStretch(numbers);
        for (const bool right : {false, true}) {
            const std::size_t from = std::max(stretch, right ? middle : begin);
            const std::size_t to = std::min(stretch + kGaussianStretch, right ? end : middle);
            if (from >= to) continue;
            pixel.map = taps.Map(y, model.height, right);
            render(pixel, {levels.data() + from, shot + (from - stretch), read + (from - stretch), out + (from - begin),
                           to - from});
        }
    }
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
    const std::size_t width = m_State->model.width;
    const unsigned height = m_State->model.height;
    if (image.size() < std::uint64_t{width} * height) return;
    if (fill == SensorFill::kNone) return WriteFrameNumber(frame, image.first(width * height));
    Begin(settings, fill, frame);
    for (unsigned y = 0; y < height; ++y) {
        const auto room = image.subspan(y * width, width);
        const auto row = Row(y, room);
        if (row.data() != room.data()) std::copy(row.begin(), row.end(), room.begin());
    }
}

void Sensor::Begin(const SensorSettings& settings, SensorFill fill, std::uint64_t frame) {
    if (!m_State) return;
    State& state = *m_State;
    state.content = State::Content::kBlack;
    state.number = frame;
    state.numbered = fill == SensorFill::kNone;
    if (fill == SensorFill::kNone || !state.Prepare(settings)) return;
    if (fill == SensorFill::kStatic) {
        state.numbered = true;
        state.BeginStill();
    } else {
        state.BeginNoise(frame, state.moves ? state.film.Levels(frame) : state.light.Levels());
    }
}

std::span<const std::uint16_t> Sensor::Row(unsigned y, std::span<std::uint16_t> room) {
    if (!m_State || room.size() < m_State->model.width || y >= m_State->model.height) return room;
    const State& state = *m_State;
    room = room.first(state.model.width);
    const bool numbered = state.numbered && y == 0;
    if (state.content == State::Content::kStill) {
        const auto row = std::span(state.still).subspan(std::size_t{y} * room.size(), room.size());
        if (!numbered) return row;
        std::copy(row.begin(), row.end(), room.begin());
    } else if (state.content == State::Content::kNoise) {
        state.RenderRow(y, room.data());
    } else {
        std::fill(room.begin(), room.end(), std::uint16_t{0});
    }
    if (numbered) WriteFrameNumber(state.number, room);
    return room;
}

void Sensor::Prepare(const SensorSettings& settings, SensorFill fill) {
    if (!m_State || fill == SensorFill::kNone || !m_State->Prepare(settings)) return;
    GaussianTable();
    if (fill == SensorFill::kStatic) m_State->BeginStill();
}

}  // namespace zel::sim
