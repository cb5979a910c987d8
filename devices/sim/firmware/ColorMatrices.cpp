#include "devices/sim/firmware/ColorMatrices.h"

#include "devices/sim/scene/Spectrum.h"

namespace zel::sim {
namespace {

constexpr ColorMatrix kIdentity{{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};
constexpr ColorMatrix kRgbToXyz{{{0.41214, 0.3576, 0.18036}, {0.21251, 0.71535, 0.07214}, {0.01932, 0.11923, 0.94988}}};

ColorMatrix Product(const ColorMatrix& a, const ColorMatrix& b) {
    ColorMatrix product{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            for (std::size_t k = 0; k < 3; ++k) product[i][j] += a[i][k] * b[k][j];
        }
    }
    return product;
}

// By cofactors. Taking the indices round (i + 1, i + 2 modulo 3) gives each cofactor its sign.
ColorMatrix Inverse(const SpectralMatrix& m) {
    const auto cofactor = [&m](std::size_t row, std::size_t column) {
        const auto at = [&](std::size_t r, std::size_t c) { return double{m[(row + r) % 3][(column + c) % 3]}; };
        return at(1, 1) * at(2, 2) - at(1, 2) * at(2, 1);
    };
    double determinant = 0.0;
    for (std::size_t c = 0; c < 3; ++c) determinant += double{m[0][c]} * cofactor(0, c);
    ColorMatrix inverse{};
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) inverse[c][r] = cofactor(r, c) / determinant;
    }
    return inverse;
}

}  // namespace

ColorMatrices MakeColorMatrices(const std::string& color_space) {
    const SpectralMatrix& response = SpectralResponse();
    ColorMatrix to_response_of_white{};
    ColorMatrices matrices{};
    for (std::size_t i = 0; i < 3; ++i) {
        const double white = double{response[i][0]} + response[i][1] + response[i][2];
        to_response_of_white[i][i] = white;
        matrices.white_balance[i][i] = 1.0 / white;
    }
    const ColorMatrix& output = color_space == kColorSpaceXyz ? kRgbToXyz : kIdentity;
    matrices.correction = Product(to_response_of_white, Product(output, Inverse(response)));
    return matrices;
}

}  // namespace zel::sim
