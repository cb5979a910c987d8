#include "bindings/python/src/Errors.h"

#include "bindings/python/src/Interpreter.h"
#include "bindings/python/src/Values.h"

namespace py = pybind11;

namespace zel::python {

namespace {

const char* class_of(ErrorKind kind) {
    switch (kind) {
        case ErrorKind::invalid_argument:
            return "InvalidArgument";
        case ErrorKind::no_camera:
            return "NoCamera";
        case ErrorKind::refused:
            return "Refused";
        case ErrorKind::timeout:
            return "TimeoutWithReason";
        case ErrorKind::link_lost:
            return "LinkLost";
        case ErrorKind::output:
            return "OutputError";
        case ErrorKind::failed:
            break;
    }
    return "Error";
}

py::object class_named(const char* name) { return py::module_::import("zel._errors").attr(name); }

// Names of files and cameras may hold any bytes.
py::str text_of(const std::string& text) {
    return py::reinterpret_steal<py::str>(
        PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape"));
}

// Made by the package's code. At the end of the interpreter, when none of that may run any more, class and text are
// all: Python makes the object when a program looks at it. A thread that is still waiting then ends without a word:
// Python would print an error, and aborts the process when a thread is about to while the interpreter closes its
// streams.
py::object make_error(const char* name, const std::string& problem, const std::string& why, const std::string& hint) {
    if (is_left_behind()) {
        PyErr_SetNone(PyExc_SystemExit);
        throw py::error_already_set();
    }
    if (is_over() && !is_forked()) {
        PyErr_SetString(class_named(name).ptr(), Error(ErrorKind::failed, problem, why, hint).what());
        throw py::error_already_set();
    }
    return class_named(name)(text_of(problem), text_of(why), text_of(hint));
}

[[noreturn]] void raise_object(const py::object& error) {
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
    throw py::error_already_set();
}

}  // namespace

void raise(const char* class_name, const std::string& problem, const std::string& why, const std::string& hint) {
    const Busy until_raised;
    raise_object(make_error(class_name, problem, why, hint));
}

void raise_refused(const SetResult& result, bool link_lost) {
    const Busy until_raised;
    const py::object error = make_error(link_lost ? "LinkLost" : "Refused", result.text(), result.reason, "");
    error.attr("parameter") = result.info->name;
    error.attr("requested") = text_of(result.requested);
    if (result.actual) error.attr("actual") = to_python(*result.actual);
    error.attr("unit") = result.unit;
    if (result.range.known) error.attr("range") = py::make_tuple(result.range.minimum, result.range.maximum);
    raise_object(error);
}

void raise_no_frame(const std::string& label, const NoFrame& why) {
    const Reason reason = why.reason();
    const bool over = reason == Reason::sequence_over;
    const bool waited = !over && reason != Reason::not_started && reason != Reason::link_lost;
    const Busy until_raised;
    const py::object error =
        make_error(reason == Reason::link_lost ? "LinkLost" : "TimeoutWithReason",
                   std::string("no ") + (over ? "further " : "") + "frame from " + label +
                       (waited ? " within " + std::to_string(why.state().waited.count()) + " ms" : ""),
                   why.why(), why.hint());
    error.attr("reason") = py::cast(reason);
    raise_object(error);
}

void register_errors() {
    py::register_exception_translator([](std::exception_ptr thrown) {
        try {
            if (thrown) std::rethrow_exception(thrown);
        } catch (const Error& error) {
            try {
                raise(class_of(error.kind()), error.problem(), error.why(), error.hint());
            } catch (py::error_already_set& set) {
                set.restore();
            }
        }
    });
}

}  // namespace zel::python
