// Makes the color picture of a frame: demosaicing, input linearization, color transform and output non-linearization
// into `color_pixels`.
//
// The four steps go over the frame together, one row at a time, in the processor's registers or through rows that stay
// in its cache. Only when a scratchpad callback is attached does the demosaiced picture stand whole in the record's
// planes, where the scratchpad's pipeline and the main one each take their rows from.
#ifndef IMAGE_COLORRENDERER_H
#define IMAGE_COLORRENDERER_H

#include <cstdint>
#include <span>
#include <vector>

#include "image/ColorPipeline.h"
#include "image/ZelImageInternal.h"
#include "kernels/Kernels.h"
#include "sdk/Logger.h"

namespace zel {

// A frame on its way through the color steps. They go by these values and not by the record, which the application can
// write to in between.
struct ColorFrame {
    // `phase`: of the color filter at the frame's top-left pixel.
    ColorFrame(ZelImageInternal* image, unsigned bit_depth, int phase);

    ZelImageInternal* image;
    unsigned w, h, num_pixels, size_in_bytes;
    unsigned bit_depth;
    int phase;
    std::span<const std::uint16_t> samples;  // w * h
    std::uint8_t* out;                       // room for every format
};

class ColorRenderer {
  public:
    explicit ColorRenderer(Logger& logger) : m_Logger(logger) {}

    // Memory for the rows of frames to come.
    void Prepare(unsigned width) { ReserveRows(std::size_t{3} * width); }
    // Makes room for the picture. False, and no picture, when there is none for it or the record's geometry does not
    // fit its buffer.
    bool ReservePicture(ZelImageInternal* image);
    // Fills the record's planes with the demosaiced picture.
    bool Demosaic(const ColorFrame& frame);
    // Makes the picture with what is staged in the pipeline, from the record's planes or from the frame.
    void Render(const ColorFrame& frame, ColorPipeline& pipeline, bool from_planes);

    int BufferCount() const { return m_Rows.empty() ? 0 : 1; }
    void ReleaseBuffers() { m_Rows = {}; }

  private:
    void StepByStep(const ColorFrame& frame, const kernels::KernelTable& kernel, const kernels::ColorSteps& steps,
                    const kernels::PlanarRow& scratch, bool from_planes);
    bool ReserveRows(std::size_t samples);

    Logger& m_Logger;
    std::vector<std::uint16_t> m_Rows;  // one row in three planes
};

}  // namespace zel

#endif
