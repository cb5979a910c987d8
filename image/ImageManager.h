// The image buffer pool: owns every image record of one camera and moves them between three lists as frames are filled
// by the transport, wait for the application, are held by it and come back.
//
//     free --GetFreeImage--> in use --SetPendingImage--> pending --GetPendingImage--> in use --ReleaseImage--> free
#ifndef IMAGE_IMAGEMANAGER_H
#define IMAGE_IMAGEMANAGER_H

#include "image/ImageList.h"
#include "image/ZelImageInternal.h"
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
    ~ImageManager();  // destroys every record
    ImageManager(const ImageManager&) = delete;
    ImageManager& operator=(const ImageManager&) = delete;

    // Geometry of new records. A frame size in bytes other than the one before makes the next PixelBufferAllocate build
    // the pool anew.
    void SetFrameGeometry(unsigned width, unsigned height, unsigned bit_depth, unsigned bytes_per_pixel);

    // Sizes the pool: keeps every record when the count is the present one and the frame size has not changed, else
    // destroys them all and makes `count` new ones. Answers kPoolOk or why the pool is empty.
    int PixelBufferAllocate(int count);

    ZelImageInternal* GetFreeImage();
    // The frame in the record is complete. `arrival_time_ms` is the clock at its arrival, which the caller reads.
    bool SetPendingImage(ZelImageInternal* image, unsigned arrival_time_ms = 0);
    ZelImageInternal* GetPendingImage();
    // The newest pending record; every older one goes to the free list.
    ZelImageInternal* GetLastPendingImage();
    bool ReleaseImage(ZelImageInternal* image);
    void FreeAllPendingImages();
    void FreeAllInUseImages();
    // Destroys every record.
    bool FreeImages();

    // Gives a record the full-frame geometry that records are made with.
    void RestoreGeometry(ZelImageInternal* image);

    int FreeCount();
    int PendingCount();
    int InUseCount();
    int RegisteredCount();

    // How often every record was destroyed.
    unsigned Generation();
    // Whether this is a record of the pool; the pointer is only compared.
    bool Holds(const ZelImageInternal* image);
    // Whether PixelBufferAllocate(count) would keep the records.
    bool Keeps(int count);

  private:
    static constexpr int kRegistryCapacity = 64;

    bool EnoughMemory(unsigned count);
    bool CreateRecords(unsigned count);  // all of them or none
    ZelImageInternal* CreateRecord();
    void DestroyRecord(ZelImageInternal* image);
    ZelImageInternal* HandOver(ZelImageInternal* image, const char* function_name);

    // Log lines, apart from the operations: with logging off a frame runs past them.
    [[gnu::cold]] void LogCounts(int level, const char* function_name, const char* text);
    [[gnu::cold]] void LogMove(const char* function_name, const ZelImageInternal* image, const char* where);
    [[gnu::cold]] void LogRelease(const char* function_name, const ZelImageInternal* image);

    unsigned m_Width = 0;
    unsigned m_Height = 0;
    unsigned m_BitDepth = 0;
    unsigned m_BytesPerPixel = 0;
    unsigned m_FrameSizeInBytes = 0;
    bool m_SizeChanged = false;
    platform::RecursiveLock m_Lock;
    int m_RegisteredCount = 0;
    unsigned m_Generation = 0;
    ZelImageInternal* m_Registry[kRegistryCapacity] = {};
    Logger m_Logger;
    ImageList m_ImageListFree;
    ImageList m_ImageListPending;
    ImageList m_ImageListInUse;
};

}  // namespace zel

#endif
