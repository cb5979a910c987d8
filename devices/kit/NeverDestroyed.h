// An object of a library that lives until the library is unloaded and takes nothing from the heap for itself, so that
// a library that comes and goes leaves nothing behind. Its destructor is not run.
#ifndef DEVICES_KIT_NEVERDESTROYED_H
#define DEVICES_KIT_NEVERDESTROYED_H

#include <cstddef>
#include <new>

namespace zel::kit {

template <class Object>
class NeverDestroyed {
  public:
    Object& Get() { return m_Object; }

  private:
    alignas(Object) std::byte m_Storage[sizeof(Object)];
    Object& m_Object = *new (m_Storage) Object;
};

}  // namespace zel::kit

#endif
