// Values of parameters as Python has them.
#ifndef BINDINGS_PYTHON_VALUES_H
#define BINDINGS_PYTHON_VALUES_H

#include <pybind11/pybind11.h>

#include "zel/CameraInfo.h"
#include "zel/ParameterValue.h"
#include "zel/ValueRange.h"

namespace zel::python {

// int, str, a tuple of six (region and binning), a tuple of nine floats, or None for a value that the model lacks.
pybind11::object to_python(const ParameterValue& value);
// (minimum, maximum, default), or None when the camera states none.
pybind11::object to_python(const ValueRange& range);
// (number, name, serial number, kind of link, addresses).
pybind11::object to_python(const CameraInfo& info);

}  // namespace zel::python

#endif
