// What moves before the lens: things drawn over the light picture, which itself stays as it is. Where they are follows
// from the frame's number and the sensor's seed alone, so that every run shows the same film, in all products.
#ifndef SIM_SCENEMOTION_H
#define SIM_SCENEMOTION_H

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "devices/sim/scene/Scene.h"

namespace zel::sim {

struct SceneMotion {
    bool drift = false;  // spots of light that cross the frame and turn back at its edges
    bool turn = false;   // the star in the middle turns
    double speed = 1.0;

    bool Any() const { return drift || turn; }
};

// Light levels of one film.
class MovingLight {
  public:
    // still: the light picture, which must outlive the film. False without memory.
    bool Begin(const SceneMotion& motion, std::span<const std::uint16_t> still, unsigned width, unsigned height,
               int cfa_phase, std::uint64_t seed) noexcept;

    // The levels of a frame, until the next call.
    std::span<const std::uint16_t> Levels(std::uint64_t frame);

  private:
    struct Spot {
        double x, y;                // where frame 0 shows it, in pixels
        double dx, dy;              // pixels a frame
        double sigma;               // pixels
        std::array<float, 4> peak;  // in levels, for each pixel of the 2 x 2 cell of filters
    };
    struct Part {
        unsigned left, top, right, bottom;
    };

    // Pixels of the star in a row.
    struct StarRun {
        unsigned row, left;
        std::size_t first;  // of its pixels in the lists
    };

    void MakeSpots(std::uint64_t seed);
    void MakeStar();
    void DrawSpot(const Spot& spot, double frame);
    void DrawStar(double frame);
    float Response(unsigned cell, const Rgb& light) const;
    std::uint16_t* Row(unsigned y) { return m_Levels.data() + std::size_t{y} * m_Width; }

    SceneMotion m_Motion;
    std::span<const std::uint16_t> m_Still;
    unsigned m_Width = 0;
    unsigned m_Height = 0;
    int m_CfaPhase = 0;
    std::vector<std::uint16_t> m_Levels;
    std::vector<Spot> m_Spots;
    std::vector<Part> m_Drawn;  // parts that differ from the still picture
    std::vector<float> m_Profile;
    Part m_Star{};
    std::vector<StarRun> m_StarRuns;
    std::vector<std::uint16_t> m_StarAngles;  // of the pixels of all runs, in 65536ths of a pair of rays
    std::vector<float> m_StarSlopes;          // pixels to the next such angle
    std::vector<float> m_Ink[2];              // levels along even and odd rows
    std::vector<float> m_Paper[2];
};

}  // namespace zel::sim

#endif
