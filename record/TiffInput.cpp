#include "record/TiffInput.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <system_error>

#include "record/RecordError.h"

namespace zel::record {

namespace {

constexpr tmsize_t kLargestAllocation = tmsize_t{1} << 30;

}  // namespace

// What libtiff calls. Nothing throws through it.
struct TiffInput::Procedures {
    static TiffInput& Of(void* handle) { return *static_cast<TiffInput*>(handle); }

    static tmsize_t Read(thandle_t handle, void* into, tmsize_t count) {
        std::ifstream& stream = Of(handle).m_Stream;
        stream.read(static_cast<char*>(into), count);
        const auto got = static_cast<tmsize_t>(stream.gcount());
        stream.clear();
        return got;
    }
    static tmsize_t Write(thandle_t, void*, tmsize_t) { return 0; }
    static toff_t Seek(thandle_t handle, toff_t offset, int whence) {
        std::ifstream& stream = Of(handle).m_Stream;
        const auto way = whence == SEEK_SET ? std::ios::beg : whence == SEEK_CUR ? std::ios::cur : std::ios::end;
        stream.seekg(static_cast<std::streamoff>(offset), way);
        stream.clear();
        return static_cast<toff_t>(std::streamoff(stream.tellg()));
    }
    static int Close(thandle_t) { return 0; }
    static toff_t Size(thandle_t handle) { return Of(handle).m_Size; }
    // Files are not mapped: one that shrinks would end the process.
    static int Map(thandle_t, void**, toff_t*) { return 0; }
    static void Unmap(thandle_t, void*, toff_t) {}

    static int Complain(TIFF*, void* handle, const char*, const char* format, va_list arguments) {
        std::array<char, 256> text{};
        std::vsnprintf(text.data(), text.size(), format, arguments);
        try {
            Of(handle).m_Complaint = text.data();
        } catch (const std::bad_alloc&) {
        }
        return 1;  // and nobody else hears of it
    }
    static int Ignore(TIFF*, void*, const char*, const char*, va_list) { return 1; }
};

TiffInput::TiffInput(const std::filesystem::path& path) {
    std::error_code error;
    // A pipe or a device would be waited for.
    if (!std::filesystem::is_regular_file(path, error)) throw RecordError("no such file");
    m_Size = std::filesystem::file_size(path, error);
    m_Stream.open(path, std::ios::binary);
    if (error || !m_Stream) throw RecordError("it can't be opened");
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    if (!options) throw std::bad_alloc();
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, kLargestAllocation);
    TIFFOpenOptionsSetErrorHandlerExtR(options, Procedures::Complain, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, Procedures::Ignore, this);
    m_Tiff = TIFFClientOpenExt("", "rmh", this, Procedures::Read, Procedures::Write, Procedures::Seek,
                               Procedures::Close, Procedures::Size, Procedures::Map, Procedures::Unmap, options);
    TIFFOpenOptionsFree(options);
    if (!m_Tiff) Fail("it is no TIFF file");
}

TiffInput::~TiffInput() {
    if (m_Tiff) TIFFClose(m_Tiff);
}

void TiffInput::Fail(const std::string& otherwise) const {
    throw RecordError(m_Complaint.empty() ? otherwise : m_Complaint);
}

// libtiff makes fields of tags that it does not know, as the file declares them.
std::string TiffInput::Text(std::uint32_t tag) const {
    const TIFFField* const field = TIFFFindField(m_Tiff, tag, TIFF_ANY);
    if (!field || TIFFFieldDataType(field) != TIFF_ASCII || !TIFFFieldPassCount(field)) return {};
    if (TIFFFieldReadCount(field) != TIFF_VARIABLE2) return {};
    std::uint32_t count = 0;
    const char* text = nullptr;
    if (!TIFFGetField(m_Tiff, tag, &count, &text) || !text) return {};
    return {text, std::find(text, text + count, '\0')};
}

}  // namespace zel::record
