// The compiled part of the package `zel`: the C++ layer in Python's terms. What is comfortable is written in Python.
#include <pybind11/pybind11.h>

#include "bindings/python/src/Bindings.h"
#include "bindings/python/src/CameraHandle.h"
#include "bindings/python/src/Errors.h"
#include "bindings/python/src/Interpreter.h"
#include "bindings/python/src/RecordingRun.h"

PYBIND11_MODULE(_core, module) {
    using namespace zel::python;
    module.doc() = "The C++ layer of the ZEL Camera SDK; import zel instead.";
    module.attr("__version__") = ZEL_VERSION;
    register_errors();
    bind_frames(module);
    bind_parameters(module);
    bind_cameras(module);
    bind_sdk(module);
    bind_recordings(module);
    module.def("_after_fork", &after_fork, "In the child of a fork.");
    module.def(
        "_leave",
        [] {
            leave_interpreter([] {
                RecordingRun::finish_all();
                CameraHandle::close_all();
            });
        },
        "Completes every recording, closes every camera and waits for the operations of other threads.");
}
