#include "tools/zelcam/view/FrameReducer.h"

#include <algorithm>
#include <cstddef>

namespace zelcam {

namespace {

// Where one sample of the result lies on a row of the source. A source pixel is `columns` units wide, a sample of the
// result as many as the source has pixels, so that all weights are whole numbers.
struct Span {
    unsigned first;  // pixel
    unsigned last;
    std::uint32_t first_weight;
    std::uint32_t last_weight;  // 0: the sample ends with the pixel before
};

std::vector<Span> SpansOf(unsigned pixels, unsigned columns) {
    std::vector<Span> spans(columns);
    for (unsigned i = 0; i < columns; ++i) {
        const std::uint64_t begin = std::uint64_t{i} * pixels;
        const std::uint64_t end = begin + pixels;
        const std::uint64_t first = begin / columns;
        const std::uint64_t last = end / columns;
        spans[i] = {static_cast<unsigned>(first), static_cast<unsigned>(last),
                    static_cast<std::uint32_t>(std::min(end, (first + 1) * columns) - begin),
                    first == last ? 0 : static_cast<std::uint32_t>(end - last * columns)};
    }
    return spans;
}

// Channels of the result are the other way round than the frame's.
template <unsigned kChannels>
constexpr unsigned Turned(unsigned channel) {
    return kChannels - 1 - channel;
}

// The weighted sums of one row.
template <unsigned kChannels>
void SumRow(const std::uint16_t* row, const std::vector<Span>& spans, std::uint32_t pixel_weight, std::uint32_t* sums) {
    for (const Span& span : spans) {
        for (unsigned channel = 0; channel < kChannels; ++channel) {
            const std::uint16_t* const values = row + Turned<kChannels>(channel);
            std::uint32_t whole = 0;
            for (unsigned x = span.first + 1; x < span.last; ++x) whole += values[std::size_t{x} * kChannels];
            std::uint32_t sum = values[std::size_t{span.first} * kChannels] * span.first_weight + whole * pixel_weight;
            if (span.last_weight > 0) sum += values[std::size_t{span.last} * kChannels] * span.last_weight;
            *sums++ = sum;
        }
    }
}

// Sums are below 2^53, and a mean that is no whole number is further from one than a double is from the quotient.
void WriteMeans(const std::vector<std::uint64_t>& sums, std::uint64_t weight, std::uint16_t* out) {
    const double divisor = static_cast<double>(weight);
    const auto half = static_cast<std::int64_t>(weight / 2);
    for (const std::uint64_t sum : sums) {
        const double rounded = static_cast<double>(static_cast<std::int64_t>(sum) + half) / divisor;
        *out++ = static_cast<std::uint16_t>(static_cast<std::int32_t>(rounded));
    }
}

template <unsigned kChannels>
void ReduceTo(const Samples& frame, const ReducedPicture& picture, std::uint16_t* out) {
    const Area& area = picture.area;
    const std::vector<Span> spans = SpansOf(area.width, picture.columns);
    const std::size_t length = std::size_t{picture.columns} * kChannels;
    std::vector<std::uint32_t> row_sums(length);
    std::vector<std::uint64_t> sums(length, 0);
    const std::uint64_t weight = std::uint64_t{area.width} * area.height;
    // Downwards it is the same: a source row is `rows` units high, a row of the result `height` units.
    std::uint64_t wanted = area.height;
    for (unsigned y = 0; y < area.height; ++y) {
        const std::size_t start = (std::size_t{area.y + y} * frame.width + area.x) * kChannels;
        SumRow<kChannels>(frame.values.data() + start, spans, picture.columns, row_sums.data());
        const std::uint64_t here = std::min<std::uint64_t>(wanted, picture.rows);
        for (std::size_t i = 0; i < length; ++i) sums[i] += row_sums[i] * here;
        wanted -= here;
        if (wanted > 0) continue;
        WriteMeans(sums, weight, out);
        out += length;
        const std::uint64_t rest = picture.rows - here;
        for (std::size_t i = 0; i < length; ++i) sums[i] = row_sums[i] * rest;
        wanted = area.height - rest;
    }
}

template <unsigned kChannels>
void CopyTo(const Samples& frame, const Area& area, std::uint16_t* out) {
    for (unsigned y = 0; y < area.height; ++y) {
        const std::uint16_t* in = frame.values.data() + (std::size_t{area.y + y} * frame.width + area.x) * kChannels;
        for (unsigned x = 0; x < area.width; ++x, in += kChannels, out += kChannels) {
            for (unsigned channel = 0; channel < kChannels; ++channel) out[channel] = in[Turned<kChannels>(channel)];
        }
    }
}

Area Within(const Area& wanted, const Samples& frame) {
    const bool outside = wanted.x >= frame.width || wanted.y >= frame.height;
    if (outside || wanted.width == 0 || wanted.height == 0) return {0, 0, frame.width, frame.height};
    return {wanted.x, wanted.y, std::min(wanted.width, frame.width - wanted.x),
            std::min(wanted.height, frame.height - wanted.y)};
}

}  // namespace

ReducedPicture Reduce(const Samples& frame, const ViewRequest& request) {
    ReducedPicture picture;
    picture.area = Within(request.area, frame);
    picture.columns = std::clamp(request.columns, 1u, picture.area.width);
    picture.rows = std::clamp(request.rows, 1u, picture.area.height);
    auto samples =
        std::make_shared<std::vector<std::uint16_t>>(std::size_t{picture.columns} * picture.rows * frame.channels);
    const bool whole = picture.columns == picture.area.width && picture.rows == picture.area.height;
    if (frame.channels == 3) {
        whole ? CopyTo<3>(frame, picture.area, samples->data()) : ReduceTo<3>(frame, picture, samples->data());
    } else {
        whole ? CopyTo<1>(frame, picture.area, samples->data()) : ReduceTo<1>(frame, picture, samples->data());
    }
    picture.samples = std::move(samples);
    return picture;
}

}  // namespace zelcam
