// The color matrices of a simulated camera's parameter table: what undoes the spectral response of its sensor.
#ifndef SIM_COLORMATRICES_H
#define SIM_COLORMATRICES_H

#include <array>
#include <string>

namespace zel::sim {

using ColorMatrix = std::array<std::array<double, 3>, 3>;  // rows and columns: red, green, blue

// What the camera's correction matrix is made for; the texts of CCM_OUTPUT_COLOR_SPACE.
inline constexpr const char* kColorSpaceRgb = "CCIR 709";  // linear red, green, blue
inline constexpr const char* kColorSpaceXyz = "XYZ";

struct ColorMatrices {
    ColorMatrix correction;     // CCM_1_1 to CCM_3_3
    ColorMatrix white_balance;  // DWB_1_1 to DWB_3_3, a diagonal
};

// A host that composes both multiplies white balance by correction, so that the correction acts on a pixel first:
//
//    white_balance * correction * SpectralResponse() = output
//
// where output is the identity for "CCIR 709" (and any space that is not known) and the matrix from linear RGB to XYZ
// for "XYZ". The white balance alone turns what the sensor sees of white into a neutral; the correction alone keeps it.
ColorMatrices MakeColorMatrices(const std::string& color_space);

}  // namespace zel::sim

#endif
