#include "bindings/python/src/Values.h"

#include "zel/detail/Texts.h"

namespace py = pybind11;

namespace zel::python {

namespace {

// A camera's texts may hold any bytes.
py::object text_from(const std::string& text) {
    return py::reinterpret_steal<py::object>(
        PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace"));
}

}  // namespace

py::object to_python(const ParameterValue& value) {
    switch (value.kind()) {
        case ValueKind::text:
            return text_from(detail::trimmed(value.text()));
        case ValueKind::region: {
            const ZelRoiBin r = value.region();
            return py::make_tuple(r.XOrigin, r.YOrigin, r.XPixels, r.YPixels, r.XBin, r.YBin);
        }
        case ValueKind::matrix: {
            const Matrix elements = value.matrix();
            py::tuple numbers(elements.size());
            for (std::size_t i = 0; i < elements.size(); ++i) numbers[i] = elements[i];
            return numbers;
        }
        case ValueKind::wide:
            if (value.is_none()) return py::none();
            return py::int_(static_cast<unsigned long long>(value.integer()));
        default:
            return py::int_(value.integer());
    }
}

py::object to_python(const ValueRange& range) {
    if (!range.known) return py::none();
    return py::make_tuple(range.minimum, range.maximum, range.standard);
}

py::object to_python(const CameraInfo& info) {
    py::tuple addresses(info.addresses.size());
    for (std::size_t i = 0; i < info.addresses.size(); ++i) addresses[i] = text_from(info.addresses[i]);
    return py::make_tuple(info.number, text_from(info.name), text_from(info.serial), text_from(info.interface_type),
                          addresses);
}

}  // namespace zel::python
