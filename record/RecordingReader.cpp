#include "record/RecordingReader.h"

#include <tiffio.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <unordered_set>
#include <vector>

#include "record/FactsText.h"
#include "record/PageTags.h"
#include "record/TiffInput.h"

namespace zel::record {

// How the samples of a page lie in the file.
struct PageLayout {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t bytes = 0;        // of a sample
    std::uint32_t tile_width = 0;   // 0: strips
    std::uint32_t tile_height = 0;  // of a strip: its rows
    bool inverted = false;          // 0 is white

    bool SamePicture(const PageLayout& other) const {
        return width == other.width && height == other.height && bytes == other.bytes;
    }
};

namespace {

constexpr std::uint32_t kLongestSide = 65535;
constexpr std::uint64_t kMostSamples = std::uint64_t{1} << 28;
constexpr std::uint64_t kLargestTile = std::uint64_t{1} << 25;  // samples
constexpr std::uint32_t kReducedPicture = 1;                    // a smaller form of another page

std::string SizeText(std::uint32_t width, std::uint32_t height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

template <class Value>
Value Field(TIFF* tiff, std::uint32_t tag, Value otherwise) {
    Value value = otherwise;
    return TIFFGetField(tiff, tag, &value) ? value : otherwise;
}

void CheckSamples(TIFF* tiff, PageLayout& layout) {
    const auto bits = Field<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    const auto channels = Field<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    const auto format = Field<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    const auto light = Field<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    if (channels != 1) throw RecordError(std::to_string(channels) + " samples a pixel; grey pictures have one");
    if (bits != 8 && bits != 16) throw RecordError("samples of " + std::to_string(bits) + " bits, not 8 or 16");
    if (format != SAMPLEFORMAT_UINT && format != SAMPLEFORMAT_VOID) {
        throw RecordError("its samples are not whole numbers from 0 on");
    }
    if (light != PHOTOMETRIC_MINISBLACK && light != PHOTOMETRIC_MINISWHITE && light != PHOTOMETRIC_CFA) {
        throw RecordError("no grey picture");
    }
    layout.bytes = bits / 8u;
    layout.inverted = light == PHOTOMETRIC_MINISWHITE;
}

// Of the current directory. Throws RecordError when it is no picture that can be read.
PageLayout ReadLayout(TIFF* tiff) {
    PageLayout layout;
    layout.width = Field<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0);
    layout.height = Field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0);
    const auto good = [](std::uint32_t side) { return side >= 1 && side <= kLongestSide; };
    if (!good(layout.width) || !good(layout.height) || std::uint64_t{layout.width} * layout.height > kMostSamples) {
        throw RecordError("a size of " + SizeText(layout.width, layout.height) + " samples");
    }
    if (Field<std::uint32_t>(tiff, TIFFTAG_IMAGEDEPTH, 1) != 1) throw RecordError("pictures with a depth");
    CheckSamples(tiff, layout);
    if (!TIFFIsTiled(tiff)) {
        const auto rows = Field<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, layout.height);
        if (rows == 0) throw RecordError("strips without rows");
        layout.tile_height = std::min(rows, layout.height);
        return layout;
    }
    layout.tile_width = Field<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0);
    layout.tile_height = Field<std::uint32_t>(tiff, TIFFTAG_TILELENGTH, 0);
    const std::uint64_t samples = std::uint64_t{layout.tile_width} * layout.tile_height;
    if (samples == 0 || samples > kLargestTile || TIFFTileSize64(tiff) != samples * layout.bytes) {
        throw RecordError("tiles of " + SizeText(layout.tile_width, layout.tile_height) + " samples");
    }
    return layout;
}

std::uint32_t RowsOfStrip(const PageLayout& layout, std::uint32_t strip) {
    return std::min(layout.tile_height, layout.height - strip * layout.tile_height);
}

std::uint32_t Strips(const PageLayout& layout) { return (layout.height + layout.tile_height - 1) / layout.tile_height; }

// Whether all of the current directory's samples lie in the file.
bool IsWhole(TIFF* tiff, const PageLayout& layout, std::uint64_t file_size) {
    const bool strips = layout.tile_width == 0;
    const bool plain = Field<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE) == COMPRESSION_NONE;
    const std::uint32_t parts = strips ? Strips(layout) : TIFFNumberOfTiles(tiff);
    for (std::uint32_t i = 0; i < parts; ++i) {
        const std::uint64_t begin = TIFFGetStrileOffset(tiff, i);
        const std::uint64_t size = TIFFGetStrileByteCount(tiff, i);
        if (begin == 0 || size == 0 || begin > file_size || size > file_size - begin) return false;
        const std::uint64_t rows = strips ? RowsOfStrip(layout, i) : layout.tile_height;
        if (plain && size < rows * (strips ? layout.width : layout.tile_width) * layout.bytes) return false;
    }
    return true;
}

// The bits that another program's file says are used, which OME's description of a picture has a place for.
unsigned SignificantBits(TIFF* tiff, unsigned bits) {
    const char* description = nullptr;
    constexpr char kAttribute[] = "SignificantBits=\"";
    if (!TIFFGetField(tiff, TIFFTAG_IMAGEDESCRIPTION, &description) || !description) return bits;
    const char* const found = std::strstr(description, kAttribute);
    const unsigned long said = found ? std::strtoul(found + sizeof kAttribute - 1, nullptr, 10) : 0;
    return said >= 1 && said <= bits ? static_cast<unsigned>(said) : bits;
}

bool MakesSense(const RecordingFacts& facts, const PageLayout& layout) {
    return facts.width == layout.width && facts.height == layout.height && facts.bits >= 1 &&
           facts.bits <= layout.bytes * 8 && facts.cfa_phase >= 0 && facts.cfa_phase <= 4 &&
           std::isfinite(facts.frames_per_second) && facts.frames_per_second >= 0.0 && std::isfinite(facts.pixel_um);
}

void Spread(std::span<const std::uint8_t> bytes, const PageLayout& layout, std::uint16_t* to) {
    if (layout.bytes == 2) {
        std::memcpy(to, bytes.data(), bytes.size());
    } else {
        std::copy(bytes.begin(), bytes.end(), to);
    }
}

}  // namespace

struct RecordingReader::State {
    explicit State(const std::filesystem::path& path) : file(path), tiff(file.Handle()) {}

    void ReadFirstPage();
    void WalkPages(std::size_t most);
    bool AddPage(const PageLayout& layout);
    void ReadStrips(const PageLayout& layout, std::span<std::uint16_t> samples);
    void ReadTiles(const PageLayout& layout, std::span<std::uint16_t> samples);

    TiffInput file;
    TIFF* const tiff;
    bool recording = false;
    RecordingFacts facts;
    std::optional<RecordingEnd> end;
    std::string cut_off;
    PageLayout first;
    std::vector<std::uint64_t> pages;  // where they begin
    std::vector<FrameFacts> frames;
    std::vector<std::uint8_t> part;  // a strip or a tile
};

void RecordingReader::State::ReadFirstPage() {
    if (!TIFFSetDirectory(tiff, 0)) file.Fail("it has no pictures");
    first = ReadLayout(tiff);
    const std::string text = file.Text(kTagRecording);
    recording = !text.empty();
    if (!recording) {
        facts.width = first.width;
        facts.height = first.height;
        facts.bits = SignificantBits(tiff, first.bytes * 8);
        return;
    }
    if (!FromText(text, facts) || !MakesSense(facts, first)) {
        throw RecordError("what it says about the recording makes no sense");
    }
    RecordingEnd said;
    if (const std::string end_text = file.Text(kTagEnd); !end_text.empty() && FromText(end_text, said)) end = said;
}

// Pages beyond what libtiff counts in one go are reached by beginning anew at the last one.
void RecordingReader::State::WalkPages(std::size_t most) {
    constexpr std::size_t kInOneGo = 1000000;
    std::unordered_set<std::uint64_t> passed;
    while (true) {
        const std::uint64_t offset = TIFFCurrentDirOffset(tiff);
        if (!passed.insert(offset).second) {
            cut_off = "its pages go round in a circle";
            return;
        }
        const bool picture = !(Field<std::uint32_t>(tiff, TIFFTAG_SUBFILETYPE, 0) & kReducedPicture);
        if (picture && !AddPage(ReadLayout(tiff))) return;
        if (pages.size() >= most || TIFFLastDirectory(tiff)) return;
        if (passed.size() % kInOneGo == 0 && !TIFFSetSubDirectory(tiff, offset)) break;
        if (!TIFFReadDirectory(tiff)) break;
    }
    cut_off = "page " + std::to_string(passed.size() + 1) + " can't be read";
}

bool RecordingReader::State::AddPage(const PageLayout& layout) {
    const std::string number = std::to_string(pages.size() + 1);
    if (!layout.SamePicture(first)) throw RecordError("page " + number + " is of another size or kind than the first");
    if (!IsWhole(tiff, layout, file.Size())) {
        cut_off = "page " + number + " is not whole";
        return false;
    }
    FrameFacts frame;
    const std::string text = recording ? file.Text(kTagFrame) : "";
    if (!FromText(text, frame)) frame.number = static_cast<std::uint32_t>(pages.size());
    pages.push_back(TIFFCurrentDirOffset(tiff));
    frames.push_back(frame);
    return true;
}

void RecordingReader::State::ReadStrips(const PageLayout& layout, std::span<std::uint16_t> samples) {
    for (std::uint32_t i = 0; i < Strips(layout); ++i) {
        const std::size_t count = std::size_t{RowsOfStrip(layout, i)} * layout.width;
        std::uint16_t* const to = samples.data() + std::size_t{i} * layout.tile_height * layout.width;
        const auto size = static_cast<tmsize_t>(count * layout.bytes);
        if (layout.bytes == 1) part.resize(count);
        void* const into = layout.bytes == 1 ? static_cast<void*>(part.data()) : to;
        if (TIFFReadEncodedStrip(tiff, i, into, size) != size) file.Fail("its samples can't be read");
        if (layout.bytes == 1) Spread(part, layout, to);
    }
}

void RecordingReader::State::ReadTiles(const PageLayout& layout, std::span<std::uint16_t> samples) {
    const std::size_t tile_row = std::size_t{layout.tile_width} * layout.bytes;
    part.resize(tile_row * layout.tile_height);
    const auto size = static_cast<tmsize_t>(part.size());
    for (std::uint32_t y = 0; y < layout.height; y += layout.tile_height) {
        for (std::uint32_t x = 0; x < layout.width; x += layout.tile_width) {
            const std::uint32_t tile = TIFFComputeTile(tiff, x, y, 0, 0);
            if (TIFFReadEncodedTile(tiff, tile, part.data(), size) != size) file.Fail("its samples can't be read");
            const std::size_t columns = std::min(layout.tile_width, layout.width - x);
            const std::uint32_t rows = std::min(layout.tile_height, layout.height - y);
            for (std::uint32_t row = 0; row < rows; ++row) {
                const auto bytes = std::span(part).subspan(row * tile_row, columns * layout.bytes);
                Spread(bytes, layout, samples.data() + std::size_t{y + row} * layout.width + x);
            }
        }
    }
}

RecordingReader::RecordingReader(const std::filesystem::path& path, std::size_t most_frames)
    : m_State(std::make_unique<State>(path)) {
    m_State->ReadFirstPage();
    m_State->WalkPages(most_frames);
    if (m_State->pages.empty()) throw RecordError("it has no whole frame");
}

RecordingReader::~RecordingReader() = default;

bool RecordingReader::IsRecording() const { return m_State->recording; }
const RecordingFacts& RecordingReader::Facts() const { return m_State->facts; }
std::size_t RecordingReader::Frames() const { return m_State->pages.size(); }
FrameFacts RecordingReader::Frame(std::size_t index) const { return m_State->frames.at(index); }
const std::optional<RecordingEnd>& RecordingReader::End() const { return m_State->end; }
const std::string& RecordingReader::CutOff() const { return m_State->cut_off; }

// The page is looked at once more: the file may be another one by now.
void RecordingReader::Read(std::size_t index, std::span<std::uint16_t> samples) {
    State& state = *m_State;
    if (index >= state.pages.size()) throw RecordError("it has no frame " + std::to_string(index));
    if (!TIFFSetSubDirectory(state.tiff, state.pages[index])) state.file.Fail("its page can't be read");
    const PageLayout layout = ReadLayout(state.tiff);
    if (!layout.SamePicture(state.first)) throw RecordError("the file has changed");
    samples = samples.first(std::size_t{layout.width} * layout.height);
    if (layout.tile_width == 0) {
        state.ReadStrips(layout, samples);
    } else {
        state.ReadTiles(layout, samples);
    }
    if (!layout.inverted) return;
    const unsigned white = (1u << layout.bytes * 8) - 1;
    for (std::uint16_t& sample : samples) sample = static_cast<std::uint16_t>(white - sample);
}

}  // namespace zel::record
