// The moving average over the frames of a ring. A frame becomes the mean of itself and those before it.
#ifndef IMAGE_FRAMEAVERAGE_H
#define IMAGE_FRAMEAVERAGE_H

#include <cstdint>
#include <vector>

#include "image/ZelImageInternal.h"
#include "sdk/Logger.h"

namespace zel {

class FrameAverage {
  public:
    explicit FrameAverage(Logger& logger) : m_Logger(logger) {}

    // Length of the ring, 0 = off. Another length, or `reset`, gives up what is in it.
    void SetLength(int frames, bool reset);
    bool IsOn() const { return m_Length > 0; }
    // Makes the ring unless there is one. Answers 0, or 1 when there is no memory, and averaging is off then.
    int Prepare(unsigned pixels_of_frame);
    // False for a frame that the ring has no room for, which stays as it was.
    bool Process(ZelImageInternal* image);

  private:
    bool Allocate(unsigned pixels);
    void Release();

    Logger& m_Logger;
    int m_Length = 0;
    int m_Count = 0;  // frames in the ring
    int m_Next = 0;   // slot that the next frame goes to
    std::vector<std::vector<std::uint16_t>> m_Ring;
    std::vector<std::uint32_t> m_Sums;  // sample by sample, over the frames in the ring
    unsigned m_RingPixels = 0;
    unsigned m_RingBytes = 0;
    unsigned m_FrameBytes = 0;  // size of the frames that are in the ring
    unsigned m_FramePixels = 0;
};

}  // namespace zel

#endif
