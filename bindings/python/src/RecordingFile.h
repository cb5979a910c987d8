// One file of a recording as Python reads it: by any number of threads, one after the other.
#ifndef BINDINGS_PYTHON_RECORDINGFILE_H
#define BINDINGS_PYTHON_RECORDINGFILE_H

#include <pybind11/numpy.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "record/RecordingReader.h"

namespace zel::python {

class RecordingFile {
  public:
    // Looks at all its frames. path: in the system's bytes. Throws Error.
    explicit RecordingFile(std::string path);

    // These throw Closed.
    std::size_t frames() const;
    bool is_recording() const;
    // As the file has them, JSON; end: empty when it was cut off.
    std::string facts() const;
    std::string end() const;
    std::string cut_off() const;
    // An array of FrameFacts.
    pybind11::array metadata() const;
    // Reads a frame without the interpreter's lock, into an array of the picture's size. Throws Error.
    void read(std::size_t index, pybind11::array_t<std::uint16_t>& into);
    // Waits for a thread that reads.
    void close();

  private:
    // Runs a function on the reader, without the interpreter's lock.
    template <class Function>
    auto with_reader(Function&& function) const;

    const std::string m_Path;
    mutable std::mutex m_Mutex;
    std::unique_ptr<record::RecordingReader> m_Reader;  // null: closed
};

}  // namespace zel::python

#endif
