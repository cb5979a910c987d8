// What may go wrong in a session, once, at one moment of it.
#ifndef TESTS_CAMPAIGN_FAULT_H
#define TESTS_CAMPAIGN_FAULT_H

namespace zel::campaign {

// Moments that are counted from 1 in each session.
enum class Occasion {
    kExchange,   // a datagram goes to the camera
    kOperation,  // another call of the transport, or of the plug-in for one
    kFrame,      // a frame is ready on the link
    kAllocation  // the SDK asks for memory
};
inline constexpr const char* kOccasionNames[] = {"exchange", "operation", "frame", "allocation"};
inline constexpr int kOccasions = 4;

enum class Effect {
    kShortSend,   // `amount` bytes less are sent, and nothing arrives; -1: the transport answers that
    kSilence,     // the camera does what it is told and answers nothing, `amount` times
    kGarbage,     // 64 bytes without sense instead of the reply
    kGarble,      // one bit of the reply is turned
    kTruncate,    // the first `amount` percent of the reply, a byte at least unless 0
    kOversize,    // a reply that announces and carries 4096 bytes
    kException,   // the camera refuses with the code `amount`
    kDelay,       // the reply comes after `amount` ms
    kOneByte,     // each receive gets one byte
    kFalseCount,  // receive calls of this exchange store nothing and answer `amount`
    kUnplug,      // the camera is gone; `amount` 1: plugged in after the call, 2: at once, by another thread
    kDead,        // the link is dead, and further searches get no transport
    kRefuse,      // the operation is not done and answers an error
    kFail,        // it is done and answers an error
    kLose,        // the frame is lost
    kNoMemory     // `amount` allocations fail; 0: all from here on
};

struct FaultKind {
    const char* name;
    Occasion occasion;
    Effect effect;
    int amount;
    bool closes_sdk = false;  // the SDK is closed while the fault lasts
};

inline constexpr int kForEver = 1 << 30;
inline constexpr FaultKind kFaultKinds[] = {
    {"short-send", Occasion::kExchange, Effect::kShortSend, 1},
    {"failed-send", Occasion::kExchange, Effect::kShortSend, -1},
    {"silence", Occasion::kExchange, Effect::kSilence, 1},
    {"silence-4", Occasion::kExchange, Effect::kSilence, 4},
    {"silence-on", Occasion::kExchange, Effect::kSilence, kForEver},
    {"silence-on-close", Occasion::kExchange, Effect::kSilence, kForEver, true},
    {"garbage", Occasion::kExchange, Effect::kGarbage, 0},
    {"garble", Occasion::kExchange, Effect::kGarble, 0},
    {"truncate-0", Occasion::kExchange, Effect::kTruncate, 1},
    {"truncate-50", Occasion::kExchange, Effect::kTruncate, 50},
    {"truncate-99", Occasion::kExchange, Effect::kTruncate, 99},
    {"oversize", Occasion::kExchange, Effect::kOversize, 0},
    {"exception", Occasion::kExchange, Effect::kException, 0x16},
    {"exception-index", Occasion::kExchange, Effect::kException, 0x14},
    {"delay", Occasion::kExchange, Effect::kDelay, 4000},
    {"delay-long", Occasion::kExchange, Effect::kDelay, 6000},
    {"one-byte", Occasion::kExchange, Effect::kOneByte, 0},
    {"count-too-high", Occasion::kExchange, Effect::kFalseCount, 100000},
    {"count-negative", Occasion::kExchange, Effect::kFalseCount, -1},
    {"disconnect", Occasion::kExchange, Effect::kUnplug, 0},
    {"disconnect-close", Occasion::kExchange, Effect::kUnplug, 0, true},
    {"reconnect", Occasion::kExchange, Effect::kUnplug, 1},
    {"reconnect-at-once", Occasion::kExchange, Effect::kUnplug, 2},
    {"null-transport", Occasion::kExchange, Effect::kDead, 0},
    {"refuse", Occasion::kOperation, Effect::kRefuse, 0},
    {"fail", Occasion::kOperation, Effect::kFail, 0},
    {"disconnect-before", Occasion::kOperation, Effect::kUnplug, 0},
    {"reconnect-after", Occasion::kOperation, Effect::kUnplug, 1},
    {"lost-frame", Occasion::kFrame, Effect::kLose, 0},
    {"disconnect-frame", Occasion::kFrame, Effect::kUnplug, 0},
    {"reconnect-frame", Occasion::kFrame, Effect::kUnplug, 1},
    {"no-memory", Occasion::kAllocation, Effect::kNoMemory, 1},
    {"no-memory-6", Occasion::kAllocation, Effect::kNoMemory, 6},
    {"no-memory-on", Occasion::kAllocation, Effect::kNoMemory, kForEver},
    {"no-memory-close", Occasion::kAllocation, Effect::kNoMemory, kForEver, true},
};

}  // namespace zel::campaign

#endif
