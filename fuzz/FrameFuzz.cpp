// Frames of every geometry, honest and lying, through the whole post-processing with every setting: with the fastest
// kernels and with the plain ones, which must come to the same. No buffer has a byte too many, see ExactPages.cpp.
#include <cstring>

#include "fuzz/Input.h"
#include "image/FrameSamples.h"
#include "image/ZelCameraControlImpl.h"
#include "kernels/Kernels.h"
#include "tapbalance/TapBalance.h"
#include "tests/tapbalance/ScriptedFlash.h"

using namespace zel;
using namespace zel::test;
using fuzz::Choices;
using Path = ZelCameraControlImpl::Path;

namespace {

// A camera's tap balance with tables for so many taps.
struct Balance {
    explicit Balance(int taps) {
        camera.SetHandler([this](const Bytes& datagram) { return flash.Answer(datagram); });
        flash.Install(MakeTable(6, taps), MakeTable(6, taps, 1));
        balance.SetBitsPerPixel(12);
        FuzzCheck(balance.LoadDataFromCamera() && balance.Enable(true));
    }
    FakeClock clock;
    ScriptedTransport camera{&clock};
    ScriptedFlash flash;
    ExchangeLock lock;
    TextProtocol protocol{&camera, "fuzz", lock};
    TapBalance balance{protocol, "fuzz"};
};

// Mostly what fits, now and then what no frame has.
unsigned Size(Choices& in, unsigned most) {
    const unsigned kind = in.Number(0, 15);
    return kind == 0 ? in.Number(0, 0xFFFFFFFF) : kind == 1 ? in.Number(0, 300) : in.Number(0, most);
}

FrameGeometry AnyGeometry(Choices& in) {
    FrameGeometry geometry;
    geometry.packed = in.Flag();
    geometry.cuts_region = in.Flag();
    geometry.region_is_size = in.Flag();
    geometry.keeps_full_size = in.Flag();
    geometry.width = in.Number(1, in.Flag() ? 200 : 12);
    geometry.height = in.Number(1, 20);
    geometry.bit_depth = in.Number(1, 16);
    geometry.bytes_per_pixel = in.Number(0, 7) ? 2 : 1;
    geometry.taps = static_cast<int>(in.Number(0, 4));
    geometry.readout_mhz = in.Flag() ? 20 : 40;
    geometry.cfa_phase = static_cast<int>(in.Number(0, 5));
    geometry.roi = {Size(in, 6),     Size(in, 6),    Size(in, geometry.width), Size(in, geometry.height),
                    in.Number(0, 3), in.Number(0, 3)};
    if (in.Number(0, 7) == 0) geometry.roi.XBin = Size(in, 140);
    return geometry;
}

void AnyColor(Choices& in, ColorPipeline& pipeline) {
    pipeline.ConcatenateTransform(static_cast<int>(in.Number(0, 8)), static_cast<int>(in.Number(0, 17)));
    float matrix[9];
    for (float& entry : matrix) entry = static_cast<float>(static_cast<int>(in.Number(0, 400)) - 200) / 100;
    if (in.Flag()) pipeline.ConcatenateMatrix(matrix);
    if (in.Number(0, 7)) return;
    std::vector<unsigned short> entries(3 * in.Number(1, 40));
    for (unsigned short& entry : entries) entry = in.Sample();
    const unsigned channels = in.Number(0, 3) ? 3 : 1;
    pipeline.SetTable(in.Flag() ? &ColorSettings::input_linearization : &ColorSettings::output_non_linearization,
                      entries.data(), static_cast<unsigned>(entries.size()) / channels, channels);
}

// What a transport or a callback may write into a record.
void Lie(Choices& in, ZelColorImage& image) {
    for (unsigned* field :
         {&image.w, &image.h, &image.num_pixels, &image.size_in_bytes, &image.bit_depth, &image.bytes_per_pixel}) {
        if (in.Flag()) *field = Size(in, *field);
    }
}

template <class T>
void Append(std::vector<std::uint8_t>& to, const T* values, std::size_t count) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(values);
    to.insert(to.end(), bytes, bytes + count * sizeof(T));
}

// All that frames come to, one after the other.
std::vector<std::uint8_t> Process(Choices in, const kernels::KernelTable* kernel) {
    static Balance s_Two(2), s_Four(4);
    kernels::ForceKernels(kernel);
    const FrameGeometry geometry = AnyGeometry(in);
    ZelCameraControlImpl path("fuzz", in.Flag() ? &(in.Flag() ? s_Two : s_Four).balance : nullptr);
    path.SetGeometry(geometry);
    const bool color = in.Flag(), looks = in.Number(0, 3) == 0;
    if (color) AnyColor(in, path.MainPipeline()), AnyColor(in, path.ScratchpadPipeline());
    if (looks) {
        path.SetScratchpad(
            [](ZelColorImage* image, void* input) {
                if (static_cast<Choices*>(input)->Flag()) Lie(*static_cast<Choices*>(input), *image);
                return static_cast<int>(static_cast<Choices*>(input)->Flag());
            },
            &in);
    }
    path.SetAveraging(static_cast<int>(in.Number(0, 3)), in.Flag());
    std::vector<std::uint8_t> result;
    if (path.UpdateImagePool(2, color) != 0 || path.UpdateImageAvgBuffer() != 0) return result;
    const unsigned frames = in.Number(1, 4);
    bool tells = true;
    for (unsigned i = 0; i < frames; ++i) {
        const FrameLease frame = path.GetFreeImageImpl();
        FuzzCheck(frame && frame->w == geometry.width && frame->h == geometry.height);
        for (std::size_t k = 0; k < frame->buffer_size / 2; ++k)
            frame->pixels[k] = static_cast<std::uint16_t>(in.Random());
        const bool lies = in.Number(0, 3) == 0;
        if (lies) Lie(in, *frame.image);
        // What no tap delivers holds what the scratch held, and behind a binned frame anything may stand.
        tells = tells && (geometry.taps != 4 || (frame->w % 2 == 0 && frame->h % 2 == 0));
        path.PostProcessOnce(frame, color ? Path::kColor : Path::kMonochrome);
        Append(result, &frame->w, 6);
        const std::uint64_t count = Area(frame->w, frame->h);
        if (!lies && !looks) FuzzCheck(count <= frame->buffer_size / 2 || geometry.bytes_per_pixel == 1);
        FuzzCheck(frame->color_size_in_bytes == 0 ||
                  (frame->color_pixels && frame->color_size_in_bytes <= PictureBytes(*frame.image)));
        if (tells) {
            const std::size_t samples = Samples(*frame.image, count).size();
            Append(result, frame->pixels, samples);
            Append(result, static_cast<std::uint8_t*>(frame->color_pixels),
                   std::min<std::size_t>(3 * samples, frame->color_size_in_bytes));
        }
        FuzzCheck(path.Pool().ReleaseImage(frame.image));
    }
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Choices in(data, size);
    FuzzCheck(Process(in, nullptr) == Process(in, kernels::FindKernels(kernels::Variant::kScalar)));
    kernels::ForceKernels(nullptr);
    return 0;
}
