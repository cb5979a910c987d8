// A frame as Python holds it: its record stays until the last array that shows it is gone.
#ifndef BINDINGS_PYTHON_FRAMEHANDLE_H
#define BINDINGS_PYTHON_FRAMEHANDLE_H

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <string>

#include "bindings/python/src/CameraHandle.h"
#include "zel/Frame.h"

namespace zel::python {

class FrameHandle {
  public:
    // With the interpreter's lock. camera: null for a frame of its own memory.
    FrameHandle(Frame frame, std::shared_ptr<CameraHandle> camera);

    // Width, height, number and so on; they stay when the frame is released.
    const FrameInfo& info() const { return m_Info; }
    // When the complete frame arrived, in seconds: of the steady clock, which is time.monotonic(), and since 1970.
    double arrival() const { return m_Arrival; }
    double arrival_unix() const { return m_ArrivalUnix; }
    double hand_over() const { return m_HandOver; }

    bool has_color() const { return m_Info.color.has_value(); }
    // (h, w) samples.
    pybind11::array mosaic() const;
    // (h, w, 3) or (h, w, 4): blue, green, red as they lie in memory, or red, green, blue seen through a negative step.
    pybind11::array bgr() const;
    pybind11::array rgb() const;
    pybind11::array picture() const { return has_color() ? rgb() : mosaic(); }

    // A frame of its own memory with the same facts.
    std::unique_ptr<FrameHandle> copy() const;
    // The name is in the system's encoding of file names.
    void save(const std::string& file_name) const;
    void release() { m_Loan.reset(); }
    bool released() const { return !m_Loan; }

  private:
    struct Loan;
    FrameHandle(const FrameHandle&) = default;

    // Both throw Closed when it was released.
    const std::shared_ptr<Loan>& loan() const;
    const Frame& frame() const;
    pybind11::object keeper() const;
    pybind11::array color_array(bool reversed) const;

    std::shared_ptr<Loan> m_Loan;
    FrameInfo m_Info;
    double m_Arrival = 0;
    double m_ArrivalUnix = 0;
    double m_HandOver = 0;
};

}  // namespace zel::python

#endif
