// Structs that grow: what a caller's size covers, of older and of newer headers than the library's.
//
//     caller's:   | size |  fields it knows   |
//     library's:  | size |  fields it knows       |
//
// Both are plain memory; the smaller of the two sizes is common to both.
#ifndef BINDINGS_C_STRUCTS_H
#define BINDINGS_C_STRUCTS_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

#include "bindings/c/Failure.h"

namespace zel::c {

// Throws Failure unless `size` is one that a struct of some version can have: whole words, more than the size alone,
// and nothing that only memory left as it was would say.
inline void RequireStructSize(std::uint32_t size, const char* name) {
    constexpr std::uint32_t kWord = 4, kLeast = 8, kMost = 65536;
    if (size % kWord == 0 && size >= kLeast && size <= kMost) return;
    throw Failure(ZEL_STATUS_BAD_STRUCT, std::string("the struct_size of '") + name + "' is " + std::to_string(size),
                  "", "set it to sizeof of the struct before the call");
}

// Throws Failure for null.
template <class Pointer>
void RequirePointer(Pointer pointer, const char* name) {
    if (!pointer) throw Failure(ZEL_STATUS_INVALID_ARGUMENT, std::string("'") + name + "' is a null pointer");
}

// Before anything is done: the struct can be filled. Throws Failure.
template <class Struct>
void RequireStruct(const Struct* out, const char* name) {
    RequirePointer(out, name);
    RequireStructSize(out->struct_size, name);
}

// Fills the part of the caller's struct that it has; the rest of a larger one becomes zero.
template <class Struct>
void FillStruct(Struct* out, const Struct& full) noexcept {
    static_assert(std::is_trivially_copyable_v<Struct>);
    const std::uint32_t size = out->struct_size;
    auto* const bytes = reinterpret_cast<unsigned char*>(out);
    std::memcpy(bytes, &full, std::min<std::size_t>(size, sizeof full));
    if (size > sizeof full) std::memset(bytes + sizeof full, 0, size - sizeof full);
    out->struct_size = size;
}

// What the caller asks for; what its struct lacks is zero, and null is all zeros. Throws Failure when a larger struct
// asks for something that the library does not know.
template <class Struct>
Struct TakeStruct(const Struct* in, const char* name) {
    static_assert(std::is_trivially_copyable_v<Struct>);
    Struct taken{};
    if (!in) return taken;
    const std::uint32_t size = in->struct_size;
    RequireStructSize(size, name);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(in);
    std::memcpy(&taken, bytes, std::min<std::size_t>(size, sizeof taken));
    for (std::size_t i = sizeof taken; i < size; ++i) {
        if (bytes[i] == 0) continue;
        throw Failure(ZEL_STATUS_INVALID_ARGUMENT, std::string("'") + name + "' asks for something unknown",
                      "the program was compiled for a newer library", "install that one");
    }
    return taken;
}

// The enumerator with this number. Throws Failure for a number behind the last one.
template <class Enum>
Enum TakeEnum(std::int32_t number, Enum last, const char* name) {
    if (number >= 0 && number <= static_cast<std::int32_t>(last)) return static_cast<Enum>(number);
    throw Failure(ZEL_STATUS_INVALID_ARGUMENT, std::string("'") + name + "' is " + std::to_string(number),
                  "it is 0 to " + std::to_string(static_cast<std::int32_t>(last)));
}

}  // namespace zel::c

#endif
