// Calls through slots by number, and output without a run-time library.
#ifndef TESTS_ABI_OLDAPPLICATIONSUPPORT_H
#define TESTS_ABI_OLDAPPLICATIONSUPPORT_H

extern "C" {
__declspec(dllimport) void* __stdcall LoadLibraryA(const char* name);
__declspec(dllimport) void* __stdcall GetProcAddress(void* library, const char* name);
__declspec(dllimport) void* __stdcall GetStdHandle(unsigned long which);
__declspec(dllimport) int __stdcall WriteFile(void* file, const void* data, unsigned long size, unsigned long* written,
                                              void* overlapped);
__declspec(dllimport) __declspec(noreturn) void __stdcall ExitProcess(unsigned code);
}

// Calls the operation in a slot (counted from 1) with the convention of member functions.
template <class Result, class... Arguments>
Result Slot(void* object, int number, Arguments... arguments) {
    using Operation = Result(__thiscall*)(void*, Arguments...);
    void** table = *static_cast<void***>(object);
    return reinterpret_cast<Operation>(table[number - 1])(object, arguments...);
}

inline int g_Failed = 0;

inline void Print(const char* text) {
    unsigned long length = 0;
    while (text[length]) ++length;
    unsigned long written = 0;
    WriteFile(GetStdHandle(static_cast<unsigned long>(-11)), text, length, &written, nullptr);
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
