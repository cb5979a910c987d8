// The color transform of a pipeline: a 3 x 3 matrix, what it expects and what it puts out.
#ifndef IMAGE_ZELCOLORTRANSFORMMATRIX_H
#define IMAGE_ZELCOLORTRANSFORMMATRIX_H

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "kernels/ColorKernels.h"

namespace zel {

// Row by row.
using ColorMatrix = std::array<float, 9>;
inline constexpr ColorMatrix kIdentityMatrix{1, 0, 0, 0, 1, 0, 0, 0, 1};

class ZelColorTransformMatrix {
  public:
    // Bits of the samples that come in, 1 to 16. The output follows: a depth that was asked for is kept where it fits.
    void SetInputBitDepth(unsigned bits);
    // 0: as the input. False for more than the input has; nothing is changed then.
    bool SetOutputBitDepth(unsigned bits);
    // As many bits once the input has them, all that the input has until then.
    void PreferOutputBitDepth(unsigned bits);
    // 8-bit formats put out 8 bits where the input has as many, and the depth stays there.
    void SetFormat(kernels::ColorFormat format);

    // Multiplies a matrix in from the right: the one concatenated last acts on the pixel first. The first one becomes
    // the transform. False, and nothing changed, when a result is no finite number.
    bool Concatenate(const ColorMatrix& matrix);
    // Starts anew. With a color space to go through, the two conversions stand at the beginning.
    void Reset();

    // A curve for the clamped result, before the shift: entry for entry up to the largest value, the last one beyond.
    // Empty: none.
    void SetTable(std::vector<std::uint16_t> entries);

    const ColorMatrix& Matrix() const { return m_Matrix; }
    kernels::ColorFormat Format() const { return m_Format; }
    unsigned OutputBits() const { return m_OutputBits; }
    unsigned Largest() const { return (1u << m_InputBits) - 1; }
    // For samples of this many bits: a frame may have waited since the camera had another depth.
    kernels::ColorTransform Kernel(unsigned input_bits) const;

    ColorMatrix camera_correction = kIdentityMatrix;
    ColorMatrix white_balance = kIdentityMatrix;
    bool through_color_space = false;

  private:
    void Derive();

    ColorMatrix m_Matrix = kIdentityMatrix;
    bool m_IsSet = false;
    kernels::ColorFormat m_Format = kernels::ColorFormat::k16;
    unsigned m_InputBits = 14;
    unsigned m_RequestedBits = 0;
    unsigned m_OutputBits = 14;
    unsigned m_Shift = 0;
    std::shared_ptr<const std::vector<std::uint16_t>> m_Table;  // as long as the kernels want it
};

}  // namespace zel

#endif
