// One list of the image pool: singly linked and circular through the records' `next`, from a sentinel to the sentinel.
#ifndef IMAGE_IMAGELIST_H
#define IMAGE_IMAGELIST_H

#include "image/ListLock.h"
#include "image/ZelImageInternal.h"

#include "sdk/Logger.h"

namespace zel {

class ImageList {
  public:
    ImageList(const char* name, Logger& logger);
    ImageList(const ImageList&) = delete;
    ImageList& operator=(const ImageList&) = delete;

    // Elements in the list, read under its lock.
    int Count();

  private:
    friend bool Enqueue(ImageList* list, ZelImageInternal* image);
    friend ZelImageInternal* Dequeue(ImageList* list);
    friend ZelImageInternal* DequeueTail(ImageList* list);
    friend bool Remove(ImageList* list, ZelImageInternal* image);

    // Log lines, apart from the operations: with logging off a frame runs past them.
    [[gnu::cold]] static void LogNull(const char* function_name);
    [[gnu::cold]] void LogEmpty(const char* function_name);
    [[gnu::cold]] void LogChange(const char* function_name, const ZelImageInternal* image) ZEL_REQUIRES(m_Lock);
    [[gnu::cold]] void LogDuplicate(const ZelImageInternal* image) ZEL_REQUIRES(m_Lock);
    [[gnu::cold]] void LogRemoved(const ZelImageInternal* image) ZEL_REQUIRES(m_Lock);
    [[gnu::cold]] void LogNotRemoved(const ZelImageInternal* image);
    // Takes one off the count after an element was unlinked.
    void CountDown() ZEL_REQUIRES(m_Lock);

    ListLock m_Lock;
    char m_Name[64];
    int m_Num ZEL_GUARDED_BY(m_Lock) = 0;
    ZelImageInternal m_Sentinel ZEL_GUARDED_BY(m_Lock);
    ZelImageInternal* m_Head ZEL_GUARDED_BY(m_Lock);  // always the sentinel
    ZelImageInternal* m_Tail ZEL_GUARDED_BY(m_Lock);  // the last element; the sentinel when empty
    Logger& m_Logger;
};

// Appends. False for a null list or image. A record that is in the list already is logged and appended all the same.
bool Enqueue(ImageList* list, ZelImageInternal* image);
// Takes the first element; null when there is none.
ZelImageInternal* Dequeue(ImageList* list);
// Takes the last element; null when there is none.
ZelImageInternal* DequeueTail(ImageList* list);
// Takes this element out, wherever it is. False when it is not in the list.
bool Remove(ImageList* list, ZelImageInternal* image);

}  // namespace zel

#endif
