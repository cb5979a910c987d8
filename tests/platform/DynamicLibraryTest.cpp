#include "platform/DynamicLibrary.h"

#include <gtest/gtest.h>

#include <string>

#include "ZelPlatform.h"

namespace zel::platform {
namespace {

using CountCall = int(ZEL_CALL*)();

TEST(DynamicLibrary, FindsALibraryBesideTheProgramByItsCanonicalName) {
    const LibraryHandle library = LoadSharedLibrary("platform_probe.dll");
    ASSERT_NE(nullptr, library);
    const auto count = FindFunction<CountCall>(library, "probe_count_call");
    ASSERT_NE(nullptr, count);
    EXPECT_EQ(1, count());
    EXPECT_EQ(2, count());
    EXPECT_EQ(nullptr, FindExport(library, "probe_absent"));
    EXPECT_EQ(nullptr, FindExport(library, nullptr));
    UnloadSharedLibrary(library);
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
    EXPECT_NE(nullptr, FindExport(library, "probe_count_call"));
    UnloadSharedLibrary(library);
}

// The counter lives as long as the library stays loaded.
TEST(DynamicLibrary, StaysLoadedUntilEveryLoadIsTakenBack) {
    const auto call = [](LibraryHandle library) { return FindFunction<CountCall>(library, "probe_count_call")(); };
    const LibraryHandle first = LoadSharedLibrary("platform_probe.dll");
    const LibraryHandle second = LoadSharedLibrary("platform_probe.dll");
    ASSERT_TRUE(first && second);
    EXPECT_EQ(1, call(first));
    UnloadSharedLibrary(first);
    EXPECT_EQ(2, call(second));
    UnloadSharedLibrary(second);
    const LibraryHandle fresh = LoadSharedLibrary("platform_probe.dll");
    ASSERT_NE(nullptr, fresh);
    EXPECT_EQ(1, call(fresh));
    UnloadSharedLibrary(fresh);
}

TEST(DynamicLibrary, AnswersNullForWhatCannotBeLoaded) {
    for (const char* name : {"platform_absent.dll", "no/such/folder/platform_probe.dll", "", "platform_absent"}) {
        EXPECT_EQ(nullptr, LoadSharedLibrary(name)) << "name: " << name;
        DiscardLoadError();
    }
    EXPECT_EQ(nullptr, LoadSharedLibrary(nullptr));
    EXPECT_EQ(nullptr, FindExport(nullptr, "probe_count_call"));
    UnloadSharedLibrary(nullptr);
}

}  // namespace
}  // namespace zel::platform
