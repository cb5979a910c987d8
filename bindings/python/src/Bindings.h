// What the module is made of.
#ifndef BINDINGS_PYTHON_BINDINGS_H
#define BINDINGS_PYTHON_BINDINGS_H

#include <pybind11/pybind11.h>

namespace zel::python {

void bind_frames(pybind11::module_& module);
void bind_parameters(pybind11::module_& module);
void bind_cameras(pybind11::module_& module);
void bind_sdk(pybind11::module_& module);
void bind_recordings(pybind11::module_& module);

}  // namespace zel::python

#endif
