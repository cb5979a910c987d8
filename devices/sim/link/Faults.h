// Scripted faults: what goes wrong, when, and how often.
//
//    KIND [ARGUMENT] [after=N] [times=N] [entry=NAME] [text=BEGINNING]
//
// after: how many occasions pass before the first fault (0). times: how many faults (1; 0 = until "clear"). entry: only
// exchanges about this entry of the parameter table count. text: only text commands that begin so; an underscore stands
// for a blank.
#ifndef SIM_FAULTS_H
#define SIM_FAULTS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Mutex.h"

namespace zel::sim {

enum class FaultKind {
    // Occasion: an exchange.
    kShortSend,  // the camera gets nothing, SendData reports one byte less
    kOneByte,    // each receive gets one byte
    kNoReply,
    kDelay,     // argument: milliseconds
    kTruncate,  // argument: bytes that still come
    kGarbage,
    kGarble,     // a byte in the middle of the reply is another one
    kOversize,   // a reply that announces and carries more than the protocols allow
    kException,  // argument: the exception code
    kUnplug,     // the camera is gone before it answers
    // Occasion: an exchange that begins to read a row of a calibration table.
    kBadGain,  // until the row is read again, its first gain reads as 3.0
    kNanGain,  // ... as no number
    // Occasion: a frame.
    kLose,
    kStall,        // argument: milliseconds, 0 = until "clear"
    kUnplugFrame,  // the camera is gone before the frame is handed over
    // Occasion: an operation of the transport.
    kUnplugConnect,
    kUnplugStart,
    kUnplugStop,
    kUnplugClose,
};

enum class FaultOccasion { kExchange, kTableRow, kFrame, kConnect, kStart, kStop, kClose };

struct Fault {
    FaultKind kind;
    int argument = 0;
    int after = 0;
    int times = 1;
    int entry = -1;
    std::string text{};
};

// The fault that a script line describes; empty when it describes none (`error` says why).
std::optional<Fault> ParseFault(std::string_view line, std::string& error);

// Any thread may call it.
class Faults {
  public:
    void Add(const Fault& fault);
    void Clear();
    bool Empty() const;
    unsigned Clears() const;  // how often they were cleared

    // One occasion has come. entry: of an exchange about the parameter table, else -1. text: of a text command. The
    // fault that happens, if any.
    std::optional<Fault> Next(FaultOccasion occasion, int entry = -1, std::string_view text = {});

  private:
    mutable platform::Mutex m_Lock;
    std::vector<Fault> m_Faults ZEL_GUARDED_BY(m_Lock);
    unsigned m_Clears ZEL_GUARDED_BY(m_Lock) = 0;
};

}  // namespace zel::sim

#endif
