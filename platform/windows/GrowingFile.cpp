#include "platform/GrowingFile.h"

#include <windows.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace zel::platform {

namespace {

// What one call is given.
constexpr std::size_t kLargestPiece = std::size_t{64} << 20;

// ERROR_DISK_QUOTA_EXCEEDED, which MinGW's headers lack.
constexpr DWORD kQuotaExceeded = 1295;

OVERLAPPED At(std::uint64_t offset) {
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return place;
}

}  // namespace

struct GrowingFile::State {
    bool Failed() {
        error = GetLastError();
        return false;
    }

    HANDLE file = INVALID_HANDLE_VALUE;
    DWORD error = ERROR_SUCCESS;  // of the last operation
    std::uint64_t size = 0;
    std::uint64_t reserved = 0;
};

GrowingFile::GrowingFile() : m_State(std::make_unique<State>()) {}
GrowingFile::~GrowingFile() { Close(); }

bool GrowingFile::Create(const std::filesystem::path& path, std::span<const std::byte> head) {
    m_State->file = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                                FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    return m_State->file != INVALID_HANDLE_VALUE ? Write(0, head) : m_State->Failed();
}

bool GrowingFile::Reserve(std::uint64_t size) {
    State& state = *m_State;
    state.error = ERROR_SUCCESS;
    if (size <= std::max(state.reserved, state.size)) return true;
    FILE_ALLOCATION_INFO space{};
    space.AllocationSize.QuadPart = static_cast<LONGLONG>(size);
    if (!SetFileInformationByHandle(state.file, FileAllocationInfo, &space, sizeof space)) return state.Failed();
    state.reserved = size;
    return true;
}

bool GrowingFile::Write(std::uint64_t offset, std::span<const std::byte> bytes) {
    State& state = *m_State;
    state.error = ERROR_SUCCESS;
    while (!bytes.empty()) {
        OVERLAPPED place = At(offset);
        DWORD written = 0;
        const auto piece = static_cast<DWORD>(std::min(bytes.size(), kLargestPiece));
        if (!WriteFile(state.file, bytes.data(), piece, &written, &place)) return state.Failed();
        if (written == 0) {
            state.error = ERROR_DISK_FULL;
            return false;
        }
        bytes = bytes.subspan(written);
        offset += written;
        state.size = std::max(state.size, offset);
    }
    return true;
}

bool GrowingFile::Read(std::uint64_t offset, std::span<std::byte> bytes) const {
    m_State->error = ERROR_SUCCESS;
    while (!bytes.empty()) {
        OVERLAPPED place = At(offset);
        DWORD read = 0;
        const auto piece = static_cast<DWORD>(std::min(bytes.size(), kLargestPiece));
        if (!ReadFile(m_State->file, bytes.data(), piece, &read, &place)) return m_State->Failed();
        if (read == 0) {
            m_State->error = ERROR_HANDLE_EOF;
            return false;
        }
        bytes = bytes.subspan(read);
        offset += read;
    }
    return true;
}

// The system writes behind by itself, and holds a writer back before too much waits.
void GrowingFile::WriteBehind(std::uint64_t) {}

// What is reserved beyond the end goes back with the last handle.
bool GrowingFile::Shrink(std::uint64_t size) {
    State& state = *m_State;
    state.error = ERROR_SUCCESS;
    if (state.size <= size) return true;
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
    if (!SetFileInformationByHandle(state.file, FileEndOfFileInfo, &end, sizeof end)) return state.Failed();
    state.size = size;
    return true;
}

bool GrowingFile::Close() {
    State& state = *m_State;
    state.error = ERROR_SUCCESS;
    if (state.file == INVALID_HANDLE_VALUE) return true;
    return CloseHandle(std::exchange(state.file, INVALID_HANDLE_VALUE)) != 0 || state.Failed();
}

GrowingFile::Problem GrowingFile::LastProblem() const {
    switch (m_State->error) {
        case ERROR_SUCCESS:
            return Problem::kNone;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return Problem::kTaken;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
        case kQuotaExceeded:
        case ERROR_FILE_TOO_LARGE:
            return Problem::kDiskFull;
        default:
            return Problem::kOther;
    }
}

std::string GrowingFile::Why() const { return std::system_category().message(static_cast<int>(m_State->error)); }

}  // namespace zel::platform
