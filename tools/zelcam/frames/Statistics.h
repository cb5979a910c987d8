// Figures of a stream of frames.
#ifndef ZELCAM_STATISTICS_H
#define ZELCAM_STATISTICS_H

#include <cstdint>
#include <vector>

namespace zelcam {

// The smallest of the values that at least `percent` per cent of them do not exceed (nearest rank); 0 without values.
double Percentile(std::vector<double> values, double percent);

// Frames that did not reach the application, by cause.
struct Drops {
    std::uint64_t link = 0;       // lost on the link, as the transport counts them
    std::uint64_t no_buffer = 0;  // arrived while no image buffer was free
    std::uint64_t skipped = 0;    // passed over on purpose for a newer frame
};

// Follows the frames that are handed over: tells the causes of the holes between their numbers apart, and how fast the
// camera sent them, holes included.
class FrameCounter {
  public:
    // A frame was handed over.
    void Frame(std::uint32_t image_number, std::uint32_t arrival_ms);
    // Frames passed over for a newer one so far.
    void SetSkipped(std::uint64_t skipped) { m_Skipped = skipped; }
    // Numbers between the first and the last frame that were not handed over.
    std::uint64_t Missing() const { return m_Missing; }
    // Every missing frame that is not skipped or lost on the link found no free buffer. link_drops: what the transport
    // counted.
    Drops Count(std::uint64_t link_drops) const;
    // Frames per second; 0 when one millisecond saw the first and the last one, or a single one came.
    double CameraRate() const;

  private:
    std::uint32_t m_Last = 0;
    std::uint32_t m_FirstArrival = 0;
    std::uint32_t m_LastArrival = 0;
    std::uint64_t m_Frames = 0;
    std::uint64_t m_Missing = 0;
    std::uint64_t m_Skipped = 0;
};

}  // namespace zelcam

#endif
