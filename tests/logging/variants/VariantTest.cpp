#include <gtest/gtest.h>

#include <vector>

#include "sdk/Logger.h"
#include "tests/logging/variants/Variant.h"

namespace zel {
namespace {

// Keeps the library of this variant loaded while it lives.
class VariantLibrary {
  public:
    VariantLibrary() : m_Library(platform::LoadSharedLibrary("kestrane_zel_logger.dll")) {}
    ~VariantLibrary() { platform::UnloadSharedLibrary(m_Library); }
    VariantLibrary(const VariantLibrary&) = delete;
    VariantLibrary& operator=(const VariantLibrary&) = delete;

    std::vector<int> Counts() const {
        std::vector<int> counts(3, 0);
        using CountsFunction = void(ZEL_CALL*)(int*);
        const auto fill = platform::FindFunction<CountsFunction>(m_Library, "variant_counts");
        if (fill) fill(counts.data());
        EXPECT_EQ(kVariant.library, fill != nullptr);
        return counts;
    }

  private:
    platform::LibraryHandle m_Library;
};

const std::vector<int> kCountsOfOneLife{kVariant.gets, kVariant.lines, kVariant.frees};

TEST(LoggerVariant, LogsWhatTheLibraryAllows) {
    const VariantLibrary library;
    int evaluations = 0;
    {
        Logger logger("Source", "instance");
        EXPECT_EQ(kVariant.enabled, logger.Enabled()) << kVariant.name;
        ZEL_LOG(logger, kLogTrace, "Class::Operation", "%d", ++evaluations);
    }
    EXPECT_EQ(kVariant.enabled ? 1 : 0, evaluations) << "arguments are computed for a log that is there only";
    EXPECT_EQ(kCountsOfOneLife, library.Counts()) << kVariant.name;
}

// With nobody else holding the library its counts start anew after every logger.
TEST(LoggerVariant, UnloadsTheLibraryInTheEnd) {
    for (int i = 0; i < 3; ++i) {
        Logger logger("Source");
        logger.Log(kLogTrace, "File.cpp", 1, "Class::Operation", "a line");
    }
    EXPECT_EQ((std::vector<int>{0, 0, 0}), VariantLibrary().Counts()) << kVariant.name;
}

TEST(LoggerVariant, ServesProcessWideLoggers) {
    const VariantLibrary library;
    const bool delivered = SdkLogger().Get().Log(kLogError, "File.cpp", 1, "Class::Operation", "a line");
    EXPECT_EQ(kVariant.delivered, delivered);
    SdkLogger().Destroy();
    EXPECT_EQ(kCountsOfOneLife, library.Counts()) << kVariant.name;
}

}  // namespace
}  // namespace zel
