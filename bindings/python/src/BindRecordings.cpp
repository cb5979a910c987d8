#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <memory>
#include <span>
#include <vector>

#include "bindings/python/src/Bindings.h"
#include "bindings/python/src/CameraHandle.h"
#include "bindings/python/src/Interpreter.h"
#include "bindings/python/src/RecordingFile.h"
#include "bindings/python/src/RecordingRun.h"
#include "platform/UserTexts.h"
#include "record/FactsText.h"
#include "record/RecordingGaps.h"

namespace py = pybind11;

namespace zel::python {

namespace {

// (usual step from number to number, [(index of the frame behind the gap, frames missing), ...])
py::tuple find_gaps(const py::array_t<std::uint32_t, py::array::c_style | py::array::forcecast>& numbers,
                    bool passes_over) {
    const std::span<const std::uint32_t> all(numbers.data(), static_cast<std::size_t>(numbers.size()));
    const record::NumberGaps found = record::FindGaps(all, passes_over);
    py::list gaps;
    for (const record::NumberGap& gap : found.gaps) gaps.append(py::make_tuple(gap.index, gap.missing));
    return py::make_tuple(found.step, gaps);
}

std::unique_ptr<RecordingRun> make_run(std::shared_ptr<CameraHandle> camera, const py::bytes& path,
                                       std::uint64_t frames, double seconds, const std::string& compression,
                                       unsigned every, std::uint64_t split_frames, double pixel_um, int averaged,
                                       double timeout, bool overwrite, bool force) {
    RecordingOptions options{
        path, {frames, 0, seconds}, compression, every, split_frames, pixel_um, averaged, timeout, overwrite, force};
    return std::make_unique<RecordingRun>(std::move(camera), std::move(options));
}

// (taken, written, waiting, bytes, lost to the disk, passed over, seconds)
py::tuple status(const RecordingRun& run) {
    const record::RecordingStatus now = run.status();
    return py::make_tuple(now.taken, now.written, now.waiting, now.bytes, now.lost_disk, now.passed_over, now.seconds);
}

// [(path, bytes, how it ended as JSON), ...]
py::list files(const RecordingRun& run) {
    py::list all;
    for (const record::RecordedFile& file : run.files()) {
        all.append(py::make_tuple(py::bytes(platform::Utf8Text(file.path)), file.bytes, record::ToText(file.end)));
    }
    return all;
}

}  // namespace

void bind_recordings(py::module_& module) {
    using record::FrameFacts;
    PYBIND11_NUMPY_DTYPE(FrameFacts, number, exposure_us, gain, arrival_ms, host_ns);
    py::class_<RecordingFile>(module, "RecordingFile", "One file of a recording.")
        .def(py::init<std::string>(), py::arg("path"))
        .def_property_readonly("frames", &RecordingFile::frames)
        .def_property_readonly("is_recording", &RecordingFile::is_recording)
        .def_property_readonly("facts", &RecordingFile::facts)
        .def_property_readonly("end", &RecordingFile::end)
        .def_property_readonly("cut_off", &RecordingFile::cut_off)
        .def("metadata", &RecordingFile::metadata)
        .def("read", &RecordingFile::read, py::arg("index"), py::arg("into").noconvert())
        .def("close", &RecordingFile::close);
    module.def("find_gaps", &find_gaps, py::arg("numbers"), py::arg("passes_over"));
    py::class_<RecordingRun>(module, "RecordingRun", "A camera's frames on their way into files.")
        .def(py::init(&make_run), py::arg("camera"), py::arg("path"), py::kw_only(), py::arg("frames"),
             py::arg("seconds"), py::arg("compression"), py::arg("every"), py::arg("split_frames"), py::arg("pixel_um"),
             py::arg("averaged"), py::arg("timeout"), py::arg("overwrite"), py::arg("force"))
        .def("begin", &RecordingRun::begin)
        .def(
            "wait",
            [](RecordingRun& run, double seconds) {
                return run.wait(std::chrono::milliseconds(static_cast<long long>(seconds * 1000.0)));
            },
            py::arg("seconds"))
        .def("end", &RecordingRun::end, py::arg("reason"))
        .def("finish", [](RecordingRun& run) { unlocked([&] { run.finish(); }); })
        .def("status", &status)
        .def("files", &files)
        .def("check", &RecordingRun::check);
}

}  // namespace zel::python
