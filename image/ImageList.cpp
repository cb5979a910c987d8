#include "image/ImageList.h"

#include <atomic>
#include <cstdint>
#include <cstring>

#include "platform/Mutex.h"

namespace zel {

namespace {

using Guard = platform::ScopedLock<ListLock>;

ZelImageInternal* ExchangeLink(ZelImageInternal*& link, ZelImageInternal* image) {
    return std::atomic_ref<ZelImageInternal*>(link).exchange(image, std::memory_order_acq_rel);
}

constexpr char kRemove[] = "ImageManager::Remove";

unsigned long long Address(const ZelImageInternal* image) { return reinterpret_cast<std::uintptr_t>(image); }

}  // namespace

ImageList::ImageList(const char* name, Logger& logger) : m_Head(&m_Sentinel), m_Tail(&m_Sentinel), m_Logger(logger) {
    std::strncpy(m_Name, name, sizeof m_Name - 1);
    m_Name[sizeof m_Name - 1] = '\0';
    m_Sentinel.next = &m_Sentinel;
}

int ImageList::Count() {
    Guard guard(m_Lock);
    return m_Num;
}

void ImageList::LogNull(const char* function_name) {
    Logger logger("ImageManager");
    ZEL_LOG(logger, kLogTrace, function_name, "list == 0, returning 0");
}

void ImageList::LogEmpty(const char* function_name) {
    ZEL_LOG(m_Logger, kLogTrace, function_name, "list:%s  list->head->next == list->head, returning 0", m_Name);
}

void ImageList::LogChange(const char* function_name, const ZelImageInternal* image) {
    ZEL_LOG(m_Logger, kLogTrace, function_name, "list:%s image: 0x%0llx list->num:%d", m_Name, Address(image), m_Num);
}

void ImageList::LogDuplicate(const ZelImageInternal* image) {
    const ZelImageInternal* node = m_Head;
    // On purpose: the last element is not compared.
    for (int step = 0; step < m_Num && node->next != m_Head; ++step, node = node->next) {
        if (node != image) continue;
        ZEL_LOG(m_Logger, kLogTrace, "ImageManager::Enqueue", "***********************DUPLICATE IMAGE IN %s", m_Name);
        return;
    }
}

void ImageList::LogRemoved(const ZelImageInternal* image) {
    LogChange(kRemove, image);
    ZEL_LOG(m_Logger, kLogTrace, kRemove, "successfully removed image:0x%08llx from %s list", Address(image), m_Name);
}

void ImageList::LogNotRemoved(const ZelImageInternal* image) {
    ZEL_LOG(m_Logger, kLogError, kRemove, "***FAILED*** to removed image:0x%08llx from %s list", Address(image),
            m_Name);
}

inline void ImageList::CountDown() {
    --m_Num;
    // A list that was made circular ends with its count, one that was cut short ends with its links.
    if (m_Num > 0 && m_Head->next != m_Head) return;
    m_Num = 0;
    m_Tail = m_Head->next = m_Head;
}

// On purpose: a record that is in the list already is appended all the same, which links it a second time.
bool Enqueue(ImageList* list, ZelImageInternal* image) {
    if (!list || !image) return false;
    Guard guard(list->m_Lock);
    // The search serves its log line alone.
    if (list->m_Logger.Enabled()) [[unlikely]]
        list->LogDuplicate(image);

    image->next = list->m_Tail->next;  // nobody else sees this link yet
    ExchangeLink(list->m_Tail->next, image);
    list->m_Tail = image;
    ++list->m_Num;
    if (list->m_Logger.Enabled()) [[unlikely]]
        list->LogChange("ImageManager::Enqueue", image);
    return true;
}

ZelImageInternal* Dequeue(ImageList* list) {
    static constexpr char kName[] = "ImageManager::Dequeue";
    if (!list) {
        ImageList::LogNull(kName);
        return nullptr;
    }
    Guard guard(list->m_Lock);
    ZelImageInternal* const head = list->m_Head;
    if (head->next == head) {
        list->LogEmpty(kName);
        return nullptr;
    }
    ZelImageInternal* const image = ExchangeLink(head->next, head->next->next);
    if (list->m_Tail == image) list->m_Tail = head;
    list->CountDown();
    if (list->m_Logger.Enabled()) [[unlikely]]
        list->LogChange(kName, image);
    return image;
}

ZelImageInternal* DequeueTail(ImageList* list) {
    static constexpr char kName[] = "ImageManager::DequeueTail";
    if (!list) {
        ImageList::LogNull(kName);
        return nullptr;
    }
    Guard guard(list->m_Lock);
    ZelImageInternal* const head = list->m_Head;
    if (head->next == head) {
        list->LogEmpty(kName);
        return nullptr;
    }
    // After Remove took the tail, `m_Tail` is the sentinel and the newest element is the one the links end with; after
    // a further Enqueue, `m_Tail` has elements behind it, which stay in the list.
    ZelImageInternal* before = head;
    ZelImageInternal* image = head->next;
    for (int step = 1; step < list->m_Num && image != list->m_Tail && image->next != head; ++step) {
        before = image;
        image = image->next;
    }
    before->next = image->next;
    list->m_Tail = before;
    list->CountDown();
    if (list->m_Logger.Enabled()) [[unlikely]]
        list->LogChange(kName, image);
    return image;
}

bool Remove(ImageList* list, ZelImageInternal* image) {
    if (!list || !image) return false;
    Guard guard(list->m_Lock);
    ZelImageInternal* const head = list->m_Head;
    ZelImageInternal* before = head;
    int step = 0;
    while (step < list->m_Num && before->next != head && before->next != image) {
        before = before->next;
        ++step;
    }
    if (step == list->m_Num || before->next == head) {
        list->LogNotRemoved(image);
        return false;
    }
    before->next = image->next;
    // On purpose: the sentinel becomes the tail, not the predecessor, so that the next record appended stands first.
    if (list->m_Tail == image) list->m_Tail = head;
    list->CountDown();
    if (list->m_Logger.Enabled()) [[unlikely]]
        list->LogRemoved(image);
    return true;
}

}  // namespace zel
