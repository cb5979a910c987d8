#include "sdk/Logger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "platform/Clock.h"
#include "tests/support/RecordedLog.h"

namespace zel {
namespace {

using test::RecordedLine;
using test::RecordedLog;
using testing::ElementsAre;

TEST(Logger, DeliversEachPartOfALine) {
    RecordedLog log;
    Logger logger("SyncTable", "camera 3");
    ASSERT_TRUE(logger.Enabled());
    EXPECT_TRUE(logger.Log(kLogWarning, "File.cpp", 42, "SyncTable::Get", "%s is %d of %.2f\n", "seven", 7, 0.5));
    const std::vector<RecordedLine> lines = log.Lines();
    ASSERT_EQ(1u, lines.size());
    EXPECT_EQ(1, lines[0].level);
    EXPECT_EQ(42, lines[0].line);
    EXPECT_EQ("SyncTable", lines[0].source);
    EXPECT_EQ("camera 3", lines[0].instance);
    EXPECT_EQ("File.cpp", lines[0].file);
    EXPECT_EQ("SyncTable::Get", lines[0].function);
    EXPECT_EQ("seven is 7 of 0.50\n", lines[0].message) << "the line end is the text's own";

    log.Clear();
    ZEL_LOG(logger, kLogTrace, "Class::Operation", "text");
    ASSERT_EQ(1u, log.Lines().size());
    EXPECT_EQ("LoggerTest.cpp", log.Lines()[0].file) << "without its folders";
    EXPECT_EQ(__LINE__ - 3, log.Lines()[0].line);
    EXPECT_EQ(2, log.Lines()[0].level);
}

TEST(Logger, TakesNamesThatAreShortLongOrMissing) {
    RecordedLog log;
    const std::string long_name(5000, 'n');
    const struct {
        const char* source;
        const char* instance;
        std::string expected_source, expected_instance;
    } cases[] = {
        {"", "", "", ""},
        {nullptr, nullptr, "", ""},
        {long_name.c_str(), "x", long_name, "x"},
        {"x", long_name.c_str(), "x", long_name},
    };
    for (const auto& each : cases) {
        log.Clear();
        {
            Logger logger(each.source, each.instance);
            EXPECT_TRUE(logger.Log(kLogError, "f", 1, "g", "h"));
            EXPECT_EQ(1, log.LiveLogs());
        }
        EXPECT_EQ(0, log.LiveLogs());
        const std::vector<RecordedLine> lines = log.Lines();
        ASSERT_EQ(1u, lines.size());
        EXPECT_EQ(each.expected_source, lines[0].source);
        EXPECT_EQ(each.expected_instance, lines[0].instance);
    }
}

TEST(Logger, DeliversALineOfAnyLengthWhole) {
    RecordedLog log;
    Logger logger("Source");
    for (const std::size_t length : {0u, 1u, 255u, 1023u, 1024u, 4096u, 65536u, 3000000u}) {
        log.Clear();
        const std::string text(length, 'x');
        ASSERT_TRUE(logger.Log(kLogTrace, "f", 1, "g", "<%s>", text.c_str()));
        EXPECT_EQ(1, log.Count("<" + text + ">")) << length;
    }
}

// The plain locale has no form for this character, so that the length of the line can't be told.
TEST(Logger, DropsALineWhoseLengthCannotBeMeasured) {
    RecordedLog log;
    Logger logger("Source");
    if (std::snprintf(nullptr, 0, "%ls", L"\x263a") >= 0) {
        GTEST_SKIP() << "this system's C library never fails to measure a line";
    }
    EXPECT_FALSE(logger.Log(kLogTrace, "f", 1, "g", "%ls", L"\x263a"));
    EXPECT_THAT(log.Messages(), ElementsAre());
    EXPECT_TRUE(logger.Log(kLogTrace, "f", 1, "g", "the next"));
    EXPECT_THAT(log.Messages(), ElementsAre("the next"));
}

TEST(ScopeTimer, LogsItsStageOnceWithTheTimeItTook) {
    RecordedLog log;
    Logger logger("Source");
    {
        ZEL_SCOPE_TIMER(timer, "the stage", logger, "Class::Operation");
        platform::SleepMilliseconds(20);
        EXPECT_THAT(log.Messages(), ElementsAre());
        timer.Stop();
        EXPECT_EQ(1u, log.Messages().size());
        ZEL_SCOPE_TIMER(second, "a second stage", logger, "Class::Operation");
    }
    EXPECT_EQ(1, log.CountContaining("a second stage takes ")) << "a timer stops at the end of its scope";
    const std::vector<RecordedLine> lines = log.Lines();
    ASSERT_EQ(2u, lines.size()) << "a stopped timer is silent at its end";
    EXPECT_EQ(2, lines[0].level);
    EXPECT_EQ("LoggerTest.cpp", lines[0].file);
    EXPECT_EQ("Class::Operation", lines[0].function);
    const std::string& message = lines[0].message;
    ASSERT_THAT(message, testing::StartsWith("the stage takes "));
    const double microseconds = std::stod(message.substr(std::string("the stage takes ").size()));
    EXPECT_GE(microseconds, 15000.0);
    EXPECT_LT(microseconds, 5e6);
    EXPECT_THAT(message, testing::EndsWith(" microseconds."));
    EXPECT_EQ(message.find('.') + 7, message.find(" microseconds.")) << "six digits after the point";
}

TEST(LogTexts, BaseNameIsWhatFollowsTheLastSeparator) {
    const struct {
        const char* path;
        const char* name;
    } cases[] = {{"File.cpp", "File.cpp"},
                 {"/a/b/File.cpp", "File.cpp"},
                 {"c:\\a\\b\\File.cpp", "File.cpp"},
                 {"c:\\a/b\\c/File.cpp", "File.cpp"},
                 {"a/", ""},
                 {"", ""}};
    for (const auto& each : cases) EXPECT_STREQ(each.name, BaseName(each.path)) << each.path;
}

TEST(LogTexts, PointersHaveAtLeastEightDigitsAndAllSignificantOnes) {
    const auto text = [](std::uintptr_t value) {
        return std::string(PointerText(reinterpret_cast<const void*>(value)).text);
    };
    EXPECT_EQ("0x00000000", text(0));
    EXPECT_EQ("0x0000abcd", text(0xabcd));
    EXPECT_EQ("0xfedcba98", text(0xfedcba98));
    constexpr bool kWide = sizeof(void*) == 8;
    EXPECT_EQ(kWide ? "0xffffffffffffffff" : "0xffffffff", text(~std::uintptr_t{0}));
    EXPECT_EQ(text(reinterpret_cast<std::uintptr_t>(&BaseName)), PointerText(&BaseName).text);
}

}  // namespace
}  // namespace zel
