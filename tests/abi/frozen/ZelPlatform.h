#ifndef ZEL_PLATFORM_H
#define ZEL_PLATFORM_H

#if defined(_WIN32)
#define ZEL_CALL __cdecl
#else
#define ZEL_CALL
#endif

#if defined(_WIN32)
#define ZEL_PLUGIN_EXPORT extern "C" __declspec(dllexport)
#else
#define ZEL_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))
#endif

#if defined(_WIN32) && !defined(_MSC_VER)
#define ZEL_INTERFACE_DESTRUCTOR(Class)                \
    virtual void* DeletingDestructor(unsigned flags) { \
        if (flags & 1u) ::operator delete(this);       \
        return this;                                   \
    }
#define ZEL_IMPLEMENTATION_DESTRUCTOR(Class)            \
    void* DeletingDestructor(unsigned flags) override { \
        void* memory = this;                            \
        this->~Class();                                 \
        if (flags & 1u) ::operator delete(memory);      \
        return memory;                                  \
    }
template <class Interface>
inline void ZelDelete(Interface* object) {
    if (object) object->DeletingDestructor(1u);
}
#else
#define ZEL_INTERFACE_DESTRUCTOR(Class) \
    virtual ~Class() {}
#define ZEL_IMPLEMENTATION_DESTRUCTOR(Class)
template <class Interface>
inline void ZelDelete(Interface* object) {
    delete object;
}
#endif

#endif
