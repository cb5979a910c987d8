#include "bindings/python/src/FrameHandle.h"

#include <chrono>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "bindings/python/src/Errors.h"
#include "bindings/python/src/Interpreter.h"
#include "zel/SaveImage.h"
#include "zel/Sdk.h"

namespace py = pybind11;

namespace zel::python {

namespace {

using Seconds = std::chrono::duration<double>;

// The memory of a copy, and who it goes back to.
class CopiedRecord final : public detail::FrameOwner {
  public:
    explicit CopiedRecord(const Frame& frame) : m_Copy(frame.copy()) {
        const ZelColorImage* const from = frame.native();
        std::memcpy(static_cast<void*>(m_Record.data()), static_cast<const void*>(from), m_Record.size());
        record()->pixels = m_Copy.pixels.data();
        record()->color_pixels = m_Copy.color.empty() ? nullptr : m_Copy.color.data();
        record()->color_size_in_bytes = static_cast<unsigned>(m_Copy.color.size());
        record()->buffer_size = static_cast<unsigned>(m_Copy.pixels.size() * sizeof(std::uint16_t));
    }
    // Records are plain memory.
    ZelColorImage* record() { return reinterpret_cast<ZelColorImage*>(m_Record.data()); }
    void give_back(ZelColorImage* /*image*/, bool /*color*/) noexcept override {}

  private:
    FrameCopy m_Copy;
    alignas(ZelColorImage) std::array<std::byte, sizeof(ZelColorImage)> m_Record{};
};

}  // namespace

// What frame and arrays share.
struct FrameHandle::Loan {
    Loan(Frame loaned, std::shared_ptr<CameraHandle> from) : frame(std::move(loaned)), camera(std::move(from)) {}
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;
    ~Loan() {
        // On purpose: in a forked process the record is left where it is, as its camera.
        if (is_forked()) {
            new Frame(std::move(frame));
        } else if (camera && camera->closed()) {
            // The last frame closes the camera.
            surely_unlocked([this] { frame.reset(); });
        }
    }

    Frame frame;
    std::shared_ptr<CameraHandle> camera;
};

FrameHandle::FrameHandle(Frame frame, std::shared_ptr<CameraHandle> camera) : m_Info(frame.info()) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const auto now_ms = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
    // The record has the lowest 32 bits of the milliseconds.
    const auto age_ms = static_cast<std::uint32_t>(now_ms) - m_Info.arrival_ms;
    m_Arrival = static_cast<double>(now_ms - static_cast<std::int64_t>(age_ms)) / 1000.0;
    m_ArrivalUnix =
        Seconds(std::chrono::system_clock::now().time_since_epoch()).count() - (Seconds(now).count() - m_Arrival);
    m_HandOver = Seconds(frame.hand_over()).count();
    m_Loan = std::make_shared<Loan>(std::move(frame), std::move(camera));
}

const std::shared_ptr<FrameHandle::Loan>& FrameHandle::loan() const {
    if (!m_Loan) {
        raise("Closed", "frame " + std::to_string(m_Info.number) + " was released", "",
              "keep it, or take a copy() before");
    }
    return m_Loan;
}

const Frame& FrameHandle::frame() const { return loan()->frame; }

py::object FrameHandle::keeper() const {
    return py::capsule(new std::shared_ptr<Loan>(m_Loan),
                       [](void* loan) { delete static_cast<std::shared_ptr<Loan>*>(loan); });
}

py::array FrameHandle::mosaic() const {
    const std::uint16_t* const samples = frame().native()->pixels;
    return py::array_t<std::uint16_t>({m_Info.height, m_Info.width}, samples, keeper());
}

py::array FrameHandle::bgr() const { return color_array(false); }
py::array FrameHandle::rgb() const { return color_array(true); }

py::array FrameHandle::color_array(bool reversed) const {
    const Frame& shown = frame();
    if (!m_Info.color) {
        raise("InvalidArgument", "frame " + std::to_string(m_Info.number) + " has no color picture", "",
              "call camera.use_color() before the start");
    }
    const std::span<const std::byte> bytes = shown.color_bytes();
    if (bytes.empty())
        raise("Error", "frame " + std::to_string(m_Info.number) + " came without its color picture", "", "");
    const auto size = static_cast<py::ssize_t>(m_Info.color->bytes_per_channel());
    const auto channels = static_cast<py::ssize_t>(m_Info.color->channels());
    const auto height = static_cast<py::ssize_t>(m_Info.height);
    const auto width = static_cast<py::ssize_t>(m_Info.width);
    const py::dtype type = size == 2 ? py::dtype::of<std::uint16_t>() : py::dtype::of<std::uint8_t>();
    const std::byte* first = bytes.data();
    // blue green red (255): seen from red backwards. The fourth channel has no place in that.
    if (reversed) first += 2 * size;
    return py::array(type, {height, width, reversed ? py::ssize_t{3} : channels},
                     {width * channels * size, channels * size, reversed ? -size : size}, first, keeper());
}

std::unique_ptr<FrameHandle> FrameHandle::copy() const {
    const std::shared_ptr<Loan> loan = this->loan();
    Frame copied = unlocked([&] {
        auto owner = std::make_shared<CopiedRecord>(loan->frame);
        ZelColorImage* const record = owner->record();
        return Frame(std::move(owner), record, loan->frame.color(), loan->frame.hand_over());
    });
    std::unique_ptr<FrameHandle> handle(new FrameHandle(*this));
    handle->m_Loan = std::make_shared<Loan>(std::move(copied), nullptr);
    return handle;
}

void FrameHandle::save(const std::string& file_name) const {
    const std::shared_ptr<Loan> loan = this->loan();
    require_sdk();
    unlocked([&] {
        // A copy does not keep the SDK open, whose writers are used.
        const std::optional<Sdk> sdk = loan->camera ? std::nullopt : std::optional<Sdk>(std::in_place);
        zel::save(loan->frame, file_name);
    });
}

}  // namespace zel::python
