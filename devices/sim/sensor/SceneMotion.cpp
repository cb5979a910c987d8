#include "devices/sim/sensor/SceneMotion.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "devices/sim/scene/ChartPlacement.h"
#include "devices/sim/scene/Noise.h"
#include "devices/sim/scene/PlainMath.h"
#include "devices/sim/scene/SceneCard.h"
#include "devices/sim/scene/Spectrum.h"
#include "devices/sim/sensor/LightPicture.h"

namespace zel::sim {
namespace {

constexpr std::size_t kNumSpots = 12;
constexpr double kReach = 4.0;  // in sigmas
constexpr std::array<Rgb, 4> kGlows{{{0.2f, 1.0f, 0.3f}, {1.0f, 0.4f, 0.1f}, {0.2f, 0.4f, 1.0f}, {1.0f, 0.9f, 0.8f}}};

// The star of the built-in scene, in chart units: the turning rays end a little before its rim and its hub.
constexpr double kRim = 139.0;
constexpr double kHub = 4.0;
constexpr double kTurn = 6.283185307179586;
constexpr double kFramesPerPair = 20.0;  // in which the star turns by a pair of rays
constexpr double kPairUnits = 65536.0;

// A place that goes on and on, thrown back at both ends of a side.
double Reflected(double place, double side) {
    const double folded = std::fmod(std::fabs(place), 2.0 * side);
    return folded < side ? folded : 2.0 * side - folded;
}

unsigned Pixel(double place, unsigned side) {
    return static_cast<unsigned>(std::clamp(place, 0.0, static_cast<double>(side)));
}

}  // namespace

// Light of the pixel `cell` (its row's parity * 2 + its column's), in levels.
float MovingLight::Response(unsigned cell, const Rgb& light) const {
    return PixelResponse(m_CfaPhase, cell % 2, cell / 2, light) * kUnitLevel;
}

bool MovingLight::Begin(const SceneMotion& motion, std::span<const std::uint16_t> still, unsigned width,
                        unsigned height, int cfa_phase, std::uint64_t seed) noexcept {
    m_Motion = motion;
    m_Still = still;
    m_Width = width;
    m_Height = height;
    m_CfaPhase = cfa_phase;
    try {
        m_Levels.assign(still.begin(), still.end());
        m_Profile.resize(width);
        m_Drawn.reserve(kNumSpots + 1);
        if (motion.drift) MakeSpots(seed);
        if (motion.turn) MakeStar();
    } catch (const std::bad_alloc&) {
        m_Levels.clear();
        return false;
    }
    return true;
}

void MovingLight::MakeSpots(std::uint64_t seed) {
    const double scale = ChartPlacement(m_Width, m_Height).Scale();
    RandomNumbers numbers(seed ^ 0xD21F7);
    for (std::size_t i = 0; i < kNumSpots; ++i) {
        Spot spot{};
        spot.x = numbers.NextFraction() * m_Width;
        spot.y = numbers.NextFraction() * m_Height;
        spot.dx = (1.0 + 3.0 * numbers.NextFraction()) * scale;
        spot.dy = (1.0 + 3.0 * numbers.NextFraction()) * scale;
        spot.sigma = std::max((3.0 + 5.0 * numbers.NextFraction()) * scale, 0.8);
        const Rgb& glow = kGlows[i % kGlows.size()];
        for (unsigned cell = 0; cell < 4; ++cell) spot.peak[cell] = 0.8f * Response(cell, glow);
        m_Spots.push_back(spot);
    }
}

void MovingLight::MakeStar() {
    const ChartPlacement placement(m_Width, m_Height);
    const double x = placement.PixelX(500.0);
    const double y = placement.PixelY(500.0);
    const double hub = kHub * placement.Scale();
    const double rim = kRim * placement.Scale();
    constexpr double kPixelsPerUnit = kTurn / (StarCard::kRays * kPairUnits);  // at radius 1
    for (unsigned parity = 0; parity < 2; ++parity) {
        for (unsigned column = 0; column < m_Width; ++column) {
            const unsigned cell = parity * 2 + column % 2;
            m_Ink[parity].push_back(Response(cell, Gray(kInk)));
            m_Paper[parity].push_back(Response(cell, Gray(kPaper)));
        }
    }
    m_Star = {Pixel(x - rim, m_Width), Pixel(y - rim, m_Height), Pixel(x + rim + 1.0, m_Width),
              Pixel(y + rim + 1.0, m_Height)};
    for (unsigned row = m_Star.top; row < m_Star.bottom; ++row) {
        m_StarRuns.push_back({row, m_Star.left, m_StarAngles.size()});
        for (unsigned column = m_Star.left; column < m_Star.right; ++column) {
            const double dx = column + 0.5 - x;
            const double dy = row + 0.5 - y;
            const double radius = std::sqrt(dx * dx + dy * dy);
            StarRun& run = m_StarRuns.back();
            if (radius >= hub && radius < rim) {
                const double units = (PlainAtan2(dy, dx) / kTurn + 1.0) * StarCard::kRays * kPairUnits;
                m_StarAngles.push_back(static_cast<std::uint16_t>(static_cast<std::uint32_t>(units)));
                m_StarSlopes.push_back(static_cast<float>(radius * kPixelsPerUnit));
            } else if (run.first == m_StarAngles.size()) {
                run.left = column + 1;
            } else {
                m_StarRuns.push_back({row, column + 1, m_StarAngles.size()});
            }
        }
    }
}

std::span<const std::uint16_t> MovingLight::Levels(std::uint64_t frame) {
    for (const Part& part : m_Drawn) {
        for (unsigned y = part.top; y < part.bottom; ++y) {
            const std::uint16_t* const still = m_Still.data() + std::size_t{y} * m_Width;
            std::copy(still + part.left, still + part.right, Row(y) + part.left);
        }
    }
    m_Drawn.clear();
    const double time = static_cast<double>(frame) * m_Motion.speed;
    if (m_Motion.turn) DrawStar(time);
    for (const Spot& spot : m_Spots) DrawSpot(spot, time);
    return m_Levels;
}

void MovingLight::DrawSpot(const Spot& spot, double time) {
    const double x = Reflected(spot.x + spot.dx * time, m_Width);
    const double y = Reflected(spot.y + spot.dy * time, m_Height);
    const double reach = kReach * spot.sigma;
    const Part part{Pixel(x - reach, m_Width), Pixel(y - reach, m_Height), Pixel(x + reach, m_Width),
                    Pixel(y + reach, m_Height)};
    m_Drawn.push_back(part);
    const auto bell = [&](double distance) {
        return static_cast<float>(PlainExp(-0.5 * (distance / spot.sigma) * (distance / spot.sigma)));
    };
    for (unsigned column = part.left; column < part.right; ++column) m_Profile[column] = bell(column + 0.5 - x);
    for (unsigned row = part.top; row < part.bottom; ++row) {
        const float share = bell(row + 0.5 - y);
        const float peaks[2] = {share * spot.peak[row % 2 * 2], share * spot.peak[row % 2 * 2 + 1]};
        std::uint16_t* const levels = Row(row);
        for (unsigned column = part.left; column < part.right; ++column) {
            const float level = static_cast<float>(levels[column]) + peaks[column % 2] * m_Profile[column];
            levels[column] = static_cast<std::uint16_t>(std::min(level, 65535.0f));
        }
    }
}

// Ink and paper go over into each other within a pixel, measured along the circle.
void MovingLight::DrawStar(double time) {
    m_Drawn.push_back(m_Star);
    const double turned = std::fmod(time * (kPairUnits / kFramesPerPair), kPairUnits);
    const auto turn = static_cast<std::uint16_t>(static_cast<std::uint32_t>(turned));
    constexpr auto kHalf = static_cast<float>(kPairUnits / 2);
    for (std::size_t r = 0; r < m_StarRuns.size(); ++r) {
        const StarRun& run = m_StarRuns[r];
        const std::size_t count =
            (r + 1 < m_StarRuns.size() ? m_StarRuns[r + 1].first : m_StarAngles.size()) - run.first;
        const std::uint16_t* const angles = m_StarAngles.data() + run.first;
        const float* const slopes = m_StarSlopes.data() + run.first;
        const float* const ink = m_Ink[run.row % 2].data() + run.left;
        const float* const paper = m_Paper[run.row % 2].data() + run.left;
        std::uint16_t* const levels = Row(run.row) + run.left;
        for (std::size_t i = 0; i < count; ++i) {
            const auto phase = static_cast<float>(static_cast<std::uint16_t>(angles[i] - turn)) - kHalf;  // ink below 0
            const float distance = std::min(std::fabs(phase), kHalf - std::fabs(phase));
            const float beyond = phase < 0.0f ? -distance : distance;
            const float white = std::min(std::max(beyond * slopes[i] + 0.5f, 0.0f), 1.0f);
            levels[i] = static_cast<std::uint16_t>(static_cast<int>(ink[i] + (paper[i] - ink[i]) * white + 0.5f));
        }
    }
}

}  // namespace zel::sim
