// Calls through slots by number, and output: on Windows without a run-time library.
#ifndef TESTS_ABI_OLDAPPLICATIONSUPPORT_H
#define TESTS_ABI_OLDAPPLICATIONSUPPORT_H

#if defined(_WIN32)
extern "C" {
__declspec(dllimport) void* __stdcall LoadLibraryA(const char* name);
__declspec(dllimport) void* __stdcall GetProcAddress(void* library, const char* name);
__declspec(dllimport) void* __stdcall GetStdHandle(unsigned long which);
__declspec(dllimport) int __stdcall WriteFile(void* file, const void* data, unsigned long size, unsigned long* written,
                                              void* overlapped);
__declspec(dllimport) void __stdcall Sleep(unsigned long milliseconds);
__declspec(dllimport) __declspec(noreturn) void __stdcall ExitProcess(unsigned code);
}
#define MEMBER_CALL __thiscall
#define PROGRAM extern "C" void start()
#if defined(_WIN64)
const char kDecoratedVersion[] = "?get_version_str@@YAPEADXZ";
#else
const char kDecoratedVersion[] = "?get_version_str@@YAPADXZ";
#endif
const char kLibrary[] = "zel_sdk.dll";
const int kDestructorSlots = 1;

inline void Write(const char* text, unsigned length) {
    unsigned long written = 0;
    WriteFile(GetStdHandle(static_cast<unsigned long>(-11)), text, length, &written, nullptr);
}
inline void Wait(unsigned milliseconds) { Sleep(milliseconds); }
inline void End(int code) { ExitProcess(static_cast<unsigned>(code)); }

#else
#include <dlfcn.h>
#include <stdlib.h>
#include <unistd.h>

#define MEMBER_CALL
#define PROGRAM int main()
const char kDecoratedVersion[] = "_Z15get_version_strv";
const char kLibrary[] = "libzel_sdk.so";
const int kDestructorSlots = 2;

inline void* LoadLibraryA(const char* name) { return dlopen(name, RTLD_NOW); }
inline void* GetProcAddress(void* library, const char* name) { return dlsym(library, name); }
inline void Write(const char* text, unsigned length) {
    if (write(1, text, length) < 0) _exit(99);
}
inline void Wait(unsigned milliseconds) { usleep(milliseconds * 1000); }
inline void End(int code) { exit(code); }
#endif

// Calls the operation in a slot (counted from 1) with the convention of member functions.
template <class Result, class... Arguments>
Result Slot(void* object, int number, Arguments... arguments) {
    using Operation = Result(MEMBER_CALL*)(void*, Arguments...);
    void** table = *static_cast<void***>(object);
    return reinterpret_cast<Operation>(table[number - 1])(object, arguments...);
}

inline int g_Failed = 0;

inline void Print(const char* text) {
    unsigned length = 0;
    while (text[length]) ++length;
    Write(text, length);
}

inline void Check(const char* what, bool passed) {
    if (!passed) ++g_Failed;
    Print(passed ? "ok      " : "FAILED  ");
    Print(what);
    Print("\n");
}

inline void CheckTextStart(const char* what, const char* text, const char* start) {
    bool same = text != nullptr;
    for (int i = 0; same && start[i]; ++i) same = text[i] == start[i];
    Check(what, same);
}

#endif
