#include "util/PngWriter.h"

#include <algorithm>
#include <new>

#include "util/PngFile.h"

namespace zel {

namespace {

// Of a picture these many stretches, spread over it, stand for the whole. A small one stands for itself.
constexpr std::size_t kStretches = 3;
constexpr std::size_t kShortest = std::size_t{12} << 10, kLongest = std::size_t{24} << 10;

bool IsSmall(std::uint64_t size) { return size < 4 * kStretches * kShortest; }

std::size_t StretchSize(std::uint64_t size) {
    return static_cast<std::size_t>(std::clamp<std::uint64_t>(size / 192, kShortest, kLongest));
}

// Whether literals alone do for data of which a sample has these sizes. They may cost a tenth more than a search for
// repetitions, but must gain something over the raw bytes. In a sample a sixteenth stands for that tenth, since a
// search in the whole has more behind it to find repetitions in. Literals take less than half of its time, except where
// it finds so much that it is nearly as fast.
bool LiteralsSuffice(std::size_t literal, std::size_t searched, std::size_t raw) {
    return literal <= searched + searched / 16 && literal <= raw / 64 * 63 && searched >= raw / 4;
}

// The counts of a block and its bits fit 32 bits up to here; a block has one row at least.
constexpr std::size_t kLongestRow = std::size_t{256} << 20;

std::size_t RowsAtOnce(std::size_t row_size, std::size_t size) { return std::max<std::size_t>(1, size / row_size); }

}  // namespace

std::span<const std::uint8_t> PngWriter::Encode(const PngPicture& picture) {
    if (!picture.pixels || picture.width == 0 || picture.height == 0) return {};
    if (PngRowSize(picture) > std::uint64_t{PTRDIFF_MAX} / picture.height) return {};
    const std::size_t bound = ZlibStreamBound(static_cast<std::size_t>(PngRowSize(picture) * picture.height));
    const std::size_t offset = PngStreamOffset(picture.light);
    const std::span<std::uint8_t> file = m_File.Take(std::uint64_t{offset} + bound + kPngEndSize);
    if (file.empty()) return {};
    const std::span<std::uint8_t> stream = file.subspan(offset, bound);
    const Choice choice = Choose(picture);
    std::size_t size = choice.literals ? PutLiterals(picture, choice.filter, stream) : 0;
    if (size == 0) size = PutSearched(picture, choice.filter, stream);
    if (size == 0 || size > kMaxPngStreamSize) return {};
    const std::span<std::uint8_t> contents = file.first(offset + size + kPngEndSize);
    FramePngStream(picture, contents);
    return contents;
}

void PngWriter::Trim(std::size_t most) {
    if (m_Rows.Size() + m_File.Size() <= most) return;
    m_Rows.Release();
    m_File.Release();
}

// The filter that leaves the shorter literals is the better one for them: a count of the sample's bytes tells. The
// search is tried on the sample with that filter, and where it is to be preferred, with the other one, too.
PngWriter::Choice PngWriter::Choose(const PngPicture& picture) {
    const bool small = IsSmall(PngRowSize(picture) * picture.height);
    const bool any_filter = m_Filters == PngFilters::kChosen;
    if (small && !any_filter) return {};
    Choice choice;
    std::size_t literal = LiteralBlockSize(Sample(picture, PngFilter::kNone));
    if (any_filter) {
        const std::size_t filtered = LiteralBlockSize(Sample(picture, PngFilter::kSub));
        if (filtered < literal) choice.filter = PngFilter::kSub;
        literal = std::min(literal, filtered);
    }
    const std::span<const std::uint8_t> sample = Sample(picture, choice.filter);
    const std::size_t searched = SearchedSize(sample);
    choice.literals = !small && LiteralsSuffice(literal, searched, sample.size());
    if (any_filter && !choice.literals) {
        const PngFilter other = choice.filter == PngFilter::kNone ? PngFilter::kSub : PngFilter::kNone;
        if (SearchedSize(Sample(picture, other)) < searched) choice.filter = other;
    }
    return choice;
}

// One stretch behind the other, each from the start of a row on; empty when memory runs out.
std::span<const std::uint8_t> PngWriter::Sample(const PngPicture& picture, PngFilter filter) {
    const auto row_size = static_cast<std::size_t>(PngRowSize(picture));
    const std::size_t size = row_size * picture.height;
    if (IsSmall(size)) {
        const std::span<std::uint8_t> rows = m_Rows.Take(size);
        if (!rows.empty()) MakePngRows(picture, 0, picture.height, filter, rows);
        return rows;
    }
    const std::size_t stretch = StretchSize(size);
    const std::size_t rows = std::min<std::size_t>(picture.height, (stretch + row_size - 1) / row_size);
    const std::size_t length = std::min(stretch, rows * row_size);
    const std::span<std::uint8_t> room = m_Rows.Take((kStretches - 1) * length + rows * row_size);
    if (room.empty()) return {};
    for (std::size_t i = 0; i < kStretches; ++i) {
        const std::size_t first = (picture.height - rows) * (i + 1) / (kStretches + 1);
        MakePngRows(picture, first, rows, filter, room.subspan(i * length));
    }
    return room.first(kStretches * length);
}

// What a search makes of the sample. It overwrites the place of the file, which comes later.
std::size_t PngWriter::SearchedSize(std::span<const std::uint8_t> sample) {
    return m_Deflate.Compress(sample, m_File.Take(ZlibStreamBound(sample.size())));
}

// Rows are made and written while they are in the cache. 0 when they do not fit or are too long.
std::size_t PngWriter::PutLiterals(const PngPicture& picture, PngFilter filter, std::span<std::uint8_t> out) {
    if (!m_Literals) m_Literals.reset(new (std::nothrow) LiteralStream);
    if (!m_Literals) return 0;
    const auto row_size = static_cast<std::size_t>(PngRowSize(picture));
    if (row_size > kLongestRow) return 0;
    const std::size_t at_once = std::min<std::size_t>(picture.height, RowsAtOnce(row_size, LiteralStream::kBlockSize));
    const std::span<std::uint8_t> room = m_Rows.Take(at_once * row_size);
    if (room.empty()) return 0;
    m_Literals->Begin(out);
    for (std::size_t row = 0; row < picture.height; row += at_once) {
        const std::size_t count = std::min<std::size_t>(at_once, picture.height - row);
        const std::span<std::uint8_t> rows = room.first(count * row_size);
        MakePngRows(picture, row, count, filter, rows);
        if (!m_Literals->Put(rows, row_size, row + count == picture.height)) return 0;
    }
    return m_Literals->End();
}

std::size_t PngWriter::PutSearched(const PngPicture& picture, PngFilter filter, std::span<std::uint8_t> out) {
    const std::span<std::uint8_t> rows = m_Rows.Take(PngRowSize(picture) * picture.height);
    if (rows.empty()) return 0;
    MakePngRows(picture, 0, picture.height, filter, rows);
    return m_Deflate.Compress(rows, out);
}

}  // namespace zel
