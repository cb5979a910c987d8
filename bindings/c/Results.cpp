// Versions, statuses and messages.
#include <mutex>

#include "bindings/c/Call.h"

using zel::c::Guard;

namespace {

// The SDK writes the text into one static buffer.
std::mutex& VersionMutex() {
    static auto* const mutex = new std::mutex;
    return *mutex;
}

}  // namespace

int32_t zel_c_version(void) { return ZEL_C_VERSION; }

const char* zel_status_name(zel_status status) {
    switch (status) {
        case ZEL_OK:
            return "OK";
        case ZEL_STATUS_FAILED:
            return "FAILED";
        case ZEL_STATUS_INVALID_ARGUMENT:
            return "INVALID_ARGUMENT";
        case ZEL_STATUS_NO_CAMERA:
            return "NO_CAMERA";
        case ZEL_STATUS_REFUSED:
            return "REFUSED";
        case ZEL_STATUS_TIMEOUT:
            return "TIMEOUT";
        case ZEL_STATUS_LINK_LOST:
            return "LINK_LOST";
        case ZEL_STATUS_OUTPUT:
            return "OUTPUT";
        case ZEL_STATUS_OUT_OF_MEMORY:
            return "OUT_OF_MEMORY";
        case ZEL_STATUS_BAD_HANDLE:
            return "BAD_HANDLE";
        case ZEL_STATUS_BAD_STRUCT:
            return "BAD_STRUCT";
        case ZEL_STATUS_TOO_SMALL:
            return "TOO_SMALL";
        case ZEL_STATUS_INTERRUPTED:
            return "INTERRUPTED";
        case ZEL_STATUS_SEQUENCE_OVER:
            return "SEQUENCE_OVER";
        case ZEL_STATUS_NO_BUFFERS:
            return "NO_BUFFERS";
        case ZEL_STATUS_BUFFERS_HELD:
            return "BUFFERS_HELD";
        case ZEL_STATUS_WAITS_FOR_HARDWARE:
            return "WAITS_FOR_HARDWARE";
        case ZEL_STATUS_NOT_STARTED:
            return "NOT_STARTED";
        case ZEL_STATUS_EXPOSING:
            return "EXPOSING";
        case ZEL_STATUS_WAITS_FOR_SOFTWARE:
            return "WAITS_FOR_SOFTWARE";
        case ZEL_STATUS_SILENT:
            return "SILENT";
        default:
            return "UNKNOWN";
    }
}

const char* zel_error_message(void) { return zel::c::ThisThreadsError().message; }

zel_status zel_last_error(zel_error* error) {
    // Not through Guard(), which would replace what is asked for.
    try {
        zel::c::RequireStruct(error, "error");
    } catch (const zel::c::Failure& failure) {
        return failure.status();
    } catch (...) {
        return ZEL_STATUS_OUT_OF_MEMORY;
    }
    const zel::c::LastError& last = zel::c::ThisThreadsError();
    zel_error full{sizeof full, last.status, {}, {}, {}};
    zel::c::CutInto(full.problem, last.problem);
    zel::c::CutInto(full.why, last.why);
    zel::c::CutInto(full.hint, last.hint);
    zel::c::FillStruct(error, full);
    return ZEL_OK;
}

zel_status zel_version_text(char* text, size_t size, size_t* length) {
    return Guard(__func__, [&](zel::c::Call&) {
        std::string version;
        {
            const std::lock_guard lock(VersionMutex());
            version = zel::detail::text_or_empty(get_version_str());
        }
        zel::c::AnswerText(version, text, size, length);
    });
}
