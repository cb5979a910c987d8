// Files of any kind as recordings: recordings, and what another program may make, with a few bytes changed, or the
// input itself. What is taken must be of a sensible size and read without harm; what was not changed is read as it was
// written.
#include <tiffio.h>

#include "fuzz/FuzzFile.h"
#include "fuzz/Input.h"
#include "record/RecordingReader.h"
#include "record/RecordingWriter.h"

using namespace zel::record;
using zel::fuzz::Choices;

namespace {

constexpr unsigned kWidth = 21;
constexpr unsigned kHeight = 19;
constexpr std::uint16_t kSample = 0x5A5A;                    // of all pixels; the two bytes are the same
constexpr std::uint64_t kMostRead = std::uint64_t{1} << 22;  // samples of a frame

const zel::fuzz::FuzzFile s_File;

std::string MakeRecording(Compression compression) {
    RecordingFacts facts;
    facts.width = kWidth;
    facts.height = kHeight;
    {
        RecordingWriter writer(s_File.Path(), facts, {.compression = compression});
        const std::vector<std::uint16_t> samples(kWidth * kHeight, kSample);
        for (std::uint32_t i = 0; i < 2; ++i) writer.Add(samples, {.number = i});
        writer.Finish({.reason = "frames", .frames = 2});
    }
    return s_File.Take();
}

// Of tiles or strips, in either byte order, small or big, of 8 or 16 bits, compressed or not.
std::string MakeStack(Choices& in) {
    constexpr const char* kModes[] = {"wl", "wb", "w8l", "w8b"};
    constexpr std::uint16_t kCompressions[] = {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_PACKBITS,
                                               COMPRESSION_ADOBE_DEFLATE};
    TIFF* const tiff = TIFFOpen(s_File.Name().c_str(), kModes[in.Number(0, 3)]);
    FuzzCheck(tiff);
    const bool tiles = in.Flag();
    const unsigned bytes = in.Number(1, 2), rows = in.Number(1, kHeight);
    const std::vector<std::uint8_t> samples(64 * 64 * 2, kSample & 0xFF);
    for (unsigned page = in.Number(1, 3); page > 0; --page) {
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kWidth);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kHeight);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8 * bytes);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, kCompressions[in.Number(0, 3)]);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        if (in.Flag()) TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, R"(<Pixels SignificantBits="7">)");
        if (tiles) {
            TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 16);
            TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16 * in.Number(1, 2));
            for (unsigned i = 0; i < TIFFNumberOfTiles(tiff); ++i)
                TIFFWriteEncodedTile(tiff, i, const_cast<std::uint8_t*>(samples.data()), TIFFTileSize(tiff));
        } else {
            TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rows);
            for (unsigned i = 0; i < TIFFNumberOfStrips(tiff); ++i)
                TIFFWriteEncodedStrip(tiff, i, const_cast<std::uint8_t*>(samples.data()),
                                      TIFFVStripSize(tiff, std::min(rows, kHeight - i * rows)));
        }
        TIFFWriteDirectory(tiff);
    }
    TIFFClose(tiff);
    return s_File.Take();
}

// Answers how many frames could be read.
std::size_t Read(bool whole) {
    std::size_t good = 0;
    try {
        RecordingReader reader(s_File.Path());
        const std::uint64_t count = std::uint64_t{reader.Facts().width} * reader.Facts().height;
        FuzzCheck(count > 0 && count <= std::uint64_t{1} << 28 && reader.Frames() > 0);
        FuzzCheck(reader.Facts().bits >= 1 && reader.Facts().bits <= 16);
        std::vector<std::uint16_t> samples(static_cast<std::size_t>(std::min(count, kMostRead)));
        for (std::size_t i = 0; i < reader.Frames() && count <= kMostRead; ++i) {
            reader.Frame(i);
            try {
                reader.Read(i, samples);
                ++good;
            } catch (const RecordError& error) {
                FuzzCheck(*error.what() != 0);
            }
            if (whole)
                FuzzCheck(std::ranges::all_of(
                    samples, [](std::uint16_t sample) { return sample == kSample || sample == kSample >> 8; }));
        }
        FuzzCheck(!whole || (good == reader.Frames() && reader.CutOff().empty()));
    } catch (const RecordError& error) {
        FuzzCheck(*error.what() != 0);
    }
    return good;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string s_Plain = MakeRecording(Compression::kNone);
    static const std::string s_Compressed = MakeRecording(Compression::kDeflate);
    Choices in(data, size);
    const unsigned kind = in.Number(0, 3);
    const std::string base = kind == 0 ? s_Plain : kind == 1 ? s_Compressed : kind == 2 ? MakeStack(in) : std::string();
    const auto rest = in.Rest();
    const bool whole = kind < 3 && rest.size() < 5 && (rest.empty() || !(rest[0] & 1));
    s_File.Write(kind == 3 ? std::string(rest.begin(), rest.end()) : zel::fuzz::Changed(base, rest));
    FuzzCheck(Read(whole) > 0 || !whole);
    s_File.Remove();
    return 0;
}
