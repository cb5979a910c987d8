// A pool list in plain words, to hold the linked one against: a sequence and the element that the next one goes behind.
#ifndef TESTS_IMAGE_MODELLIST_H
#define TESTS_IMAGE_MODELLIST_H

#include <algorithm>
#include <vector>

#include "image/ZelImageInternal.h"

namespace zel::test {

class ModelList {
  public:
    int Count() const { return static_cast<int>(m_Items.size()); }
    bool Holds(const ZelImageInternal* image) const { return Find(image) != m_Items.end(); }

    // Behind the tail; at the front when there is none.
    void Enqueue(ZelImageInternal* image) {
        m_Items.insert(m_Tail ? Find(m_Tail) + 1 : m_Items.begin(), image);
        m_Tail = image;
    }

    ZelImageInternal* Dequeue() { return m_Items.empty() ? nullptr : Take(m_Items.begin()); }

    // The tail, or the last element when there is none; the one before becomes the tail.
    ZelImageInternal* DequeueTail() {
        if (m_Items.empty()) return nullptr;
        const auto at = m_Tail ? Find(m_Tail) : m_Items.end() - 1;
        ZelImageInternal* const before = at == m_Items.begin() ? nullptr : *(at - 1);
        ZelImageInternal* const image = Take(at);
        m_Tail = before;
        return image;
    }

    bool Remove(ZelImageInternal* image) { return Holds(image) && Take(Find(image)) != nullptr; }

  private:
    using Items = std::vector<ZelImageInternal*>;

    Items::const_iterator Find(const ZelImageInternal* image) const {
        return std::find(m_Items.begin(), m_Items.end(), image);
    }
    ZelImageInternal* Take(Items::const_iterator at) {
        ZelImageInternal* const image = *at;
        m_Items.erase(at);
        if (m_Tail == image) m_Tail = nullptr;
        return image;
    }

    Items m_Items;
    ZelImageInternal* m_Tail = nullptr;
};

}  // namespace zel::test

#endif
