#include "image/RecordSet.h"

#include <exception>

#include "platform/Memory.h"

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
        const bool touched = (m_Count + std::uint64_t{1}) * frame_bytes <= kTouchedAtStart;
        image.pixels =
            static_cast<unsigned short*>(touched ? AllocateTouchedPixels(frame_bytes) : AllocatePixels(frame_bytes));
        if (!image.pixels) return false;
        image.buffer_size = frame_bytes;
        ++m_Count;
    }
    return true;
}

void RecordSet::MakePictures(unsigned plane_samples) {
    const std::uint64_t plane_bytes = std::uint64_t{3} * plane_samples * sizeof(unsigned short);
    std::uint64_t taken = 0;
    std::uint64_t need = 0;
    for (unsigned i = 0; i < m_Count; ++i) {
        const ZelImageInternal& image = m_Slots[i].image;
        taken += image.buffer_size;
        if (!image.color_pixels) need += PagesTaken(PictureBytes(image), kPixelAlignment);
        if (plane_samples > 0 && image.color_planes.count != plane_samples) need += plane_bytes;
    }
    if (need == 0 || need >= platform::AvailablePhysicalMemory()) return;
    for (unsigned i = 0; i < m_Count; ++i) {
        ZelImageInternal& image = m_Slots[i].image;
        taken += PictureBytes(image) + plane_bytes;
        if (taken > kTouchedAtStart) return;
        if (!image.color_pixels) image.color_pixels = AllocateTouchedPixels(PictureBytes(image));
        if (plane_samples > 0) image.color_planes.Resize(plane_samples);
    }
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
