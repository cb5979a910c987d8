// The errors of the package (zel/_errors.py), raised from C++.
#ifndef BINDINGS_PYTHON_ERRORS_H
#define BINDINGS_PYTHON_ERRORS_H

#include <pybind11/pybind11.h>

#include <string>

#include "zel/Error.h"
#include "zel/NoFrame.h"
#include "zel/Parameter.h"

namespace zel::python {

// Raises the class of this name; empty parts are left out of its text.
[[noreturn]] void raise(const char* class_name, const std::string& problem, const std::string& why,
                        const std::string& hint);
// Raises Refused or LinkLost with what was requested and what the camera has now.
[[noreturn]] void raise_refused(const SetResult& result, bool link_lost);
// Raises LinkLost or TimeoutWithReason.
[[noreturn]] void raise_no_frame(const std::string& label, const NoFrame& why);

// zel::Error becomes the class of its kind everywhere.
void register_errors();

}  // namespace zel::python

#endif
