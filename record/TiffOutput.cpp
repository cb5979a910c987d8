#include "record/TiffOutput.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include "record/RecordError.h"

namespace zel::record {

namespace {

using Problem = platform::GrowingFile::Problem;

std::string NameOf(const std::filesystem::path& path) {
    const std::u8string name = path.u8string();
    return {name.begin(), name.end()};
}

std::uint64_t RoundedUp(std::uint64_t value, std::uint64_t step) { return (value + step - 1) / step * step; }

int DoNotClose(thandle_t) { return 0; }

// Of a BigTIFF file; and with the gap behind it, after which the first strip comes.
constexpr std::uint64_t kHeaderSize = 16;
constexpr std::uint64_t kHeadSize = 4096;

// Copies the part of `from`, which lies at `from_offset`, that `to` covers.
void Overlay(std::uint64_t offset, std::span<std::byte> to, std::uint64_t from_offset,
             std::span<const std::byte> from) {
    const std::uint64_t begin = std::max(offset, from_offset);
    const std::uint64_t end = std::min(offset + to.size(), from_offset + from.size());
    if (begin >= end) return;
    std::memcpy(to.data() + (begin - offset), from.data() + (begin - from_offset),
                static_cast<std::size_t>(end - begin));
}

bool Covers(std::uint64_t from, std::size_t size, std::uint64_t offset, std::size_t wanted) {
    return offset >= from && offset + wanted <= from + size;
}

}  // namespace

TiffOutput::TiffOutput(const std::filesystem::path& path, std::uint64_t alignment)
    : m_Path(path), m_Alignment(alignment) {
    Begin();
    Open("w8m");
    // With its header the file is whole from the beginning.
    if (!m_File.Create(path, m_New)) {
        TIFFCleanup(m_Tiff);
        if (m_File.LastProblem() == Problem::kTaken)
            throw FileTakenError("there is a file '" + NameOf(path) + "' already");
        if (m_File.LastProblem() == Problem::kDiskFull)
            throw DiskFullError("'" + NameOf(path) + "' can't be made: " + m_File.Why());
        throw RecordError("'" + NameOf(path) + "' can't be made: " + m_File.Why());
    }
    Commit();
    m_End = kHeadSize;  // the gap is there from the beginning
}

// libtiff writes once more what has changed: into memory, where it ends.
TiffOutput::~TiffOutput() {
    Begin();
    if (m_Tiff) TIFFCleanup(m_Tiff);
    m_File.Shrink(m_End);
}

void TiffOutput::Open(const char* mode) {
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options, &OnError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, &OnError, this);
    m_Tiff = TIFFClientOpenExt("recording", mode, this, &OnRead, &OnWrite, &OnSeek, &DoNotClose, &OnSize, nullptr,
                               nullptr, options);
    TIFFOpenOptionsFree(options);
    if (!m_Tiff) Fail("'" + NameOf(m_Path) + "' can't be used");
}

void TiffOutput::Reopen() {
    Begin();
    TIFFCleanup(std::exchange(m_Tiff, nullptr));
    Drop();
    m_Position = 0;
    // Opened for reading, libtiff would cut the strips up.
    Open("am");
    if (TIFFSetDirectory(m_Tiff, 0) != 1) Fail("the first page of '" + NameOf(m_Path) + "' can't be read");
}

void TiffOutput::Begin() {
    Drop();
    m_Gathering = true;
    m_Start = RoundedUp(m_End, 2);
}

void TiffOutput::BeginInGap() {
    Begin();
    m_Start = kHeaderSize;
    m_Room = kHeadSize - kHeaderSize;
}

void TiffOutput::Commit() {
    m_Gathering = false;
    if (m_Room > 0 && m_New.size() > m_Room) throw DiskFullError("the end of '" + NameOf(m_Path) + "' finds no room");
    bool written = m_New.empty() || m_File.Write(m_Start, m_New);
    for (const auto& [offset, bytes] : m_Pointers) written = written && m_File.Write(offset, bytes);
    if (!written) Fail("'" + NameOf(m_Path) + "' can't be written");
    m_End = std::max(m_End, m_Start + m_New.size());
    m_LastStart = m_Start;
    m_Last = std::exchange(m_New, {});
    m_New.reserve(m_Last.size() + 64);
    m_Pointers.clear();
}

void TiffOutput::Drop() {
    m_Gathering = false;
    m_Room = 0;
    m_New.clear();
    m_Pointers.clear();
}

void TiffOutput::Close() {
    if (!m_File.Shrink(m_End) || !m_File.Close()) Fail("'" + NameOf(m_Path) + "' can't be closed");
}

void TiffOutput::Require(std::uint64_t bytes, std::uint64_t ahead) {
    const std::uint64_t end = EndForNext() + bytes;
    if (m_File.Reserve(end)) return;
    if (m_File.Reserve(end + ahead) || m_File.Reserve(end)) return;
    // Where nothing can be reserved, writing tells.
    if (m_File.LastProblem() == Problem::kDiskFull) Fail("'" + NameOf(m_Path) + "' can't grow");
}

void TiffOutput::Fail(const std::string& what) {
    if (m_File.LastProblem() == Problem::kNone) throw RecordError(what + ": " + m_Problem);
    if (m_File.LastProblem() == Problem::kDiskFull) throw DiskFullError(what + ": " + m_File.Why());
    throw RecordError(what + ": " + m_File.Why());
}

std::uint64_t TiffOutput::EndForNext() const {
    return m_Gathering ? m_Start + m_New.size() : RoundedUp(m_End, m_Alignment);
}

bool TiffOutput::Read(std::uint64_t offset, std::span<std::byte> bytes) const {
    if (!m_New.empty() && Covers(m_Start, m_New.size(), offset, bytes.size())) {
        Overlay(offset, bytes, m_Start, m_New);
    } else if (Covers(m_LastStart, m_Last.size(), offset, bytes.size())) {
        Overlay(offset, bytes, m_LastStart, m_Last);
    } else if (!m_File.Read(offset, bytes)) {
        return false;
    }
    for (const auto& [place, pointer] : m_Pointers) Overlay(offset, bytes, place, pointer);
    return true;
}

bool TiffOutput::Write(std::uint64_t offset, std::span<const std::byte> bytes) {
    if (!m_Gathering) {
        if (!m_File.Write(offset, bytes)) return false;
        m_End = std::max(m_End, offset + bytes.size());
        return true;
    }
    if (offset < m_Start) {
        m_Pointers[offset].assign(bytes.begin(), bytes.end());
        return true;
    }
    const auto place = static_cast<std::size_t>(offset - m_Start);
    m_New.resize(std::max(m_New.size(), place + bytes.size()));
    std::memcpy(m_New.data() + place, bytes.data(), bytes.size());
    return true;
}

tmsize_t TiffOutput::OnRead(thandle_t self, void* data, tmsize_t size) {
    auto& output = *static_cast<TiffOutput*>(self);
    if (!output.Read(output.m_Position, {static_cast<std::byte*>(data), static_cast<std::size_t>(size)})) return -1;
    output.m_Position += static_cast<std::uint64_t>(size);
    return size;
}

tmsize_t TiffOutput::OnWrite(thandle_t self, void* data, tmsize_t size) {
    auto& output = *static_cast<TiffOutput*>(self);
    try {
        if (!output.Write(output.m_Position, {static_cast<const std::byte*>(data), static_cast<std::size_t>(size)})) {
            return -1;
        }
    } catch (const std::bad_alloc&) {
        return -1;  // nothing is thrown through libtiff
    }
    output.m_Position += static_cast<std::uint64_t>(size);
    return size;
}

toff_t TiffOutput::OnSeek(thandle_t self, toff_t offset, int from) {
    auto& output = *static_cast<TiffOutput*>(self);
    if (from == SEEK_END) {
        output.m_Position = output.EndForNext() + offset;
    } else {
        output.m_Position = (from == SEEK_CUR ? output.m_Position : 0) + offset;
    }
    return output.m_Position;
}

toff_t TiffOutput::OnSize(thandle_t self) { return static_cast<TiffOutput*>(self)->EndForNext(); }

int TiffOutput::OnError(TIFF*, void* self, const char*, const char* format, va_list values) {
    std::array<char, 256> text{};
    std::vsnprintf(text.data(), text.size(), format, values);
    try {
        static_cast<TiffOutput*>(self)->m_Problem = text.data();
    } catch (const std::bad_alloc&) {
    }
    return 1;
}

}  // namespace zel::record
