#include "platform/DynamicLibrary.h"

#include <gtest/gtest.h>

#include "ZelPlatform.h"

namespace zel::platform {
namespace {

// The probe's counter lives as long as the library stays loaded.
TEST(DynamicLibrary, StaysLoadedUntilEveryLoadIsTakenBack) {
    const auto count = [](LibraryHandle library) {
        const auto call = FindFunction<int(ZEL_CALL*)()>(library, "probe_count_call");
        return call ? call() : -1;
    };
    const LibraryHandle first = LoadSharedLibrary("platform_probe.dll");
    const LibraryHandle second = LoadSharedLibrary("platform_probe.dll");
    EXPECT_EQ(1, count(first)) << "found beside this program by its canonical name";
    UnloadSharedLibrary(first);
    EXPECT_EQ(2, count(second));
    UnloadSharedLibrary(second);
    const LibraryHandle fresh = LoadSharedLibrary("platform_probe.dll");
    EXPECT_EQ(1, count(fresh));
    EXPECT_EQ(nullptr, FindExport(fresh, "probe_absent"));
    EXPECT_EQ(nullptr, FindExport(fresh, nullptr));
    UnloadSharedLibrary(fresh);
}

// An export of a library that came along would be called in this one's name.
TEST(DynamicLibrary, LooksIntoTheLibraryItself) {
    const LibraryHandle library = LoadSharedLibrary("platform_dependent_probe.dll");
    ASSERT_NE(nullptr, library);
    EXPECT_NE(nullptr, FindExport(library, "probe_count_through"));
    EXPECT_EQ(nullptr, FindExport(library, "probe_count_call"));
    UnloadSharedLibrary(library);
}

TEST(DynamicLibrary, KeepsTheFolderOfACanonicalName) {
    EXPECT_EQ(nullptr, LoadSharedLibrary("platform_far_probe.dll"));
    const LibraryHandle library = LoadSharedLibrary("./far/platform_far_probe.dll");
    ASSERT_NE(nullptr, library) << "this program runs in the folder that it stands in";
    UnloadSharedLibrary(library);
}

TEST(DynamicLibrary, AnswersNullForWhatCannotBeLoaded) {
    for (const char* name : {"platform_absent.dll", "no/such/folder/platform_probe.dll", "", "platform_absent",
                             static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(nullptr, LoadSharedLibrary(name)) << "name: " << (name ? name : "null");
        DiscardLoadError();
    }
    EXPECT_EQ(nullptr, FindExport(nullptr, "probe_count_call"));
    UnloadSharedLibrary(nullptr);
}

}  // namespace
}  // namespace zel::platform
