#include "image/ColorRenderer.h"

#include <cstring>
#include <exception>

#include "image/FrameSamples.h"
#include "kernels/CpuSupport.h"
#include "kernels/Kernels.h"
#include "platform/Clock.h"

namespace zel {

using kernels::ColorFormat;
using kernels::KernelTable;
using kernels::PlanarRow;

namespace {
constexpr unsigned kSampleLimit14Bits = 0x3FFF;

// Where a row's three planes begin.
PlanarRow PlanesAt(const PlaneSet& planes, std::size_t first, std::size_t w) {
    return {{planes.planes[0] + first, planes.planes[1] + first, planes.planes[2] + first}, w};
}

// The rows of a color filter mosaic, top to bottom.
class Mosaic {
  public:
    Mosaic(const KernelTable& kernel, std::span<const std::uint16_t> frame, unsigned w, unsigned h, int phase)
        : m_Kernel(kernel), m_Frame(frame), m_W(w), m_H(h), m_Phase(phase) {
        m_Small[1] = Small(0);
    }

    // Row y with its neighbours. Rows are asked for in order.
    kernels::MosaicRow Row(std::size_t y) {
        m_Small[2] = Small(y + 1);
        const bool small = m_Small[0] && m_Small[1] && m_Small[2];
        m_Small[0] = m_Small[1];
        m_Small[1] = m_Small[2];
        return {y > 0 ? At(y - 1) : nullptr,
                At(y),
                y + 1 < m_H ? At(y + 1) : nullptr,
                m_W,
                kernels::PhaseAt(m_Phase, 0, static_cast<unsigned>(y)),
                small};
    }

  private:
    const std::uint16_t* At(std::size_t y) const { return m_Frame.data() + y * m_W; }
    bool Small(std::size_t y) const {
        return y >= m_H || m_Kernel.all_bits(m_Frame.subspan(y * m_W, m_W)) <= kSampleLimit14Bits;
    }

    const KernelTable& m_Kernel;
    std::span<const std::uint16_t> m_Frame;
    std::size_t m_W, m_H;
    int m_Phase;
    bool m_Small[3] = {true, true, true};  // of the rows above, here and below
};

// Time that a step takes over all the rows of a frame, when somebody will read it.
class StepTime {
  public:
    StepTime(Logger& logger, const char* label) : m_Logger(logger), m_Label(label) {}
    template <class Step>
    void Run(Step&& step) {
        if (!m_Logger.Enabled()) return step();
        std::int64_t start = 0, end = 0;
        platform::PerformanceCounter(start);
        step();
        platform::PerformanceCounter(end);
        m_Ticks += end - start;
    }
    void Report(const char* function) {
        std::int64_t frequency = 0;
        if (!m_Logger.Enabled() || !platform::PerformanceFrequency(frequency)) return;
        ZEL_LOG(m_Logger, kLogTrace, function, "%s takes %f microseconds.", m_Label,
                static_cast<double>(m_Ticks) * 1e6 / static_cast<double>(frequency));
    }

  private:
    Logger& m_Logger;
    const char* m_Label;
    std::int64_t m_Ticks = 0;
};

// A table that can't be applied is left out; none is passed through.
bool CanApply(const std::shared_ptr<const ColorTable>& table) { return !table || table->Usable(); }
kernels::ChannelMaps MapsOf(const std::shared_ptr<const ColorTable>& table) {
    return table && table->Usable() ? table->Maps() : kernels::ChannelMaps{};
}

void Apply(const KernelTable& kernel, const kernels::ChannelMaps& maps, const PlanarRow& row) {
    for (unsigned k = 0; k < 3; ++k) kernel.map_samples({row.channel[k], row.w}, maps[k]);
}

const KernelTable& KernelsFor(ColorPipeline::Kind pipeline) {
    const KernelTable* const plain = kernels::FindKernels(kernels::Variant::kScalar);
    return pipeline == ColorPipeline::Kind::kMain && kernels::CpuHasFma() ? kernels::Kernels() : *plain;
}
}  // namespace

ColorFrame::ColorFrame(ZelImageInternal* record, unsigned bits, int filter_phase)
    : image(record),
      w(record->w),
      h(record->h),
      num_pixels(record->num_pixels),
      size_in_bytes(record->size_in_bytes),
      bit_depth(bits),
      phase(filter_phase),
      samples(Samples(*record, Area(record->w, record->h))),
      out(static_cast<std::uint8_t*>(record->color_pixels)) {}

// The buffer is as large as any format of what `pixels` can hold needs, so that no format and no region asks the system
// for another one.
bool ColorRenderer::ReservePicture(ZelImageInternal* image) {
    constexpr const char* kFunction = "ZelCameraControlImpl::PostProcessColorImage";
    if (!image->color_pixels) image->color_pixels = AllocatePixels(PictureBytes(*image));
    const bool fits = image->color_pixels && !Samples(*image, Area(image->w, image->h)).empty() &&
                      image->size_in_bytes <= image->buffer_size &&
                      image->num_pixels <= image->buffer_size / kBytesPerSample;
    image->color_size_in_bytes = fits ? 3 * image->size_in_bytes : 0;
    if (!fits) ZEL_LOG(m_Logger, kLogError, kFunction, "***ERROR***: ptr is 0");
    return fits;
}

bool ColorRenderer::Demosaic(const ColorFrame& frame) {
    constexpr const char* kFunction = "ZelCameraControlImpl::DemosaicColorImage";
    ZEL_SCOPE_TIMER(timer, "DemosaicColorImage", m_Logger, kFunction);
    PlaneSet& planes = frame.image->color_planes;
    if (frame.samples.size() > frame.num_pixels || !planes.Resize(frame.num_pixels)) {
        ZEL_LOG(m_Logger, kLogError, kFunction, "Failed to demosaic the color image!");
        return false;
    }
    const KernelTable& kernel = KernelsFor(ColorPipeline::Kind::kMain);
    Mosaic mosaic(kernel, frame.samples, frame.w, frame.h, frame.phase);
    for (std::size_t y = 0; y < frame.h; ++y) {
        kernel.demosaic_row(mosaic.Row(y), PlanesAt(planes, y * frame.w, frame.w));
    }
    return true;
}

void ColorRenderer::Render(const ColorFrame& frame, ColorPipeline& pipeline, bool from_planes) {
    constexpr const char* kFunction = "ZelCameraControlImpl::PostProcessColorImage";
    const KernelTable& kernel = KernelsFor(pipeline.WhichOne());
    const ColorSettings& settings = pipeline.Prepare();
    const kernels::ColorSteps steps{
        .input = MapsOf(settings.input_linearization),
        .transform = settings.transform.Kernel(frame.bit_depth),
        .output = MapsOf(settings.output_non_linearization),
        .format = settings.transform.Format(),
    };
    if (!CanApply(settings.input_linearization)) {
        ZEL_LOG(m_Logger, kLogError, kFunction, "Color input linearization step failed!");
    }
    ZEL_LOG(m_Logger, kLogTrace, kFunction, "ApplyColorTransform called for pipeline: %x",
            static_cast<unsigned>(pipeline.WhichOne()));
    const std::size_t w = frame.w;
    if (!ReserveRows(3 * w)) {
        ZEL_LOG(m_Logger, kLogError, kFunction, "Color transform step failed!");
        return;
    }
    const PlanarRow scratch{{m_Rows.data(), m_Rows.data() + w, m_Rows.data() + 2 * w}, w};
    if (from_planes || m_Logger.Enabled()) {
        StepByStep(frame, kernel, steps, scratch, from_planes);
    } else {
        const std::size_t row_bytes = w * kernels::BytesPerPixel(steps.format);
        Mosaic mosaic(kernel, frame.samples, frame.w, frame.h, frame.phase);
        for (std::size_t y = 0; y < frame.h; ++y) {
            kernel.color_row(mosaic.Row(y), steps, scratch, frame.out + y * row_bytes);
        }
    }
    frame.image->color_size_in_bytes = steps.format == ColorFormat::k16        ? 3 * frame.size_in_bytes
                                       : steps.format == ColorFormat::k8Padded ? 4 * frame.num_pixels
                                                                               : 3 * frame.num_pixels;
    if (!CanApply(settings.output_non_linearization)) {
        ZEL_LOG(m_Logger, kLogError, kFunction, "Color output non-linearization step failed!");
    }
}

// From the planes, or where the log tells what each step takes.
void ColorRenderer::StepByStep(const ColorFrame& frame, const KernelTable& kernel, const kernels::ColorSteps& steps,
                               const PlanarRow& scratch, bool from_planes) {
    constexpr const char* kFunction = "ZelCameraControlImpl::PostProcessColorImage";
    const bool input = !KeepSamples(steps.input), output = !KeepSamples(steps.output);
    const std::size_t w = frame.w;
    const std::size_t row_bytes = w * kernels::BytesPerPixel(steps.format);
    StepTime demosaic(m_Logger, "DemosaicColorImage"), linearize(m_Logger, "ApplyInputLinearization"),
        apply(m_Logger, "ApplyColorTransform"), non_linearize(m_Logger, "ApplyOutputNonLinearization");
    Mosaic mosaic(kernel, frame.samples, frame.w, frame.h, frame.phase);
    for (std::size_t y = 0; y < frame.h; ++y) {
        PlanarRow row = scratch;
        if (!from_planes) {
            const kernels::MosaicRow raw = mosaic.Row(y);
            demosaic.Run([&] { kernel.demosaic_row(raw, row); });
        } else if (input || output) {
            const PlanarRow plane = PlanesAt(frame.image->color_planes, y * w, w);
            for (int k = 0; k < 3; ++k) std::memcpy(row.channel[k], plane.channel[k], w * kBytesPerSample);
        } else {
            row = PlanesAt(frame.image->color_planes, y * w, w);
        }
        if (input) linearize.Run([&] { Apply(kernel, steps.input, row); });
        std::uint8_t* const to = frame.out + y * row_bytes;
        if (!output) {
            apply.Run([&] { kernel.transform_pack_row(row, steps.transform, steps.format, to); });
            continue;
        }
        apply.Run([&] { kernel.transform_row(row, steps.transform); });
        non_linearize.Run([&] {
            Apply(kernel, steps.output, row);
            kernel.pack_row(row, steps.format, to);
        });
    }
    if (!from_planes) demosaic.Report(kFunction);
    for (StepTime* step : {&linearize, &apply, &non_linearize}) step->Report(kFunction);
}

bool ColorRenderer::ReserveRows(std::size_t samples) {
    try {
        if (m_Rows.size() < samples) m_Rows.resize(samples);
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

}  // namespace zel
