#include "devices/sim/link/Complaints.h"

#include <cstdio>
#include <set>

#include "devices/kit/NeverDestroyed.h"
#include "devices/sim/link/SimControl.h"
#include "devices/sim/link/SimLibraries.h"
#include "platform/DynamicLibrary.h"
#include "platform/Mutex.h"

namespace zel::sim {

namespace {

platform::Mutex s_Lock;

// Never destroyed: a thread of the library's may complain while the process ends.
std::set<std::string>& Lines() ZEL_REQUIRES(s_Lock) {
    static kit::NeverDestroyed<std::set<std::string>> s_Lines;
    return s_Lines.Get();
}

// Each library has code and memory of its own; they ask each other over their control interfaces.
bool AnotherHasTold(const std::string& line) {
    for (const SimLibrary& other : SimLibraries()) {
        const platform::LibraryHandle library = platform::LoadedLibrary((std::string(other.name) + ".dll").c_str());
        const auto control = platform::FindFunction<ZelSimControlFunction>(library, "zel_sim_control");
        const bool told = control && control(("told " + line).c_str(), nullptr, 0) >= 0;
        platform::UnloadSharedLibrary(library);
        if (told) return true;
    }
    return false;
}

}  // namespace

bool HasTold(const std::string& line) {
    const platform::ScopedLock lock(s_Lock);
    return Lines().contains(line);
}

void Complain(const std::string& line) {
    if (AnotherHasTold(line)) return;
    {
        const platform::ScopedLock lock(s_Lock);
        if (!Lines().insert(line).second) return;
    }
    platform::PinThisLibrary();  // or the line would be forgotten with it
    std::fprintf(stderr, "%s\n", line.c_str());
}

}  // namespace zel::sim
