#include "platform/GrowingFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace zel::platform {

namespace {

// What may wait in memory for the disk.
constexpr std::uint64_t kMostUnwritten = std::uint64_t{64} << 20;
constexpr std::uint64_t kPage = 4096;

}  // namespace

struct GrowingFile::State {
    bool Failed() {
        error = errno;
        return false;
    }

    int file = -1;
    int error = 0;  // of the last operation
    std::uint64_t size = 0;
    std::uint64_t reserved = 0;
    std::uint64_t begun = 0;    // up to here the system was asked to write
    std::uint64_t settled = 0;  // up to here it has
};

GrowingFile::GrowingFile() : m_State(std::make_unique<State>()) {}
GrowingFile::~GrowingFile() { Close(); }

bool GrowingFile::Create(const std::filesystem::path& path, std::span<const std::byte> head) {
    State& state = *m_State;
    const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
    state.file = open(folder.c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, 0666);
    if (state.file >= 0) {
        if (!Write(0, head)) return false;
        const std::string nameless = "/proc/self/fd/" + std::to_string(state.file);
        if (linkat(AT_FDCWD, nameless.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0) return true;
        const int error = errno;
        close(std::exchange(state.file, -1));
        state.error = error;
        if (error == EEXIST) return false;
    }
    // A file system without nameless files, or a system without /proc.
    state.file = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (state.file < 0) return state.Failed();
    if (Write(0, head)) return true;
    unlink(path.c_str());
    return false;
}

bool GrowingFile::Reserve(std::uint64_t size) {
    State& state = *m_State;
    state.error = 0;
    const std::uint64_t from = std::max(state.reserved, state.size);
    if (size <= from) return true;
    const int done =
        fallocate(state.file, FALLOC_FL_KEEP_SIZE, static_cast<off_t>(from), static_cast<off_t>(size - from));
    if (done == 0) state.reserved = size;
    return done == 0 || state.Failed();
}

bool GrowingFile::Write(std::uint64_t offset, std::span<const std::byte> bytes) {
    State& state = *m_State;
    state.error = 0;
    while (!bytes.empty()) {
        const ssize_t written = pwrite(state.file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return state.Failed();
        bytes = bytes.subspan(static_cast<std::size_t>(written));
        offset += static_cast<std::uint64_t>(written);
        state.size = std::max(state.size, offset);
    }
    return true;
}

bool GrowingFile::Read(std::uint64_t offset, std::span<std::byte> bytes) const {
    m_State->error = 0;
    while (!bytes.empty()) {
        const ssize_t read = pread(m_State->file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (read < 0 && errno == EINTR) continue;
        if (read < 0) return m_State->Failed();
        if (read == 0) {
            m_State->error = EIO;
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(read));
        offset += static_cast<std::uint64_t>(read);
    }
    return true;
}

void GrowingFile::WriteBehind(std::uint64_t offset) {
    State& state = *m_State;
    const auto range = [](std::uint64_t from, std::uint64_t to) {
        return std::pair(static_cast<off_t>(from), static_cast<off_t>(to - from));
    };
    // Whole pages: one that is written on would go to the disk twice.
    offset -= offset % kPage;
    if (offset <= state.begun) return;
    const auto [from, length] = range(state.begun, offset);
    sync_file_range(state.file, from, length, SYNC_FILE_RANGE_WRITE);
    state.begun = offset;
    if (offset - state.settled <= kMostUnwritten) return;
    const std::uint64_t behind = offset - kMostUnwritten / 2;
    const auto [first, count] = range(state.settled, behind - behind % kPage);
    sync_file_range(state.file, first, count,
                    SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER);
    // Nobody reads it soon, and what other programs have in memory is worth more.
    posix_fadvise(state.file, first, count, POSIX_FADV_DONTNEED);
    state.settled = behind - behind % kPage;
}

bool GrowingFile::Shrink(std::uint64_t size) {
    State& state = *m_State;
    state.error = 0;
    if (std::max(state.reserved, state.size) <= size) return true;
    if (ftruncate(state.file, static_cast<off_t>(size)) != 0) return state.Failed();
    state.reserved = state.size = size;
    return true;
}

bool GrowingFile::Close() {
    m_State->error = 0;
    return m_State->file < 0 || close(std::exchange(m_State->file, -1)) == 0 || m_State->Failed();
}

GrowingFile::Problem GrowingFile::LastProblem() const {
    switch (m_State->error) {
        case 0:
            return Problem::kNone;
        case EEXIST:
            return Problem::kTaken;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return Problem::kDiskFull;
        default:
            return Problem::kOther;
    }
}

std::string GrowingFile::Why() const { return std::generic_category().message(m_State->error); }

}  // namespace zel::platform
