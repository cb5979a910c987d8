#include "record/RecordingWriter.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "record/FactsText.h"
#include "record/OmeXml.h"
#include "record/PageTags.h"
#include "record/TiffOutput.h"

namespace zel::record {

namespace {

// Strips of whole pages go to the disk as they are; what is compressed has any length.
constexpr std::uint64_t kPage = 4096;
constexpr std::uint64_t kEven = 16;
// Bytes of a page's directory, and of a frame in the OME-XML, at most.
constexpr std::uint64_t kDirectoryRoom = 2048;
constexpr std::uint64_t kPlaneRoom = 256;
constexpr std::uint64_t kEndRoom = 16384;
// Taken ahead where the size of the recording is not known.
constexpr std::uint64_t kAhead = std::uint64_t{256} << 20;

constexpr const char* kUnfinished = "ZEL recording that is not complete";
constexpr double kMicrometresPerCentimetre = 1e4;

// "2026-11-22T04:31:00.000Z" as TIFF writes it: "2026:11:22 04:31:00". Empty for another text.
std::string DateTime(const std::string& utc) {
    if (utc.size() < 19 || utc[10] != 'T') return "";
    std::string text = utc.substr(0, 19);
    text[4] = text[7] = ':';
    text[10] = ' ';
    return text;
}

}  // namespace

struct RecordingWriter::State {
    State(const std::filesystem::path& path, const RecordingFacts& recording, const WriterOptions& wanted)
        : facts(recording),
          options(wanted),
          encoder(recording, wanted.compression),
          output(path, wanted.compression == Compression::kNone ? kPage : kEven) {}

    void AddStrip(std::span<const std::byte> strip, const FrameFacts& frame);
    void SetTags(const FrameFacts& frame);
    void Complete(const RecordingEnd& end, bool planes);
    // What the end of the file takes.
    std::uint64_t EndRoom() const { return kEndRoom + frames.size() * kPlaneRoom; }

    RecordingFacts facts;
    WriterOptions options;
    StripEncoder encoder;
    TiffOutput output;
    std::vector<FrameFacts> frames;
    bool ended = false;
};

void RecordingWriter::State::SetTags(const FrameFacts& frame) {
    TIFF* const tiff = output.Handle();
    KnowPrivateTags(tiff);
    SetLayoutTags(tiff, facts.width, facts.height, options.compression);
    if (facts.pixel_um > 0.0) {
        const double density = kMicrometresPerCentimetre / facts.pixel_um;
        SetTag(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_CENTIMETER);
        SetTag(tiff, TIFFTAG_XRESOLUTION, density);
        SetTag(tiff, TIFFTAG_YRESOLUTION, density);
    }
    SetPrivateTag(tiff, kTagFrame, ToText(frame));
    if (!frames.empty()) return;
    SetPrivateTag(tiff, kTagRecording, ToText(facts));
    SetTag(tiff, TIFFTAG_IMAGEDESCRIPTION, kUnfinished);
    if (!facts.software.empty()) SetTag(tiff, TIFFTAG_SOFTWARE, facts.software.c_str());
    if (!facts.model.empty()) SetTag(tiff, TIFFTAG_MODEL, facts.model.c_str());
    const std::string time = DateTime(facts.started);
    if (!time.empty()) SetTag(tiff, TIFFTAG_DATETIME, time.c_str());
}

void RecordingWriter::State::AddStrip(std::span<const std::byte> strip, const FrameFacts& frame) {
    if (ended) throw RecordError("the recording has ended");
    output.Require(strip.size() + kDirectoryRoom + EndRoom(), kAhead);
    TIFF* const tiff = output.Handle();
    try {
        SetTags(frame);
        void* const data = const_cast<std::byte*>(strip.data());
        const auto size = static_cast<tmsize_t>(strip.size());
        if (TIFFWriteRawStrip(tiff, 0, data, size) != size) output.Fail("frame not written");
        output.Begin();
        if (TIFFWriteDirectory(tiff) != 1) output.Fail("page not written");
        output.Commit();
    } catch (const RecordError&) {
        output.Drop();
        ended = true;  // what libtiff has in mind is no longer what is in the file
        throw;
    }
    output.WriteBehind();
    frames.push_back(frame);
}

// The first page anew, behind the last one; the head of the file then points to it. Where the disk has no room for
// that, the gap behind the header has, without the planes.
void RecordingWriter::State::Complete(const RecordingEnd& end, bool planes) {
    output.Reopen();
    TIFF* const tiff = output.Handle();
    KnowPrivateTags(tiff);
    SetTag(tiff, TIFFTAG_IMAGEDESCRIPTION, OmeXml(facts, frames, end, planes).c_str());
    SetPrivateTag(tiff, kTagEnd, ToText(end));
    if (planes) {
        output.Begin();
    } else {
        output.BeginInGap();
    }
    if (TIFFRewriteDirectory(tiff) != 1) output.Fail("first page not written");
    output.Commit();
}

RecordingWriter::RecordingWriter(const std::filesystem::path& path, const RecordingFacts& facts,
                                 const WriterOptions& options)
    : m_State(std::make_unique<State>(path, facts, options)) {
    try {
        m_State->output.Require(options.reserve, 0);
    } catch (const DiskFullError&) {
        // As much as there is will do: writing tells when it is not enough.
    }
}

RecordingWriter::~RecordingWriter() = default;

void RecordingWriter::Describe(const RecordingFacts& facts) {
    if (!m_State->frames.empty()) throw RecordError("the recording has begun");
    m_State->facts = facts;
    m_State->encoder = StripEncoder(facts, m_State->options.compression);
}

void RecordingWriter::Add(std::span<const std::uint16_t> samples, const FrameFacts& frame) {
    if (samples.size() != std::size_t{m_State->facts.width} * m_State->facts.height) {
        throw RecordError("a frame of another size");
    }
    m_State->AddStrip(m_State->encoder.Encode(samples), frame);
}

void RecordingWriter::AddStrip(std::span<const std::byte> strip, const FrameFacts& frame) {
    m_State->AddStrip(strip, frame);
}

void RecordingWriter::Finish(const RecordingEnd& end) {
    State& state = *m_State;
    state.ended = true;
    RecordingEnd told = end;
    told.frames = state.frames.size();
    if (!state.frames.empty()) {
        try {
            state.Complete(told, true);
        } catch (const DiskFullError&) {
            state.Complete(told, false);
        }
    }
    state.output.Close();
}

std::uint64_t RecordingWriter::Frames() const { return m_State->frames.size(); }
std::uint64_t RecordingWriter::Bytes() const { return m_State->output.Size(); }

}  // namespace zel::record
