/// @file
/// Calling convention, export macro and the one rule about destructors that every public interface follows.
#ifndef ZEL_PLATFORM_H
#define ZEL_PLATFORM_H

/// @def ZEL_CALL
/// Calling convention of exported functions and of every callback: C's.
#if defined(_WIN32)
#define ZEL_CALL __cdecl
#else
#define ZEL_CALL
#endif

/// @def ZEL_PLUGIN_EXPORT
/// Stands before each function that a plug-in exports.
#if defined(_WIN32)
#define ZEL_PLUGIN_EXPORT extern "C" __declspec(dllexport)
#else
#define ZEL_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))
#endif

/// @def ZEL_INTERFACE_DESTRUCTOR(Class)
/// The destructor of an interface: its last slot. Applications delete none of these objects.
///
/// A virtual destructor takes one slot in the layout of Microsoft's compiler and two in the layout of GCC. Applications
/// on Windows are built with the former, the library with the latter, so under MinGW the destructor's slot holds an
/// ordinary virtual operation with the signature of Microsoft's scalar deleting destructor (bit 0 of `flags`: free the
/// memory too). An application built with Microsoft's compiler sees a plain virtual destructor in the same slot.

/// @def ZEL_IMPLEMENTATION_DESTRUCTOR(Class)
/// Stands in a class of the library that implements such an interface.
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
/// Deletes an object of the library's own through its interface, whichever of the two forms its destructor has.
/// @tparam Interface the interface's class
/// @param object     the object; null is allowed
template <class Interface>
inline void ZelDelete(Interface* object) {
    delete object;
}
#endif

#endif
