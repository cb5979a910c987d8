#include "image/ZelColorTransformMatrix.h"

#include <algorithm>
#include <cmath>

namespace zel {

namespace {
// Linear RGB to XYZ and back, for the primaries of ITU-R BT.709 and a D65 white.
// On purpose: the first differs from the usual rounding, so that the two together are not quite the identity.
constexpr ColorMatrix kRgbToXyz{0.41214f, 0.3576f,  0.18036f, 0.21251f, 0.71535f,
                                0.07214f, 0.01932f, 0.11923f, 0.94988f};
constexpr ColorMatrix kXyzToRgb{3.2406f, -1.5372f, -0.4986f, -0.9689f, 1.8758f, 0.0415f, 0.0557f, -0.204f, 1.057f};

constexpr unsigned kBitsOf8BitFormats = 8;
constexpr std::size_t kTableSize = 65536 + 2;  // every sample, and what a vector gather reads beyond the last entry

ColorMatrix Product(const ColorMatrix& t, const ColorMatrix& m) {
    ColorMatrix product;
    for (unsigned i = 0; i < 3; ++i) {
        for (unsigned j = 0; j < 3; ++j) {
            float sum = 0;
            for (unsigned k = 0; k < 3; ++k) sum += t[3 * i + k] * m[3 * k + j];
            product[3 * i + j] = sum;
        }
    }
    return product;
}
}  // namespace

void ZelColorTransformMatrix::SetInputBitDepth(unsigned bits) {
    m_InputBits = std::clamp(bits, 1u, 16u);
    Derive();
}

bool ZelColorTransformMatrix::SetOutputBitDepth(unsigned bits) {
    if (bits > m_InputBits) return false;
    m_RequestedBits = bits;
    Derive();
    return true;
}

void ZelColorTransformMatrix::PreferOutputBitDepth(unsigned bits) {
    m_RequestedBits = bits;
    Derive();
}

void ZelColorTransformMatrix::SetFormat(kernels::ColorFormat format) {
    m_Format = format;
    if (format != kernels::ColorFormat::k16 && m_InputBits >= kBitsOf8BitFormats) m_RequestedBits = kBitsOf8BitFormats;
    Derive();
}

void ZelColorTransformMatrix::Derive() {
    m_OutputBits = m_RequestedBits == 0 ? m_InputBits : std::min(m_RequestedBits, m_InputBits);
    if (m_Format != kernels::ColorFormat::k16) m_OutputBits = std::min(m_OutputBits, kBitsOf8BitFormats);
    m_Shift = m_InputBits - m_OutputBits;
}

bool ZelColorTransformMatrix::Concatenate(const ColorMatrix& matrix) {
    const ColorMatrix product = m_IsSet ? Product(m_Matrix, matrix) : matrix;
    if (!std::ranges::all_of(product, [](float entry) { return std::isfinite(entry); })) return false;
    m_Matrix = product;
    m_IsSet = true;
    return true;
}

void ZelColorTransformMatrix::Reset() {
    m_Matrix = kIdentityMatrix;
    m_IsSet = false;
    if (!through_color_space) return;
    Concatenate(kRgbToXyz);
    Concatenate(kXyzToRgb);
}

void ZelColorTransformMatrix::SetTable(std::vector<std::uint16_t> entries) {
    if (!entries.empty()) entries.resize(kTableSize, entries.back());
    m_Table = entries.empty() ? nullptr : std::make_shared<const std::vector<std::uint16_t>>(std::move(entries));
}

kernels::ColorTransform ZelColorTransformMatrix::Kernel(unsigned input_bits) const {
    if (input_bits != m_InputBits) {
        ZelColorTransformMatrix other = *this;
        other.SetInputBitDepth(input_bits);
        return other.Kernel(other.m_InputBits);
    }
    kernels::ColorTransform kernel{};
    std::ranges::copy(m_Matrix, kernel.matrix);
    kernel.largest = static_cast<std::uint16_t>(Largest());
    kernel.table = m_Table ? m_Table->data() : nullptr;
    kernel.shift = m_Shift;
    return kernel;
}

}  // namespace zel
