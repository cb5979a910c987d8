#include "bindings/python/src/RecordingFile.h"

#include <algorithm>
#include <filesystem>
#include <span>
#include <utility>
#include <vector>

#include "bindings/python/src/Errors.h"
#include "bindings/python/src/Interpreter.h"
#include "record/FactsText.h"

namespace zel::python {

namespace py = pybind11;
using record::FrameFacts;
using record::RecordError;
using record::RecordingReader;

RecordingFile::RecordingFile(std::string path) : m_Path(std::move(path)) {
    const Unlocked section;
    try {
        m_Reader = std::make_unique<RecordingReader>(std::filesystem::path(m_Path));
    } catch (const RecordError& error) {
        throw Error(ErrorKind::failed, "'" + m_Path + "' can't be read", error.what(),
                    "give a recording or a stack of grey TIFF pictures");
    }
}

template <class Function>
auto RecordingFile::with_reader(Function&& function) const {
    {
        const Unlocked section;
        const std::lock_guard lock(m_Mutex);
        if (m_Reader) return function(*m_Reader);
    }
    raise("Closed", "the recording '" + m_Path + "' is closed", "", "open it again");
}

std::size_t RecordingFile::frames() const {
    return with_reader([](const RecordingReader& reader) { return reader.Frames(); });
}

bool RecordingFile::is_recording() const {
    return with_reader([](const RecordingReader& reader) { return reader.IsRecording(); });
}

std::string RecordingFile::facts() const {
    return with_reader([](const RecordingReader& reader) { return record::ToText(reader.Facts()); });
}

std::string RecordingFile::end() const {
    return with_reader(
        [](const RecordingReader& reader) { return reader.End() ? record::ToText(*reader.End()) : std::string(); });
}

std::string RecordingFile::cut_off() const {
    return with_reader([](const RecordingReader& reader) { return reader.CutOff(); });
}

py::array RecordingFile::metadata() const {
    const auto frames = with_reader([](const RecordingReader& reader) {
        std::vector<FrameFacts> all(reader.Frames());
        for (std::size_t i = 0; i < all.size(); ++i) all[i] = reader.Frame(i);
        return all;
    });
    return py::array_t<FrameFacts>(static_cast<py::ssize_t>(frames.size()), frames.data());
}

void RecordingFile::read(std::size_t index, py::array_t<std::uint16_t>& into) {
    const bool plain = (into.flags() & py::array::c_style) != 0;
    if (!plain) raise("InvalidArgument", "the array for a frame has gaps", "", "give one whose samples lie together");
    const std::span<std::uint16_t> samples(into.mutable_data(), static_cast<std::size_t>(into.size()));
    with_reader([&](RecordingReader& reader) {
        const std::size_t needed = std::size_t{reader.Facts().width} * reader.Facts().height;
        if (samples.size() != needed) throw Error(ErrorKind::invalid_argument, "the array has another size");
        try {
            reader.Read(index, samples);
        } catch (const RecordError& error) {
            throw Error(ErrorKind::failed, "frame " + std::to_string(index) + " of '" + m_Path + "' can't be read",
                        error.what(), "");
        }
        return true;
    });
}

void RecordingFile::close() {
    const Unlocked section;
    const std::lock_guard lock(m_Mutex);
    m_Reader.reset();
}

}  // namespace zel::python
