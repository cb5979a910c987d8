// Checks of numbers on the command line.
#ifndef ZELCAM_NUMBERCHECK_H
#define ZELCAM_NUMBERCHECK_H

#include <CLI/CLI.hpp>

namespace zelcam {

// A number of seconds within bounds. "nan" and "inf" are none.
CLI::Validator SecondsBetween(double least, double most);

}  // namespace zelcam

#endif
