// Calling convention, export macro and the one rule about destructors that every public interface follows.
#ifndef ZEL_PLATFORM_H
#define ZEL_PLATFORM_H

// Exported functions and every callback use the C calling convention.
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

// A virtual destructor takes one slot in the layout of Microsoft's compiler and two in the layout of GCC. Applications
// on Windows are built with the former, the library with the latter, so under MinGW the destructor's slot holds an
// ordinary virtual operation with the signature of Microsoft's scalar deleting destructor (bit 0 of `flags`: free the
// memory too). An application built with Microsoft's compiler sees a plain virtual destructor in the same slot.
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
// Deletes an object through its interface, whichever of the two forms its destructor has.
template <class Interface>
inline void ZelDelete(Interface* object) {
    delete object;
}
#endif

#endif
