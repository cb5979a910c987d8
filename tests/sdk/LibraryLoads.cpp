// The program is linked so that all loads of libraries lead here first (CMakeLists.txt): a test plug-in counts them,
// and does not have what its control says it lacks.
#include <cstring>

#include "platform/DynamicLibrary.h"
#include "tests/sdk/plugins/TestPlugin.h"

using zel::platform::LibraryHandle;

// Other names for the linker: the platform's functions, and what everybody's calls lead to.
extern "C" {
LibraryHandle RealLoad(const char* name);
void* RealFind(LibraryHandle library, const char* name);
void RealUnload(LibraryHandle library);
LibraryHandle TestLoad(const char* name);
void* TestFind(LibraryHandle library, const char* name);
void TestUnload(LibraryHandle library);
}

namespace {
zel::test::TestPluginControl* ControlOf(LibraryHandle library) {
    void* const control = RealFind(library, "test_plugin_control");
    return control ? reinterpret_cast<zel::test::TestPluginControlFunction>(control)() : nullptr;
}
}  // namespace

LibraryHandle TestLoad(const char* name) {
    const LibraryHandle library = RealLoad(name);
    const auto control = ControlOf(library);
    if (control) ++control->loads;
    if (!control || !std::strstr(control->lacks, "library")) return library;
    TestUnload(library);
    return nullptr;
}

void* TestFind(LibraryHandle library, const char* name) {
    const auto control = ControlOf(library);
    return control && std::strstr(control->lacks, name) ? nullptr : RealFind(library, name);
}

void TestUnload(LibraryHandle library) {
    if (const auto control = ControlOf(library)) --control->loads;
    RealUnload(library);
}
