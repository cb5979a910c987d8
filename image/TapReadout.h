// The tap readout of a frame: packed samples are unpacked, the samples of two or four taps put into image order and
// evened out.
//
// All of it happens in one go, row by row (or row pair by row pair). A packed frame is put together in a spare buffer
// that changes places with the record's: every sample is read and written once, and no page comes from the system.
// Where rows do not begin on a whole byte, the steps run one after the other; while somebody reads the log, correction
// is a step of its own, so that its lines are true.
#ifndef IMAGE_TAPREADOUT_H
#define IMAGE_TAPREADOUT_H

#include <cstdint>
#include <vector>

#include "image/FrameGeometry.h"
#include "image/PageBuffer.h"
#include "image/ZelImageInternal.h"
#include "sdk/Logger.h"

namespace zel {

class TapBalance;
class TapRows;

class TapReadout {
  public:
    // `balance` evens out the taps; null without it.
    TapReadout(Logger& logger, TapBalance* balance) : m_Logger(logger), m_Balance(balance) {}

    // Memory for the frames to come. Four taps that can't have it are not put into order.
    void Prepare(const FrameGeometry& geometry);
    // Rewrites the frame; one that can't be put into order stays as it was, and the answer is false.
    bool Process(ZelImageInternal* image, const FrameGeometry& geometry);

    int BufferCount() const;
    void ReleaseBuffers();

  private:
    bool ReserveSpare(std::uint64_t frame_bytes, std::uint64_t record_bytes);
    bool ReserveRows(std::size_t samples);
    static void SwapBuffer(ZelImageInternal* image, PageBuffer& buffer);
    bool ReadOut(ZelImageInternal* image, const FrameGeometry& geometry, const TapRows& rows, bool& corrected);
    void ReadOutByRows(ZelImageInternal* image, int taps, const TapRows& rows);
    void UnpackFrame(ZelImageInternal* image);
    bool ReorderTaps(ZelImageInternal* image, int taps, const TapRows& rows, bool& corrected);
    bool ReorderTwoTaps(ZelImageInternal* image, const TapRows& rows, bool& corrected);
    bool ReorderFourTaps(ZelImageInternal* image, const TapRows& rows, bool& corrected);

    Logger& m_Logger;
    TapBalance* const m_Balance;
    // Both change places with a record's buffer when the frame was put together in them.
    PageBuffer m_ReorderBuffer;  // of four-tap frames
    PageBuffer m_SpareBuffer;    // of packed frames
    std::vector<std::uint16_t> m_RowScratch;
};

}  // namespace zel

#endif
