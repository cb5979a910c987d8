#include <memory>
#include <string>

#include "bindings/python/src/Bindings.h"
#include "bindings/python/src/CameraHandle.h"
#include "bindings/python/src/Errors.h"
#include "bindings/python/src/Interpreter.h"
#include "bindings/python/src/Values.h"
#include "zel/Plugins.h"
#include "zel/Sdk.h"

namespace py = pybind11;

namespace zel::python {

namespace {

using SdkPointer = std::shared_ptr<Sdk>;

// The SDK as Python holds it.
class SdkHandle {
  public:
    SdkHandle() {
        require_sdk();
        note_use();
        // Wherever it is let go of, its handler may be waiting for the interpreter's lock.
        m_Sdk =
            SdkPointer(unlocked([] { return new Sdk; }), [](Sdk* last) { surely_unlocked([last] { delete last; }); });
    }
    ~SdkHandle() {
        // On purpose: in a forked process it is left where it is. Its threads did not come along.
        if (is_forked()) new SdkPointer(std::move(m_Sdk));
    }
    SdkHandle(const SdkHandle&) = delete;
    SdkHandle& operator=(const SdkHandle&) = delete;

    SdkPointer sdk() const {
        require_sdk();
        if (!m_Sdk) raise("Closed", "the SDK object is closed", "", "make a new one");
        return m_Sdk;
    }
    bool closed() const { return !m_Sdk; }
    void close() {
        if (!is_forked()) m_Sdk.reset();
    }

  private:
    SdkPointer m_Sdk;
};

py::list cameras(const SdkHandle& handle) {
    const SdkPointer sdk = handle.sdk();
    py::list found;
    for (const CameraInfo& info : unlocked([&] { return sdk->cameras(); })) found.append(to_python(info));
    return found;
}

std::shared_ptr<CameraHandle> open(const SdkHandle& handle, const std::string& wanted, bool calibrated) {
    const SdkPointer sdk = handle.sdk();
    return unlocked([&] { return CameraHandle::make(sdk->open(wanted, {calibrated})); });
}

void on_hot_plug(const SdkHandle& handle, const py::object& handler) {
    const SdkPointer sdk = handle.sdk();
    HotPlugHandler called;
    if (!handler.is_none()) {
        called = [function = share(handler)](const HotPlugEvent& event) {
            call_back("hot-plug handler", [&] { (*function)(event.connected, to_python(event.camera)); });
        };
    }
    unlocked([&] { sdk->on_hot_plug(std::move(called)); });
}

}  // namespace

void bind_sdk(py::module_& module) {
    py::class_<SdkHandle>(module, "Sdk", "The opened SDK.")
        .def(py::init<>())
        .def("cameras", &cameras)
        .def("open", &open, py::arg("wanted"), py::arg("calibrated"))
        .def("on_hot_plug", &on_hot_plug, py::arg("handler").none(true))
        .def_property_readonly("version",
                               [](const SdkHandle& handle) {
                                   const SdkPointer sdk = handle.sdk();
                                   return unlocked([&] { return sdk->version(); });
                               })
        .def_property_readonly("closed", &SdkHandle::closed)
        .def("close", &SdkHandle::close);
    module.def(
        "use_plugins",
        [](const std::string& folder) {
            require_sdk();
            return unlocked([&] { return zel::use_plugins(folder); });
        },
        py::arg("folder"));
}

}  // namespace zel::python
