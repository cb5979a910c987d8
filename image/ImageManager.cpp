#include "image/ImageManager.h"

#include <cstdint>

#include "platform/Memory.h"

namespace zel {

namespace {

using Guard = platform::ScopedLock<platform::RecursiveLock>;

}  // namespace

ImageManager::ImageManager(const char* instance_name)
    : m_Logger("ImageManager", instance_name),
      m_ImageListFree("m_ImageListFree", m_Logger),
      m_ImageListPending("m_ImageListPending", m_Logger),
      m_ImageListInUse("m_ImageListInUse", m_Logger) {}

ImageManager::~ImageManager() { FreeImages(); }

void ImageManager::SetFrameGeometry(unsigned width, unsigned height, unsigned bit_depth, unsigned bytes_per_pixel) {
    Guard guard(m_Lock);
    m_Width = width;
    m_Height = height;
    m_BitDepth = bit_depth;
    m_BytesPerPixel = bytes_per_pixel;
    const unsigned frame_size = width * height * bytes_per_pixel;
    if (frame_size != m_FrameSizeInBytes) m_SizeChanged = true;
    m_FrameSizeInBytes = frame_size;
}

int ImageManager::PixelBufferAllocate(int count) {
    Guard guard(m_Lock);
    if (Keeps(count)) return kPoolOk;
    FreeImages();
    if (count < 0) return kPoolNegativeCount;
    if (count > 0 && !EnoughMemory(static_cast<unsigned>(count))) return kPoolNotEnoughMemory;
    if (!CreateRecords(static_cast<unsigned>(count))) return kPoolNotEnoughMemory;
    m_SizeChanged = false;
    return kPoolOk;
}

// The need is computed in 64 bits and in whole pages: one that wrapped, or that counted small frames at their size
// alone, would pass the test, only for the allocation to fail after it took all the memory there is.
bool ImageManager::EnoughMemory(unsigned count) {
    const std::uint64_t frame_size = std::uint64_t{m_Width} * m_Height * m_BytesPerPixel;
    if (std::uint64_t{m_Width} * m_Height > UINT32_MAX || frame_size > UINT32_MAX) return false;
    return RecordSet::MemoryNeed(count, frame_size) < platform::AvailablePhysicalMemory();
}

bool ImageManager::CreateRecords(unsigned count) {
    if (count == 0) return true;
    m_Records = RecordSet::Make(count, m_FrameSizeInBytes);
    if (!m_Records) return false;
    for (unsigned i = 0; i < count; ++i) {
        RestoreGeometry(m_Records->Image(i));
        Enqueue(&m_ImageListFree, m_Records->Image(i));
    }
    return true;
}

void ImageManager::RestoreGeometry(ZelImageInternal* image) {
    Guard guard(m_Lock);
    image->w = m_Width;
    image->h = m_Height;
    image->bit_depth = m_BitDepth;
    image->bytes_per_pixel = m_BytesPerPixel;
    image->num_pixels = m_Width * m_Height;
    image->size_in_bytes = image->num_pixels * m_BytesPerPixel;
}

int ImageManager::FreeCount() {
    Guard guard(m_Lock);
    return m_ImageListFree.Count();
}

int ImageManager::PendingCount() {
    Guard guard(m_Lock);
    return m_ImageListPending.Count();
}

int ImageManager::InUseCount() {
    Guard guard(m_Lock);
    return m_ImageListInUse.Count();
}

int ImageManager::RegisteredCount() {
    Guard guard(m_Lock);
    return m_Records ? static_cast<int>(m_Records->Count()) : 0;
}

std::shared_ptr<RecordSet> ImageManager::Records() {
    Guard guard(m_Lock);
    return m_Records;
}

FrameLease ImageManager::Lease(ZelImageInternal* image) {
    Guard guard(m_Lock);
    if (!image || !m_Records || !m_Records->Holds(image)) return {};
    return {m_Records, image};
}

bool ImageManager::IsCurrent(const FrameLease& frame) {
    Guard guard(m_Lock);
    return frame.set && frame.set == m_Records;
}

FrameLease ImageManager::TakeFree() {
    Guard guard(m_Lock);
    FrameLease frame = Lease(GetFreeImage());
    if (frame) RestoreGeometry(frame.image);
    return frame;
}

FrameLease ImageManager::TakePending() {
    Guard guard(m_Lock);
    return Lease(GetPendingImage());
}

FrameLease ImageManager::TakeLastPending() {
    Guard guard(m_Lock);
    return Lease(GetLastPendingImage());
}

bool ImageManager::Keeps(int count) {
    Guard guard(m_Lock);
    return !m_SizeChanged && FreeCount() + PendingCount() + InUseCount() == count;
}

void ImageManager::LogCounts(int level, const char* function_name, const char* text) {
    ZEL_LOG(m_Logger, level, function_name, "%s  free:%4d  pending:%4d  in_use:%4d", text, FreeCount(), PendingCount(),
            InUseCount());
}

void ImageManager::LogMove(const char* function_name, const ZelImageInternal* image, const char* where) {
    ZEL_LOG(m_Logger, kLogTrace, function_name, "image %4d --> %s  free:%4d  pending:%4d  in_use:%4d",
            static_cast<int>(image->image_number), where, FreeCount(), PendingCount(), InUseCount());
}

void ImageManager::LogRelease(const char* function_name, const ZelImageInternal* image) {
    const int number = static_cast<int>(image->image_number);
    ZEL_LOG(m_Logger, kLogTrace, function_name, "image %d enqueued to m_ImageListFree", number);
    ZEL_LOG(m_Logger, kLogTrace, function_name, "image %4d --> free         size:%d", number, FreeCount());
}

ZelImageInternal* ImageManager::GetFreeImage() {
    static constexpr char kName[] = "ImageManager::GetFreeImage";
    Guard guard(m_Lock);
    ZelImageInternal* const image = Dequeue(&m_ImageListFree);
    if (!image) {
        LogCounts(kLogError, kName, "No free images available! image ???? --> in_use");
        return nullptr;
    }
    Enqueue(&m_ImageListInUse, image);
    if (m_Logger.Enabled()) [[unlikely]]
        LogCounts(kLogTrace, kName, "image ???? --> in_use");
    return image;
}

bool ImageManager::SetPendingImage(ZelImageInternal* image, unsigned arrival_time_ms) {
    static constexpr char kName[] = "ImageManager::SetPendingImage";
    if (!image) return false;
    Guard guard(m_Lock);
    if (!Remove(&m_ImageListInUse, image)) {
        ZEL_LOG(m_Logger, kLogError, kName, "***ERROR***:ImageManager::SetPendingImage() - Remove() failed\n");
        return false;
    }
    image->arrival_time_ms = arrival_time_ms;
    if (m_Logger.Enabled()) [[unlikely]]
        LogMove(kName, image, "pendng");
    Enqueue(&m_ImageListPending, image);
    if (m_Logger.Enabled()) [[unlikely]]
        LogMove(kName, image, "pendng");
    return true;
}

ZelImageInternal* ImageManager::GetPendingImage() {
    Guard guard(m_Lock);
    return HandOver(Dequeue(&m_ImageListPending), "ImageManager::GetPendingImage");
}

ZelImageInternal* ImageManager::GetLastPendingImage() {
    Guard guard(m_Lock);
    ZelImageInternal* const image = HandOver(DequeueTail(&m_ImageListPending), "ImageManager::GetLastPendingImage");
    FreeAllPendingImages();
    return image;
}

ZelImageInternal* ImageManager::HandOver(ZelImageInternal* image, const char* function_name) {
    if (!image) return nullptr;
    Enqueue(&m_ImageListInUse, image);
    if (m_Logger.Enabled()) [[unlikely]]
        LogMove(function_name, image, "in_use");
    return image;
}

bool ImageManager::ReleaseImage(ZelImageInternal* image) {
    static constexpr char kName[] = "ImageManager::ReleaseImage";
    if (!image) return false;
    Guard guard(m_Lock);
    if (!Remove(&m_ImageListInUse, image)) {
        ZEL_LOG(m_Logger, kLogError, kName, "ImageManager::ReleaseImage() - Remove() failed\n");
        return false;
    }
    if (!Enqueue(&m_ImageListFree, image)) {
        ZEL_LOG(m_Logger, kLogError, kName, "ImageManager::ReleaseImage() - Enqueue() failed\n");
        return false;
    }
    if (m_Logger.Enabled()) [[unlikely]]
        LogRelease(kName, image);
    return true;
}

void ImageManager::FreeAllPendingImages() {
    Guard guard(m_Lock);
    ZEL_LOG(m_Logger, kLogTrace, "ImageManager::FreeAllPendingImages", "called FreeAllPendingImages");
    while (ZelImageInternal* image = GetPendingImage()) ReleaseImage(image);
}

void ImageManager::FreeAllInUseImages() {
    Guard guard(m_Lock);
    FreeAllPendingImages();
    ZEL_LOG(m_Logger, kLogTrace, "ImageManager::FreeAllInUseImages", "called FreeAllInUseImages");
    while (ZelImageInternal* image = Dequeue(&m_ImageListInUse)) Enqueue(&m_ImageListFree, image);
}

bool ImageManager::FreeImages() {
    static constexpr char kName[] = "ImageManager::FreeImages";
    ZEL_LOG(m_Logger, kLogTrace, kName, "flags: 0x%08x ", 7u);
    Guard guard(m_Lock);
    ZEL_LOG(m_Logger, kLogTrace, kName, ">>>> FREE_IMAGES <<<<");
    ZEL_LOG(m_Logger, kLogTrace, kName, "Dequeueing m_ImageListFree");
    while (Dequeue(&m_ImageListFree)) continue;
    ZEL_LOG(m_Logger, kLogTrace, kName, "Dequeueing m_ImageListPending");
    while (Dequeue(&m_ImageListPending)) continue;
    ZEL_LOG(m_Logger, kLogTrace, kName, "Dequeueing m_ImageListInUse");
    while (Dequeue(&m_ImageListInUse)) continue;
    m_Records.reset();
    ZEL_LOG(m_Logger, kLogTrace, kName, " FINISHED \n");
    return true;
}

}  // namespace zel
