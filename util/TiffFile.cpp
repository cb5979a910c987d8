#include "util/TiffFile.h"

namespace zel {

namespace {

enum FieldType : std::uint16_t { kShort = 3, kLong = 4, kRational = 5 };

struct Entry {
    std::uint16_t tag;
    FieldType type;
    std::uint32_t value;  // a short stands in the first two bytes of the value field; the other two are 0
};

constexpr std::uint32_t kDirectoryOffset = 8;
constexpr std::uint16_t kEntryCount = 14;
constexpr std::uint32_t kEntrySize = 12;
constexpr std::uint32_t kXResolutionOffset = kDirectoryOffset + 2 + kEntryCount * kEntrySize + 4;
constexpr std::uint32_t kYResolutionOffset = kXResolutionOffset + 8;
static_assert(kXResolutionOffset == 182 && kYResolutionOffset == 190);
static_assert(kYResolutionOffset + 8 == kTiffHeadSize);

// 1200 pixels per inch.
constexpr std::uint32_t kResolutionNumerator = 1200000;
constexpr std::uint32_t kResolutionDenominator = 1000;

class LittleEndianWriter {
  public:
    explicit LittleEndianWriter(std::uint8_t* out) : m_Out(out) {}

    void Put16(std::uint16_t value) {
        *m_Out++ = static_cast<std::uint8_t>(value);
        *m_Out++ = static_cast<std::uint8_t>(value >> 8);
    }
    void Put32(std::uint32_t value) {
        Put16(static_cast<std::uint16_t>(value));
        Put16(static_cast<std::uint16_t>(value >> 16));
    }
    void Put(const Entry& entry) {
        Put16(entry.tag);
        Put16(entry.type);
        Put32(1);
        Put32(entry.type == kShort ? static_cast<std::uint16_t>(entry.value) : entry.value);
    }

  private:
    std::uint8_t* m_Out;
};

}  // namespace

TiffHead MakeTiffHead(std::uint32_t width, std::uint32_t height, std::uint32_t pixel_bytes) {
    // On purpose: PlanarConfiguration comes second, out of the ascending order of tags.
    const Entry entries[] = {
        {254, kLong, 0},                       // NewSubfileType
        {284, kShort, 1},                      // PlanarConfiguration
        {256, kLong, width},                   // ImageWidth
        {257, kLong, height},                  // ImageLength
        {258, kShort, 16},                     // BitsPerSample
        {259, kShort, 1},                      // Compression: none
        {262, kShort, 1},                      // PhotometricInterpretation: black is zero
        {273, kLong, kTiffHeadSize},           // StripOffsets
        {277, kShort, 1},                      // SamplesPerPixel
        {278, kShort, height},                 // RowsPerStrip
        {279, kLong, pixel_bytes},             // StripByteCounts
        {282, kRational, kXResolutionOffset},  // XResolution
        {283, kRational, kYResolutionOffset},  // YResolution
        {296, kShort, 2},                      // ResolutionUnit: inch
    };
    static_assert(sizeof entries / sizeof entries[0] == kEntryCount);

    TiffHead head;
    LittleEndianWriter out(head.data());
    out.Put16('I' | 'I' << 8);
    out.Put16(42);
    out.Put32(kDirectoryOffset);
    out.Put16(kEntryCount);
    for (const Entry& entry : entries) out.Put(entry);
    out.Put32(0);
    for (int axis = 0; axis < 2; ++axis) {
        out.Put32(kResolutionNumerator);
        out.Put32(kResolutionDenominator);
    }
    return head;
}

}  // namespace zel
