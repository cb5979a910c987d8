// Memory that ends, or begins, where a page begins that nobody may touch: an access beyond it ends the program, whoever
// makes it and however it was compiled.
#ifndef TESTS_SUPPORT_GUARDPAGES_H
#define TESTS_SUPPORT_GUARDPAGES_H

#include <cstddef>

namespace zel::test {

class GuardPages {
  public:
    // Room for `bytes` bytes between two such pages; it is never given back.
    explicit GuardPages(std::size_t bytes);

    // `bytes` bytes up to the page behind the room, or from the page before it on.
    template <class T>
    T* Last(std::size_t count) const {
        return reinterpret_cast<T*>(m_End - count * sizeof(T));
    }
    template <class T>
    T* First() const {
        return reinterpret_cast<T*>(m_Begin);
    }

  private:
    char* m_Begin;
    char* m_End;
};

}  // namespace zel::test

#endif
