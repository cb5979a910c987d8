// Files of any kind as what a simulated camera shows: pictures as a scene, recordings as what it plays. The first byte
// chooses a file that is whole, which the others change, or takes them as the file.
#include "devices/sim/scene/SceneFile.h"
#include "devices/sim/sensor/RecordedFrames.h"
#include "fuzz/FuzzFile.h"
#include "fuzz/Input.h"
#include "record/RecordError.h"
#include "record/RecordingWriter.h"
#include "util/PngWriter.h"

using namespace zel;
using namespace zel::sim;

namespace {

const fuzz::FuzzFile s_File;

std::string Png(PngFormat format) {
    std::vector<std::uint8_t> pixels(7 * 5 * 6);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<std::uint8_t>(i * i);
    PngWriter writer(PngFilters::kChosen);
    const auto file = writer.Encode({format, 7, 5, pixels.data()});
    return {file.begin(), file.end()};
}

std::string WholeRecording() {
    record::RecordingFacts facts;
    facts.width = 6;
    facts.height = 4;
    {
        record::RecordingWriter writer(s_File.Path(), facts, {});
        for (std::uint32_t i = 0; i < 3; ++i)
            writer.Add(std::vector<std::uint16_t>(24, 1000), {.number = i, .host_ns = i * 1000000u});
        writer.Finish({.reason = "frames", .frames = 3});
    }
    return s_File.Take();
}

void Show(unsigned width, unsigned height) {
    std::string reason;
    const auto scene = SceneFile::Load(s_File.Name(), width, height, reason);
    FuzzCheck(scene || !reason.empty());
    FuzzCheck(std::ranges::all_of(reason, [](char c) { return c >= ' ' && c <= '~'; }));
    std::vector<Rgb> row(width);
    for (unsigned y = 0; scene && y < height; ++y) {
        scene->Row(y, row);
        for (const Rgb& pixel : row) FuzzCheck(pixel.r >= 0 && pixel.g <= 1.001f && pixel.b == pixel.b);
    }
}

void Play() {
    sim::Recording recording{.file = s_File.Name()};
    try {
        LookAtFacts(recording);
        LookAtFrames(recording);
    } catch (const record::RecordError& error) {
        return FuzzCheck(*error.what() != 0);
    }
    if (std::uint64_t{recording.facts.width} * recording.facts.height > 1 << 20) return;
    RecordedFrames frames(recording);
    frames.Prepare({}, SensorFill::kNoise);
    std::vector<std::uint16_t> room(frames.Width());
    for (std::uint64_t i = 0; i < recording.frames + 1; ++i) {
        frames.Begin({}, SensorFill::kNoise, i);
        const auto pause = frames.Pause(i);
        FuzzCheck(!pause || (*pause >= 0 && *pause <= 3600000000));
        for (unsigned y = 0; y < frames.Height(); ++y) FuzzCheck(frames.Row(y, room).size() == frames.Width());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string s_Whole[] = {Png(PngFormat::kGrey16), Png(PngFormat::kRgb8), Png(PngFormat::kRgba8),
                                          WholeRecording()};
    if (size < 2) return 0;
    const unsigned kind = data[0] % 8;
    const std::span rest(data + 1, size - 1);
    s_File.Write(kind < 4 ? fuzz::Changed(s_Whole[kind], rest) : std::string(rest.begin(), rest.end()));
    if (kind == 3 || kind == 7) Play();
    if (kind != 3) Show(data[1] % 20, data[1] / 20);
    s_File.Remove();
    return 0;
}
