// The image buffer pool: has every image record of one camera and moves them between three lists as frames are filled
// by the transport, wait for the application, are held by it and come back.
//
//     free --GetFreeImage--> in use --SetPendingImage--> pending --GetPendingImage--> in use --ReleaseImage--> free
#ifndef IMAGE_IMAGEMANAGER_H
#define IMAGE_IMAGEMANAGER_H

#include <memory>

#include "image/ImageList.h"
#include "image/RecordSet.h"
#include "platform/Locks.h"
#include "sdk/Logger.h"

namespace zel {

// Answers of PixelBufferAllocate.
inline constexpr int kPoolOk = 0;
inline constexpr int kPoolNegativeCount = 16;
inline constexpr int kPoolNotEnoughMemory = 18;

// Every operation holds the manager lock for its whole run and takes one list lock at a time under it.
class ImageManager {
  public:
    explicit ImageManager(const char* instance_name);
    ~ImageManager();
    ImageManager(const ImageManager&) = delete;
    ImageManager& operator=(const ImageManager&) = delete;

    // Geometry of new records. A frame size in bytes other than the one before makes the next PixelBufferAllocate build
    // the pool anew.
    void SetFrameGeometry(unsigned width, unsigned height, unsigned bit_depth, unsigned bytes_per_pixel);

    // Sizes the pool: keeps every record when the count is the present one and the frame size has not changed, else
    // gives them all up and makes `count` new ones. Answers kPoolOk or why the pool is empty.
    int PixelBufferAllocate(int count);

    // The present records, null when there are none.
    std::shared_ptr<RecordSet> Records();

    ZelImageInternal* GetFreeImage();
    // The frame in the record is complete. `arrival_time_ms` is the clock at its arrival, which the caller reads.
    bool SetPendingImage(ZelImageInternal* image, unsigned arrival_time_ms = 0);
    ZelImageInternal* GetPendingImage();
    // The newest pending record; every older one goes to the free list.
    ZelImageInternal* GetLastPendingImage();
    bool ReleaseImage(ZelImageInternal* image);
    void FreeAllPendingImages();
    void FreeAllInUseImages();
    // Gives every record up. Their memory goes now, or with the last lease of one of them.
    bool FreeImages();

    // Gives a record the full-frame geometry that records are made with.
    void RestoreGeometry(ZelImageInternal* image);

    int FreeCount();
    int PendingCount();
    int InUseCount();
    int RegisteredCount();

    // The same moves for those who go on to work on the frame; empty when there is none.
    FrameLease TakeFree();  // has its full-frame geometry
    FrameLease TakePending();
    FrameLease TakeLastPending();
    // For a pointer that somebody gives: empty unless it is a record of the pool. It is only compared.
    FrameLease Lease(ZelImageInternal* image);
    // Whether the pool still has the records that this one belongs to.
    bool IsCurrent(const FrameLease& frame);

  private:
    bool Keeps(int count);
    bool EnoughMemory(unsigned count) ZEL_REQUIRES(m_Lock);
    bool CreateRecords(unsigned count) ZEL_REQUIRES(m_Lock);  // all of them or none
    ZelImageInternal* HandOver(ZelImageInternal* image, const char* function_name) ZEL_REQUIRES(m_Lock);

    // Log lines, apart from the operations: with logging off a frame runs past them.
    [[gnu::cold]] void LogCounts(int level, const char* function_name, const char* text);
    [[gnu::cold]] void LogMove(const char* function_name, const ZelImageInternal* image, const char* where);
    [[gnu::cold]] void LogRelease(const char* function_name, const ZelImageInternal* image);

    unsigned m_Width ZEL_GUARDED_BY(m_Lock) = 0;
    unsigned m_Height ZEL_GUARDED_BY(m_Lock) = 0;
    unsigned m_BitDepth ZEL_GUARDED_BY(m_Lock) = 0;
    unsigned m_BytesPerPixel ZEL_GUARDED_BY(m_Lock) = 0;
    unsigned m_FrameSizeInBytes ZEL_GUARDED_BY(m_Lock) = 0;
    bool m_SizeChanged ZEL_GUARDED_BY(m_Lock) = false;
    platform::RecursiveLock m_Lock;
    std::shared_ptr<RecordSet> m_Records ZEL_GUARDED_BY(m_Lock);  // null: none
    Logger m_Logger;
    ImageList m_ImageListFree ZEL_GUARDED_BY(m_Lock);
    ImageList m_ImageListPending ZEL_GUARDED_BY(m_Lock);
    ImageList m_ImageListInUse ZEL_GUARDED_BY(m_Lock);
};

}  // namespace zel

#endif
