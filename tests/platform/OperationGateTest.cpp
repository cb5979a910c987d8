#include "platform/OperationGate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace zel::platform {
namespace {

using Entry = OperationGate::Entry;
using Kind = OperationGate::Kind;

TEST(OperationGate, RefusesOperationsWhileAnyReasonStands) {
    OperationGate gate;
    gate.Shut(1);
    gate.Shut(2);
    gate.Open(1);
    EXPECT_FALSE(Entry(gate));
    EXPECT_TRUE(Entry(gate, Kind::kAlways));
    EXPECT_TRUE(Entry(gate, Kind::kCloser));
    gate.Open(2);
    const Entry entry(gate);
    EXPECT_TRUE(entry);
    EXPECT_FALSE(gate.ShutWhenEmpty(4));
    EXPECT_TRUE(Entry(gate));
}

// Two visitors take over from each other, so that the gate is never empty.
TEST(OperationGate, AStreamOfVisitorsKeepsNobodyWaiting) {
    OperationGate gate;
    std::atomic<int> visits{0};
    std::atomic<bool> done{false};
    const auto visit = [&] {
        while (!done) {
            const Entry entry(gate, Kind::kAlways);
            const int own = ++visits;
            while (!done && visits == own) std::this_thread::yield();
        }
    };
    std::thread first(visit), second(visit);
    while (visits < 2) std::this_thread::yield();
    gate.AwaitOthers();
    done = true;
    first.join();
    second.join();
    gate.AwaitAll();
    EXPECT_TRUE(gate.ShutWhenEmpty(1));
}

}  // namespace
}  // namespace zel::platform
