#include "image/RecordSet.h"

#include <exception>

namespace zel {

std::shared_ptr<RecordSet> RecordSet::Make(unsigned count, unsigned frame_bytes) {
    try {
        std::shared_ptr<RecordSet> set(new RecordSet);
        return set->Allocate(count, frame_bytes) ? set : nullptr;
    } catch (const std::exception&) {
        return nullptr;
    }
}

std::uint64_t RecordSet::MemoryNeed(unsigned count, std::uint64_t frame_bytes) {
    return PagesTaken(std::uint64_t{count} * sizeof(Slot), kRecordAlignment) +
           count * PagesTaken(frame_bytes, kPixelAlignment);
}

bool RecordSet::Allocate(unsigned count, unsigned frame_bytes) {
    if (std::uint64_t{count} > SIZE_MAX / sizeof(Slot)) return false;
    m_Slots = static_cast<Slot*>(AllocatePages(count * sizeof(Slot), kRecordAlignment));
    if (!m_Slots) return false;
    while (m_Count < count) {
        ZelImageInternal& image = m_Slots[m_Count].image;
        image.pixels = static_cast<unsigned short*>(AllocatePixels(frame_bytes));
        if (!image.pixels) return false;
        image.buffer_size = frame_bytes;
        ++m_Count;
    }
    return true;
}

RecordSet::~RecordSet() {
    for (unsigned i = 0; i < m_Count; ++i) {
        ZelImageInternal& image = m_Slots[i].image;
        FreePixels(image.pixels);
        FreePixels(image.color_pixels);
        image.color_planes.Resize(0);
    }
    FreePages(m_Slots);
}

std::size_t RecordSet::Index(const ZelImageInternal* image) const {
    const auto distance = reinterpret_cast<std::uintptr_t>(image) - reinterpret_cast<std::uintptr_t>(m_Slots);
    return distance % sizeof(Slot) == 0 ? distance / sizeof(Slot) : m_Count;
}

}  // namespace zel
