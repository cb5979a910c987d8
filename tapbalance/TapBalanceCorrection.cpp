// The samples of frames, through the lookup tables.
#include "platform/Clock.h"
#include "tapbalance/TapBalance.h"

namespace zel {

namespace {

constexpr const char* kTranslate = "TapBalance::TranslatePixels";

TapTables Tables(std::shared_ptr<const LookupTables> made) {
    TapTables tables;
    if (!made) return tables;
    tables.taps = made->taps;
    tables.mask = made->entries - 1;
    for (std::size_t tap = 0; tap < static_cast<std::size_t>(made->taps); ++tap) {
        tables.lut[tap] = std::span(made->tables[tap]).first(made->entries);
        tables.lines[tap] = &made->lines[tap];
    }
    tables.owner = std::move(made);
    return tables;
}

// Left half of each row: tap 1, right half: tap 2. A middle column belongs to the right half.
void CorrectTwoTaps(std::span<std::uint16_t> frame, std::size_t w, const TapTables& tables) {
    for (; !frame.empty(); frame = frame.subspan(w)) {
        tables.LookUp(frame.first(w / 2), 0, tables.mask);
        tables.LookUp(frame.first(w).subspan(w / 2), 1, tables.mask);
    }
}

// Clockwise from the top left quadrant: taps 1, 2, 3, 4. Middle row and column belong to the bottom and the right.
void CorrectFourTaps(std::span<std::uint16_t> frame, std::size_t w, std::size_t h, const TapTables& tables) {
    for (std::size_t row = 0; row < h; ++row, frame = frame.subspan(w)) {
        const bool top = row < h / 2;
        tables.LookUp(frame.first(w / 2), top ? 0 : 3, 0xFFFF);
        tables.LookUp(frame.first(w).subspan(w / 2), top ? 1 : 2, 0xFFFF);
    }
}

}  // namespace

TapTables TapBalance::TablesFor(int select) const {
    if (!m_Enabled || m_DataFault || !IsTable(select)) return {};
    return Tables(Published(select));
}

bool TapBalance::TranslatePixels(int w, int h, int num_taps, int select, unsigned short* pixels) {
    if (!m_Enabled) {
        ZEL_LOG(m_Logger, kLogTrace, kTranslate, "TapBalance::TranslatePixels() - m_Enabled is false\n");
        return true;
    }
    const TapTables tables = IsTable(select) ? Tables(Published(select)) : TapTables();
    if (!tables) {
        ZEL_LOG(m_Logger, kLogError, kTranslate, "TapBalance::TranslatePixels() - m_TapBalanceData[select:%d] is 0\n",
                select);
        return false;
    }
    if (m_DataFault) {
        ZEL_LOG(m_Logger, kLogError, kTranslate, "m_DataFault == true");
        return false;
    }
    ZEL_LOG(m_Logger, kLogTrace, kTranslate, "TapBalance::TranslatePixels(w:%d h:%d num_taps:%d select:%d)\n", w, h,
            num_taps, select);
    const std::uint64_t samples =
        w < 0 || h < 0 ? 0 : std::uint64_t{static_cast<unsigned>(w)} * static_cast<unsigned>(h);
    const bool fits = w >= 0 && h >= 0 && samples <= SIZE_MAX / sizeof *pixels && (pixels || samples == 0);
    if (!fits || (num_taps != 2 && num_taps != 4) || num_taps > tables.taps) {
        ZEL_LOG(m_Logger, kLogError, kTranslate, "***ERROR***: w:%d h:%d num_taps:%d do not fit a table of %d taps", w,
                h, num_taps, tables.taps);
        return false;
    }
    const std::uint32_t start = platform::MillisecondClock();
    const std::span frame(pixels, static_cast<std::size_t>(samples));
    if (num_taps == 2) {
        CorrectTwoTaps(frame, static_cast<std::size_t>(w), tables);
    } else if (!frame.empty()) {
        CorrectFourTaps(frame, static_cast<std::size_t>(w), static_cast<std::size_t>(h), tables);
    }
    ZEL_LOG(m_Logger, kLogTrace, kTranslate, "PostProcessTapBalance() took %d ms\n",
            static_cast<int>(platform::MillisecondClock() - start));
    return true;
}

}  // namespace zel
