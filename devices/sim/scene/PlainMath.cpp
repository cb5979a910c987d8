#include "devices/sim/scene/PlainMath.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zel::sim {
namespace {

// ln 2 in two parts: the first has enough trailing zero bits that its product with a small integer is exact.
constexpr double kLn2High = 0x1.62e42fee00000p-1;
constexpr double kLn2Low = 0x1.a39ef35793c76p-33;
constexpr double kPi = 0x1.921fb54442d18p+1;

// 1 / 1, 1 / 3, 1 / 5, ...: what the series of atan and artanh are made of.
constexpr std::size_t kTerms = 12;
constexpr std::array<double, kTerms> kOddReciprocals = [] {
    std::array<double, kTerms> values{};
    for (std::size_t i = 0; i < kTerms; ++i) values[i] = 1.0 / (2.0 * static_cast<double>(i) + 1.0);
    return values;
}();

// 1 / 1 + square / 3 + square^2 / 5 + ...
double OddSeries(double square) {
    double sum = 0.0;
    for (std::size_t i = kTerms; i-- > 0;) sum = kOddReciprocals[i] + square * sum;
    return sum;
}

// Halves the angle whose tangent is t.
double HalfAngle(double t) { return t / (1.0 + std::sqrt(1.0 + t * t)); }

// atan for 0 <= t <= 1: a quarter of the angle by the power series, which ends below the last bit.
double AtanOfFraction(double t) {
    const double s = HalfAngle(HalfAngle(t));
    return 4.0 * s * OddSeries(-s * s);
}

}  // namespace

double PlainExp(double x) {
    x = std::clamp(x, -700.0, 700.0);
    const int n = static_cast<int>(x * 1.4426950408889634 + (x < 0.0 ? -0.5 : 0.5));
    const double r = (x - n * kLn2High) - n * kLn2Low;  // |r| <= ln 2 / 2
    double sum = 1.0;
    for (int k = 14; k >= 1; --k) sum = 1.0 + sum * r / k;
    return std::ldexp(sum, n);
}

double PlainLog(double x) {
    int exponent = 0;
    double m = std::frexp(x, &exponent);
    if (m < 0.70710678118654752) {
        m *= 2.0;
        --exponent;
    }
    const double s = (m - 1.0) / (m + 1.0);  // ln m = 2 artanh s
    return exponent * kLn2High + (exponent * kLn2Low + 2.0 * s * OddSeries(s * s));
}

double PlainPow(double x, double y) { return PlainExp(y * PlainLog(x)); }

double PlainAtan2(double y, double x) {
    const double ax = std::fabs(x);
    const double ay = std::fabs(y);
    if (ax == 0.0 && ay == 0.0) return 0.0;
    double angle = ay <= ax ? AtanOfFraction(ay / ax) : kPi / 2 - AtanOfFraction(ax / ay);
    if (x < 0.0) angle = kPi - angle;
    return y < 0.0 ? -angle : angle;
}

}  // namespace zel::sim
