// Elementary functions made of additions, multiplications, divisions and square roots only, so that all products,
// whose run-time libraries round differently, compute the same pictures to the last bit.
#ifndef SIM_PLAINMATH_H
#define SIM_PLAINMATH_H

namespace zel::sim {

// e to the x; x is taken as within -700 to 700.
double PlainExp(double x);

// Natural logarithm of a positive, finite x.
double PlainLog(double x);

// x to the power y for a positive, finite x.
double PlainPow(double x, double y);

// The angle of the direction (x, y), -pi to pi; 0 for (0, 0).
double PlainAtan2(double y, double x);

}  // namespace zel::sim

#endif
