// What a soak counts: frames by what became of them, and what was done and went wrong meanwhile.
#ifndef BENCH_SOAK_SOAKCOUNTS_H
#define BENCH_SOAK_SOAKCOUNTS_H

#include <atomic>
#include <cstdint>
#include <iterator>

#include "zel/Error.h"

namespace zel::soak {

// A frame that was sent is taken by the application, passed over for a newer one, lost on the link, finds no free
// buffer, or waits in a run that is given up. What is neither is unaccounted for.
enum Count {
    kTaken,
    kPassedOver,
    kLost,
    kNoBuffer,
    kAborted,
    kUnaccounted,
    kSent,
    kSessions,
    kRuns,
    kSearches,
    kFaults,
    kMissingRecords,
    kErrors  // the first of those by kind
};
inline constexpr const char* kCountNames[] = {"taken",         "passed_over",    "lost",
                                              "no_buffer",     "aborted",        "unaccounted",
                                              "sent",          "sessions",       "runs",
                                              "searches",      "faults",         "missing_records",
                                              "error_failed",  "error_argument", "error_no_camera",
                                              "error_refused", "error_timeout",  "error_link_lost",
                                              "error_output"};
inline constexpr std::size_t kCounts = std::size(kCountNames);

struct SoakCounts {
    std::atomic<std::uint64_t> of[kCounts] = {};

    void Add(Count what, std::uint64_t number = 1) { of[what] += number; }
    void Add(const Error& error) { ++of[kErrors + static_cast<int>(error.kind())]; }
};

}  // namespace zel::soak

#endif
