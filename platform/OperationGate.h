// Keeps an object alive while somebody is inside of it: operations enter and leave, whoever is about to close or delete
// the object shuts the gate and waits until the others have left.
//
// An entry is a link in a list through the callers' stacks. The gate therefore knows which threads are inside, a thread
// never waits for itself, and entering needs no memory that could be missing.
#ifndef PLATFORM_OPERATIONGATE_H
#define PLATFORM_OPERATIONGATE_H

#include <cstdint>
#include <thread>

#include "platform/Mutex.h"

namespace zel::platform {

class OperationGate {
  public:
    enum class Kind : unsigned char {
        kOperation,  // refused while the gate is shut
        kAlways,     // let in all the same: what has to come to a proper end, and what only reads
        kCloser,     // let in all the same; AwaitOthers does not wait for it
    };

    // A stay inside, from construction to destruction, on one thread.
    class Entry {
      public:
        explicit Entry(OperationGate& gate, Kind kind = Kind::kOperation);
        ~Entry();
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;

        // Whether the gate let it in.
        explicit operator bool() const { return m_Inside; }

      private:
        friend class OperationGate;
        OperationGate& m_Gate;
        const Kind m_Kind;
        const std::thread::id m_Thread = std::this_thread::get_id();
        bool m_Inside = false;
        unsigned m_Cancellations = 0;
        std::uint64_t m_Number = 0;
        Entry* m_Next = nullptr;
        Entry** m_Link = nullptr;
    };

    OperationGate() = default;
    OperationGate(const OperationGate&) = delete;
    OperationGate& operator=(const OperationGate&) = delete;

    // The one reason for which those are refused, too, who are let in all the same otherwise; closers are not.
    static constexpr unsigned kForGood = 1u << 31;

    // Refuses operations for one more reason, a bit of the owner's choice; open again when every reason is taken back.
    void Shut(unsigned reason);
    void Open(unsigned reason);
    // Whether it is shut for one of these reasons.
    bool IsShut(unsigned reasons);
    // Shuts the gate when nobody is inside; false, and nothing done, otherwise.
    bool ShutWhenEmpty(unsigned reason);

    // Waits until no other thread is in an operation, and until those have left that were let in anyhow before: a
    // stream of such newcomers does not keep the caller waiting.
    void AwaitOthers();
    // Waits until no other thread is inside.
    void AwaitAll();

    // Whether the calling thread is inside.
    bool Inside();

    // Tells everybody who is inside now to come to an end; those who enter later are not meant.
    void Cancel();
    // Whether the calling thread's innermost entry was told so.
    bool Cancelled();

  private:
    template <class WaitedFor>
    void Await(WaitedFor waited_for);

    Mutex m_Lock;
    Condition m_Left;
    Entry* m_First ZEL_GUARDED_BY(m_Lock) = nullptr;  // newest first; the links in the entries belong to the lock too
    unsigned m_Reasons ZEL_GUARDED_BY(m_Lock) = 0;
    unsigned m_Cancellations ZEL_GUARDED_BY(m_Lock) = 0;
    std::uint64_t m_NextNumber ZEL_GUARDED_BY(m_Lock) = 0;
    int m_Waiting ZEL_GUARDED_BY(m_Lock) = 0;
};

}  // namespace zel::platform

#endif
