#include "bindings/c/Failure.h"

#include <cstdio>
#include <exception>
#include <new>

#include "bindings/c/Texts.h"

namespace zel::c {

namespace {

// The statuses begin with the kinds, in their order.
constexpr zel_status StatusOf(ErrorKind kind) { return static_cast<zel_status>(kind) + ZEL_STATUS_FAILED; }
static_assert(StatusOf(ErrorKind::failed) == ZEL_STATUS_FAILED);
static_assert(StatusOf(ErrorKind::invalid_argument) == ZEL_STATUS_INVALID_ARGUMENT);
static_assert(StatusOf(ErrorKind::no_camera) == ZEL_STATUS_NO_CAMERA);
static_assert(StatusOf(ErrorKind::refused) == ZEL_STATUS_REFUSED);
static_assert(StatusOf(ErrorKind::timeout) == ZEL_STATUS_TIMEOUT);
static_assert(StatusOf(ErrorKind::link_lost) == ZEL_STATUS_LINK_LOST);
static_assert(StatusOf(ErrorKind::output) == ZEL_STATUS_OUTPUT);

}  // namespace

void LastError::Set(zel_status new_status, const char* new_problem, const char* new_why,
                    const char* new_hint) noexcept {
    status = new_status;
    CutInto(problem, new_problem);
    CutInto(why, new_why);
    CutInto(hint, new_hint);
    std::snprintf(message, sizeof message, "%s%s%s%s%s", problem, *why ? ": " : "", why, *hint ? "; " : "", hint);
}

void LastError::Clear() noexcept {
    status = ZEL_OK;
    *problem = *why = *hint = *message = '\0';
}

LastError& ThisThreadsError() noexcept {
    constinit thread_local LastError error{};
    return error;
}

zel_status RememberException() noexcept {
    LastError& last = ThisThreadsError();
    const auto remember = [&last](zel_status status, const Error& error) {
        last.Set(status, error.problem().c_str(), error.why().c_str(), error.hint().c_str());
    };
    try {
        throw;
    } catch (const Failure& failure) {
        remember(failure.status(), failure);
    } catch (const Error& error) {
        remember(StatusOf(error.kind()), error);
    } catch (const std::bad_alloc&) {
        last.Set(ZEL_STATUS_OUT_OF_MEMORY, "memory ran out", "", "use fewer image buffers, or let go of frames");
    } catch (const std::exception& exception) {
        last.Set(ZEL_STATUS_FAILED, "the call failed", exception.what(), "");
    } catch (...) {
        last.Set(ZEL_STATUS_FAILED, "the call failed", "for an unknown reason", "");
    }
    return last.status;
}

}  // namespace zel::c
