#include <pybind11/stl.h>

#include "bindings/python/src/Bindings.h"
#include "bindings/python/src/Errors.h"
#include "bindings/python/src/FrameHandle.h"

namespace py = pybind11;

namespace zel::python {

namespace {

const char* name_of(ColorFormat format) {
    return format == ColorFormat::rgb16 ? "rgb16" : format == ColorFormat::rgb8 ? "rgb8" : "rgba8";
}

const char* name_of(ColorSpace space) {
    switch (space) {
        case ColorSpace::srgb:
            return "srgb";
        case ColorSpace::linear:
            return "linear";
        case ColorSpace::xyz:
            return "xyz";
        case ColorSpace::sensor:
            break;
    }
    return "sensor";
}

py::tuple shape_of(const FrameHandle& frame) {
    if (frame.has_color()) return py::make_tuple(frame.info().height, frame.info().width, 3);
    return py::make_tuple(frame.info().height, frame.info().width);
}

py::dtype type_of(const FrameHandle& frame) {
    const auto& color = frame.info().color;
    return color && color->bytes_per_channel() == 1 ? py::dtype::of<std::uint8_t>() : py::dtype::of<std::uint16_t>();
}

// What NumPy calls: __array__(dtype) and, from its version 2 on, __array__(dtype, copy=...).
py::object as_array(const FrameHandle& frame, const py::object& type, const py::object& copy) {
    py::array picture = frame.picture();
    const bool same = type.is_none() || py::dtype::from_args(type).equal(picture.dtype());
    if (!copy.is_none() && !py::cast<bool>(copy) && !same) {
        raise("InvalidArgument", "the samples can't be had as another type without a copy", "", "leave out copy=False");
    }
    if (!same) return picture.attr("astype")(type);
    if (!copy.is_none() && py::cast<bool>(copy)) return picture.attr("copy")();
    return picture;
}

py::object type_named(const char* name) { return py::module_::import("zel._types").attr(name); }

py::object arrival_utc(const FrameHandle& frame) {
    const py::module_ datetime = py::module_::import("datetime");
    const py::object utc = datetime.attr("timezone").attr("utc");
    return datetime.attr("datetime").attr("fromtimestamp")(frame.arrival_unix(), utc);
}

void save(const FrameHandle& frame, const py::object& path) {
    const py::bytes name = py::module_::import("os").attr("fsencode")(path);
    frame.save(name);
}

std::string text_of(const FrameHandle& frame) {
    const FrameInfo& info = frame.info();
    return "<zel.Frame " + std::to_string(info.number) + ": " + std::to_string(info.width) + "x" +
           std::to_string(info.height) + ", " +
           (info.color ? std::string(name_of(info.color->space)) + " " + name_of(info.color->format)
                       : std::to_string(info.bits) + " bits") +
           (frame.released() ? ", released" : "") + ">";
}

}  // namespace

void bind_frames(py::module_& module) {
    py::class_<ColorSetting>(module, "ColorSetting", "How a color picture was made.")
        .def_property_readonly(
            "space", [](const ColorSetting& s) { return name_of(s.space); },
            "What the channels mean: \"srgb\", \"linear\", \"xyz\" or \"sensor\".")
        .def_property_readonly(
            "format", [](const ColorSetting& s) { return name_of(s.format); },
            "How they are stored: \"rgb16\", \"rgb8\" or \"rgba8\".")
        .def_readonly("bits", &ColorSetting::bits, "Significant bits of a sample of the mosaic.")
        .def_readonly("black_level", &ColorSetting::black_level, "Counts taken off before anything else.")
        .def_property_readonly("output_bits", &ColorSetting::output_bits, "Bits of a channel that its values fill.")
        .def("__repr__", [](const ColorSetting& s) {
            return std::string("ColorSetting(space='") + name_of(s.space) + "', format='" + name_of(s.format) + "')";
        });

    const char* const frame_doc =
        "One frame, on loan from its camera's pool.\n\n"
        "numpy.asarray(frame) shows its samples without a copy: (height, width) of uint16 for grey frames, (height,\n"
        "width, 3) in the order red, green, blue for color pictures (uint16 or uint8). The record goes back to the\n"
        "pool when the frame and all arrays that show it are gone; until then its samples do not change, also when\n"
        "the camera is stopped or closed. A pool has few records: copy what you keep.";
    py::class_<FrameHandle>(module, "Frame", frame_doc)
        .def_property_readonly(
            "width", [](const FrameHandle& f) { return f.info().width; }, "Pixels of a row.")
        .def_property_readonly(
            "height", [](const FrameHandle& f) { return f.info().height; }, "Rows.")
        .def_property_readonly(
            "bits", [](const FrameHandle& f) { return f.info().bits; },
            "Significant bits of a grey sample; the largest value is 2**bits - 1.")
        .def_property_readonly(
            "number", [](const FrameHandle& f) { return f.info().number; },
            "Number of the frame since the start; a hole is a lost frame.")
        .def_property_readonly(
            "exposure", [](const FrameHandle& f) { return static_cast<double>(f.info().exposure.count()) / 1e6; },
            "Exposure time in force when it was taken, in seconds.")
        .def_property_readonly(
            "roi",
            [](const FrameHandle& f) {
                const Region& r = f.info().region;
                return type_named("Region")(r.x, r.y, r.width, r.height);
            },
            "Region(x, y, width, height) of the sensor that it shows, in sensor pixels.")
        .def_property_readonly(
            "binning",
            [](const FrameHandle& f) { return type_named("Binning")(f.info().binning.x, f.info().binning.y); },
            "Binning(x, y): sensor pixels that became one, along a row and along a column.")
        .def_property_readonly(
            "color", [](const FrameHandle& f) { return f.info().color; },
            "How its color picture was made; None without one.")
        .def_property_readonly("arrival", &FrameHandle::arrival,
                               "When the complete frame arrived: seconds of the clock time.monotonic(), to 1 ms.")
        .def_property_readonly("arrival_utc", &arrival_utc,
                               "The same as a datetime in UTC, by the system's clock when the frame was handed over.")
        .def_property_readonly("hand_over", &FrameHandle::hand_over,
                               "Seconds from the camera's notification to the moment the frame was in hand.")
        .def_property_readonly("shape", &shape_of, "(height, width), or (height, width, 3) with a color picture.")
        .def_property_readonly("dtype", &type_of, "Type of a sample: uint16, or uint8 in color pictures of 8 bits.")
        .def_property_readonly(
            "nbytes",
            [](const FrameHandle& f) {
                return std::size_t{f.info().width} * f.info().height * (f.has_color() ? 3 : 1) *
                       static_cast<std::size_t>(type_of(f).itemsize());
            },
            "Bytes of the samples.")
        .def("__array__", &as_array, py::arg("dtype") = py::none(), py::arg("copy") = py::none(),
             "The samples as an array that shows this frame's memory.")
        .def_property_readonly("mosaic", &FrameHandle::mosaic,
                               "The samples of the sensor, (height, width) of uint16, of color frames too; no copy.")
        .def_property_readonly("bgr", &FrameHandle::bgr,
                               "The color picture as it lies in memory: (height, width, 3) in the order blue, green, "
                               "red, or (height, width, 4) in \"rgba8\"; no copy.")
        .def("copy", &FrameHandle::copy, "A frame of its own memory with the same samples and facts.")
        .def("save", &save, py::arg("path"),
             "Saves it, replacing an existing file. The ending chooses the format: .tif, .tiff the grey samples, 16 "
             "bits, "
             "raw counts; .png the color picture, or the grey samples. Raises OutputError, also for a full disk.")
        .def(
            "_repr_png_", [](const py::object& self) { return py::module_::import("zel._png").attr("preview")(self); },
            "For notebooks: a small picture, its contrast stretched.")
        .def("release", &FrameHandle::release,
             "Lets go of the record before this object dies. Arrays that show it keep it.")
        .def_property_readonly("released", &FrameHandle::released, "Whether release() was called.")
        .def("__enter__", [](const py::object& self) { return self; })
        .def("__exit__", [](FrameHandle& f, const py::args&) { f.release(); })
        .def("__len__", [](const FrameHandle& f) { return f.info().height; })
        .def(
            "__getitem__",
            [](const FrameHandle& f, const py::object& key) { return f.picture().attr("__getitem__")(key); },
            py::arg("key"), "Part of the samples, as of an array; it shows this frame's memory.")
        .def("__repr__", &text_of);
}

}  // namespace zel::python
