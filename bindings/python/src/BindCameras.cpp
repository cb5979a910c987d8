#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>

#include "bindings/python/src/Bindings.h"
#include "bindings/python/src/CameraHandle.h"
#include "bindings/python/src/Errors.h"
#include "bindings/python/src/FrameHandle.h"
#include "bindings/python/src/Interpreter.h"
#include "bindings/python/src/Values.h"

namespace py = pybind11;

namespace zel::python {

namespace {

using Handle = std::shared_ptr<CameraHandle>;

// An operation of the camera without the interpreter's lock.
template <class Function>
auto with_camera(const CameraHandle& handle, Function&& function) {
    const CameraPointer camera = handle.camera();
    return unlocked([&] { return function(*camera); });
}

py::object read(const CameraHandle& handle, unsigned id) {
    return to_python(with_camera(handle, [id](Camera& camera) { return camera.parameter(id).value(); }));
}

py::object try_read(const CameraHandle& handle, unsigned id) {
    const auto value = with_camera(handle, [id](Camera& camera) { return camera.parameter(id).try_value(); });
    return value ? to_python(*value) : py::none();
}

// (requested, actual, (minimum, maximum, default) or None, unit). Raises Refused when the camera did not take it.
py::tuple write(const CameraHandle& handle, unsigned id, const std::string& text) {
    const SetResult result = with_camera(handle, [&](Camera& camera) { return camera.parameter(id).try_set(text); });
    if (!result.accepted) raise_refused(result, handle.camera()->link_lost());
    return py::make_tuple(result.requested, result.actual ? to_python(*result.actual) : py::none(),
                          to_python(result.range), result.unit);
}

py::tuple write_region(const CameraHandle& handle, const std::optional<std::array<unsigned, 4>>& region,
                       const std::optional<std::array<unsigned, 2>>& binning) {
    const SetResult result = with_camera(handle, [&](Camera& camera) {
        ZelRoiBin wanted = camera.get(settings::region_and_binning);
        const unsigned width = camera.get(settings::sensor_width);
        const unsigned height = camera.get(settings::sensor_height);
        if (region) wanted = {(*region)[0], (*region)[1], (*region)[2], (*region)[3], wanted.XBin, wanted.YBin};
        if (binning) {
            wanted = {wanted.XOrigin, wanted.YOrigin, wanted.XPixels, wanted.YPixels, (*binning)[0], (*binning)[1]};
        }
        const std::string fault = region_fault(wanted, width, height);
        const Parameter parameter = camera.parameter(ZEL_PARAM_ROI_BIN);
        if (fault.empty()) return parameter.try_set(wanted);
        return SetResult{&parameter.info(), zel::text_of(wanted), parameter.value(), {}, "", false, fault};
    });
    if (!result.accepted) raise_refused(result, handle.camera()->link_lost());
    return to_python(*result.actual);
}

Trigger trigger_of(const std::string& name) {
    if (name == "software") return Trigger::software;
    if (name == "hardware") return Trigger::hardware;
    return Trigger::as_set;
}

void start(CameraHandle& handle, int frames, const std::string& trigger) {
    const CameraPointer camera = handle.camera();
    handle.begin_count();
    unlocked([&] { camera->start({frames, trigger_of(trigger)}); });
}

std::chrono::milliseconds timeout_of(const Camera& camera, const std::optional<double>& seconds) {
    if (!seconds) return camera.frame_timeout();
    if (std::isnan(*seconds)) raise("InvalidArgument", "timeout is not a number", "", "give seconds");
    constexpr double kLongest = 1e9;
    return std::chrono::milliseconds(static_cast<long long>(std::clamp(*seconds, 0.0, kLongest) * 1000.0));
}

// The next frame, or None at the end of a sequence and when the wait was interrupted while `ends` is wanted.
std::unique_ptr<FrameHandle> wait(const Handle& handle, const std::optional<double>& seconds, bool newest, bool ends) {
    const CameraPointer camera = handle->camera();
    const std::chrono::milliseconds timeout = timeout_of(*camera, seconds);
    bool signalled = false;
    // Signals are handled by the main thread, when it holds the interpreter's lock.
    const auto cancelled = [&] {
        if (is_over()) return true;
        const py::gil_scoped_acquire lock;
        signalled = PyErr_CheckSignals() != 0;
        return signalled;
    };
    FrameResult result =
        unlocked([&] { return handle->wait(camera, timeout, newest ? Order::newest : Order::every, cancelled); });
    if (signalled) throw py::error_already_set();
    if (result) return std::make_unique<FrameHandle>(result.take(), handle);
    if (handle->closed()) (void)handle->camera();  // raises
    const Reason reason = result.reason();
    if (ends && (reason == Reason::sequence_over || reason == Reason::interrupted)) return nullptr;
    raise_no_frame(handle->label(), result.no_frame());
}

void on_frame(const Handle& handle, const py::object& handler) {
    FrameHandler called;
    if (!handler.is_none()) {
        called = [function = share(handler), known = std::weak_ptr(handle)](Frame frame) {
            const Handle camera = known.lock();
            if (!camera) return;
            camera->count(frame);
            call_back("frame handler",
                      [&] { (*function)(py::cast(std::make_unique<FrameHandle>(std::move(frame), camera))); });
        };
    }
    with_camera(*handle, [&](Camera& camera) { camera.on_frame(std::move(called)); });
}

void on_event(const CameraHandle& handle, const py::object& handler) {
    CameraEventHandler called;
    if (!handler.is_none()) {
        called = [function = share(handler)](const CameraEvent& event) {
            call_back("event handler",
                      [&] { (*function)(event.kind, event.code, event.value, py::tuple(py::cast(event.values))); });
        };
    }
    with_camera(handle, [&](Camera& camera) { camera.on_event(std::move(called)); });
}

ColorSetting use_color(const CameraHandle& handle, ColorSpace space, ColorFormat format) {
    return with_camera(handle, [&](Camera& camera) { return camera.use_color({format, space}); });
}

void bind_enumerations(py::module_& module) {
    py::enum_<Reason>(module, "Reason", "Why no frame came.")
        .value("LINK_LOST", Reason::link_lost, "The camera was unplugged or switched off.")
        .value("INTERRUPTED", Reason::interrupted, "interrupt() was called.")
        .value("SEQUENCE_OVER", Reason::sequence_over, "It has taken the frames that it was started for.")
        .value("NO_BUFFERS", Reason::no_buffers, "The pool has no image buffers.")
        .value("BUFFERS_HELD", Reason::buffers_held, "The program holds every image buffer.")
        .value("WAITS_FOR_HARDWARE", Reason::waits_for_hardware, "It waits for a trigger at its input.")
        .value("NOT_STARTED", Reason::not_started, "It is not running.")
        .value("EXPOSING", Reason::exposing, "The exposure takes longer than the wait.")
        .value("WAITS_FOR_SOFTWARE", Reason::waits_for_software, "No software trigger, or it brought no frame.")
        .value("SILENT", Reason::silent, "It says that it is running and sends nothing.");
    py::enum_<CameraEvent::Kind>(module, "EventKind", "What happened to an open camera.")
        .value("LINK_LOST", CameraEvent::Kind::link_lost, "It was unplugged or switched off.")
        .value("LINK_BACK", CameraEvent::Kind::link_back, "It is there again, stopped, with its first settings.")
        .value("CAMERA", CameraEvent::Kind::camera, "An event of the camera itself.");
    py::enum_<ColorSpace>(module, "ColorSpace", "What the channels of a color picture mean.")
        .value("srgb", ColorSpace::srgb)
        .value("linear", ColorSpace::linear)
        .value("xyz", ColorSpace::xyz)
        .value("sensor", ColorSpace::sensor);
    py::enum_<ColorFormat>(module, "ColorFormat", "How the channels of a color picture are stored.")
        .value("rgb16", ColorFormat::rgb16)
        .value("rgb8", ColorFormat::rgb8)
        .value("rgba8", ColorFormat::rgba8);
}

}  // namespace

void bind_cameras(py::module_& module) {
    bind_enumerations(module);
    py::class_<CameraHandle, Handle>(module, "Camera", "An open camera.")
        .def_property_readonly("info", [](const CameraHandle& c) { return to_python(c.info()); })
        .def_property_readonly("label", &CameraHandle::label)
        .def_property_readonly("closed", &CameraHandle::closed)
        .def("close", [](CameraHandle& c) { unlocked([&] { c.close(); }); })

        .def("read", &read, py::arg("id"))
        .def("try_read", &try_read, py::arg("id"))
        .def("write", &write, py::arg("id"), py::arg("text"))
        .def("write_region", &write_region, py::arg("region") = py::none(), py::arg("binning") = py::none())
        .def(
            "range",
            [](const CameraHandle& c, unsigned id) {
                return to_python(with_camera(c, [id](Camera& camera) { return camera.parameter(id).range(); }));
            },
            py::arg("id"))
        .def(
            "unit",
            [](const CameraHandle& c, unsigned id) {
                return with_camera(c, [id](Camera& camera) { return camera.parameter(id).unit(); });
            },
            py::arg("id"))
        .def(
            "access",
            [](const CameraHandle& c, unsigned id) {
                return zel::text_of(with_camera(c, [id](Camera& camera) { return camera.parameter(id).access(); }));
            },
            py::arg("id"))
        .def(
            "command",
            [](const CameraHandle& c, const std::string& text) {
                return with_camera(c, [&](Camera& camera) { return camera.command(text); });
            },
            py::arg("text"))
        .def(
            "set_averaging",
            [](const CameraHandle& c, int frames) {
                with_camera(c, [&](Camera& camera) { camera.set_averaging(frames); });
            },
            py::arg("frames"))
        .def(
            "set_calibration",
            [](const CameraHandle& c, bool on) {
                return with_camera(c, [&](Camera& camera) { return camera.set_calibration(on); });
            },
            py::arg("on"))
        .def("use_color", &use_color, py::arg("space"), py::arg("format"))
        .def("use_grey", [](const CameraHandle& c) { with_camera(c, [](Camera& camera) { camera.use_grey(); }); })
        .def_property_readonly("is_color",
                               [](const CameraHandle& c) {
                                   return with_camera(c, [](Camera& camera) { return !camera.is_monochrome(); });
                               })

        .def("start", &start, py::arg("frames"), py::arg("trigger"))
        .def("stop", [](const CameraHandle& c) { return with_camera(c, [](Camera& camera) { return camera.stop(); }); })
        .def_property_readonly("running", [](const CameraHandle& c) { return c.camera()->running(); })
        .def("software_trigger",
             [](const CameraHandle& c) { with_camera(c, [](Camera& camera) { camera.trigger(); }); })
        .def("wait", &wait, py::arg("timeout"), py::arg("newest"), py::arg("ends"))
        .def("interrupt", [](const CameraHandle& c) { c.camera()->interrupt(); })
        .def("on_frame", &on_frame, py::arg("handler").none(true))
        .def("on_event", &on_event, py::arg("handler").none(true))

        .def_property_readonly("link_lost", [](const CameraHandle& c) { return c.camera()->link_lost(); })
        .def_property_readonly("frames_held", [](const CameraHandle& c) { return c.camera()->frames_held(); })
        .def_property_readonly("drops", [](const CameraHandle& c) {
            const Drops drops = with_camera(c, [&](Camera& camera) { return c.drops(camera); });
            return py::make_tuple(drops.link, drops.no_buffer, drops.skipped);
        });
}

}  // namespace zel::python
