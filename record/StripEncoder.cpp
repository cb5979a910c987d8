#include "record/StripEncoder.h"

#include <tiffio.h>

#include <cstdio>

#include "record/PageTags.h"

namespace zel::record {

namespace {

// A file in memory that keeps what is written to the one strip of its only page.
class StripCatcher {
  public:
    explicit StripCatcher(std::vector<std::byte>& bytes) : m_Bytes(bytes) {
        m_Bytes.clear();
        TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
        const auto quiet = [](TIFF*, void*, const char*, const char*, va_list) { return 1; };
        TIFFOpenOptionsSetErrorHandlerExtR(options, quiet, nullptr);
        TIFFOpenOptionsSetWarningHandlerExtR(options, quiet, nullptr);
        m_Tiff = TIFFClientOpenExt(
            "strip", "w8m", this, [](thandle_t, void*, tmsize_t) -> tmsize_t { return -1; }, &OnWrite, &OnSeek,
            [](thandle_t) { return 0; }, [](thandle_t self) { return static_cast<StripCatcher*>(self)->End(); },
            nullptr, nullptr, options);
        TIFFOpenOptionsFree(options);
        if (!m_Tiff) throw RecordError("no memory for compression");
        // From here on: the strip. What came before was the head of the file.
        m_Bytes.clear();
        m_HeadSize = m_Position;
    }
    ~StripCatcher() { TIFFCleanup(m_Tiff); }
    StripCatcher(const StripCatcher&) = delete;
    StripCatcher& operator=(const StripCatcher&) = delete;

    TIFF* Handle() const { return m_Tiff; }

  private:
    toff_t End() const { return m_HeadSize + m_Bytes.size(); }

    static tmsize_t OnWrite(thandle_t self, void* data, tmsize_t size) {
        auto& file = *static_cast<StripCatcher*>(self);
        const auto* const bytes = static_cast<const std::byte*>(data);
        file.m_Bytes.insert(file.m_Bytes.end(), bytes, bytes + size);
        file.m_Position += static_cast<toff_t>(size);
        return size;
    }
    static toff_t OnSeek(thandle_t self, toff_t offset, int from) {
        auto& file = *static_cast<StripCatcher*>(self);
        file.m_Position = from == SEEK_END ? file.End() + offset : (from == SEEK_CUR ? file.m_Position : 0) + offset;
        return file.m_Position;
    }

    std::vector<std::byte>& m_Bytes;
    TIFF* m_Tiff = nullptr;
    toff_t m_Position = 0;
    toff_t m_HeadSize = 0;
};

}  // namespace

std::span<const std::byte> StripEncoder::Encode(std::span<const std::uint16_t> samples) {
    if (m_Compression == Compression::kNone) return std::as_bytes(samples);
    std::size_t size = 0;
    {
        StripCatcher strip(m_Bytes);
        SetLayoutTags(strip.Handle(), m_Width, m_Height, m_Compression);
        // It leaves the samples as they are: the differences are taken in memory of its own.
        void* const data = const_cast<std::uint16_t*>(samples.data());
        const auto whole = static_cast<tmsize_t>(samples.size_bytes());
        if (TIFFWriteEncodedStrip(strip.Handle(), 0, data, whole) != whole) {
            throw RecordError("a frame can't be compressed");
        }
        size = m_Bytes.size();
    }
    // A page's directory came behind it as the file was closed.
    return std::span(m_Bytes).first(size);
}

}  // namespace zel::record
