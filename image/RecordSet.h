// The records of one pool allocation and all the memory behind them. The pool shares the set with everybody who works
// on one of its frames: the memory goes with the last of them.
#ifndef IMAGE_RECORDSET_H
#define IMAGE_RECORDSET_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "image/FrameGeometry.h"
#include "image/ZelImageInternal.h"

namespace zel {

class RecordSet {
  public:
    // So much of a pool is touched when it is made, at 2 to 5 GB/s: beyond it a start would take too long, and a 32-bit
    // program would have no room left. What lies beyond comes from the system as frames come.
    static constexpr std::uint64_t kTouchedAtStart = std::uint64_t{sizeof(void*) == 4 ? 512 : 2048} << 20;

    // Zeroed records with a pixel buffer of `frame_bytes` each. Null when memory ran out.
    static std::shared_ptr<RecordSet> Make(unsigned count, unsigned frame_bytes);
    // What the system has to give for that, in whole pages.
    static std::uint64_t MemoryNeed(unsigned count, std::uint64_t frame_bytes);

    // Gives the records room for their color pictures as far as kTouchedAtStart and the memory that is available reach;
    // the others get theirs with their first picture. With `plane_samples` they get planes of so many samples, too.
    // Belongs to whoever processes frames.
    void MakePictures(unsigned plane_samples);

    ~RecordSet();
    RecordSet(const RecordSet&) = delete;
    RecordSet& operator=(const RecordSet&) = delete;

    unsigned Count() const { return m_Count; }
    ZelImageInternal* Image(unsigned i) { return &m_Slots[i].image; }
    // Whether this is one of the records; the pointer is only compared.
    bool Holds(const ZelImageInternal* image) const { return Index(image) < m_Count; }
    // What the frame in one of the records was taken with. Belongs to whoever the record belongs to.
    FrameGeometry& Geometry(const ZelImageInternal* image) { return m_Slots[Index(image)].geometry; }

  private:
    // On purpose: a record is zeroed memory that is never constructed; its virtual-table pointer is null.
    struct alignas(kRecordAlignment) Slot {
        ZelImageInternal image;
        FrameGeometry geometry;
    };

    RecordSet() = default;
    std::size_t Index(const ZelImageInternal* image) const;  // m_Count and above for other pointers
    bool Allocate(unsigned count, unsigned frame_bytes);

    Slot* m_Slots = nullptr;  // one piece of page memory for all of them
    unsigned m_Count = 0;     // of those that have their pixels
};

// A frame that somebody works on. Its record stays readable, whatever becomes of the pool meanwhile.
struct FrameLease {
    std::shared_ptr<RecordSet> set;
    ZelImageInternal* image = nullptr;

    explicit operator bool() const { return image != nullptr; }
    ZelImageInternal* operator->() const { return image; }
    FrameGeometry& Geometry() const { return set->Geometry(image); }
};

}  // namespace zel

#endif
