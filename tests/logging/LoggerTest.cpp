// The logger on a system of this program's own: one logging library, with the exports that a case leaves it, and a
// performance counter that stands still.
#include "sdk/Logger.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <string>
#include <vector>

#include "platform/Clock.h"

namespace zel {
namespace {

using testing::ElementsAre;

std::string s_Calls;               // Load, Get, Take, Free, Unload by their first letters
std::string s_Names;               // of the log asked for last: "source/instance"
std::vector<std::string> s_Lines;  // since the last load: "level file:line function message"
std::int64_t s_Ticks = 0;          // ten a microsecond

void* ZEL_CALL Get(const char* source, const char* instance) {
    s_Calls += 'G';
    s_Names = std::string(source) + "/" + instance;
    return &s_Lines;
}
void* ZEL_CALL Refuse(const char* source, const char* instance) { return Get(source, instance), nullptr; }
int ZEL_CALL Take(void* log, int level, const char* file, int line, const char* function, const char* message) {
    s_Calls += 'T';
    s_Lines.push_back(std::to_string(level) + " " + file + ":" + std::to_string(line) + " " + function + " " + message);
    return log == &s_Lines ? 0 : 1;
}
int ZEL_CALL Fail(void*, int, const char*, int, const char*, const char*) { return s_Calls += 'T', 7; }
void ZEL_CALL Free(const char* source, const char* instance) {
    s_Calls += s_Names.empty() || s_Names == std::string(source) + "/" + instance ? 'F' : '?';
}

struct Library {
    const char* what;
    decltype(&Get) get;
    decltype(&Take) take;
    decltype(&Free) free;
    const char* calls;  // in the life of one logger with one line
    bool delivered;     // what Log answers
};
Library s_Whole{"whole", &Get, &Take, &Free, "LGTFU", true};
Library* s_Library = &s_Whole;  // null: there is none

}  // namespace

namespace platform {

LibraryHandle LoadSharedLibrary(const char* name) {
    if (!s_Library || std::string(name) != "kestrane_zel_logger.dll") return nullptr;
    s_Names.clear();
    s_Lines.clear();
    return s_Calls += 'L', s_Library;
}
void* FindExport(LibraryHandle handle, const char* name) {
    if (!handle) return nullptr;
    const Library& library = *static_cast<const Library*>(handle);
    if (std::string(name) == "zel_get_log") return reinterpret_cast<void*>(library.get);
    if (std::string(name) == "zel_log") return reinterpret_cast<void*>(library.take);
    return std::string(name) == "zel_free_log" ? reinterpret_cast<void*>(library.free) : nullptr;
}
void UnloadSharedLibrary(LibraryHandle handle) { s_Calls += handle ? "U" : ""; }
bool PerformanceFrequency(std::int64_t& ticks_per_second) { return ticks_per_second = 10'000'000, true; }
bool PerformanceCounter(std::int64_t& ticks) { return ticks = s_Ticks, true; }

}  // namespace platform

namespace {

TEST(LoggerTest, LogsWhatTheLibraryAllows) {
    Library libraries[] = {
        s_Whole,
        {"without get", nullptr, &Take, &Free, "LFU", false},
        {"without log", &Get, nullptr, &Free, "LGFU", false},
        {"without free", &Get, &Take, nullptr, "LGTU", true},
        {"refusing", &Refuse, &Take, &Free, "LGFU", false},
        {"failing", &Get, &Fail, &Free, "LGTFU", false},
        {"absent", nullptr, nullptr, nullptr, "", false},
    };
    for (Library& each : libraries) {
        SCOPED_TRACE(each.what);
        s_Library = *each.calls ? &each : nullptr;
        s_Calls.clear();
        int evaluations = 0;
        {
            Logger logger("Source", "instance");
            ZEL_LOG(logger, kLogTrace, "Class::Operation", "%d", ++evaluations);
            EXPECT_EQ(std::string(each.calls).find('T') != std::string::npos, logger.Enabled());
            EXPECT_EQ(logger.Enabled(), evaluations == 1) << "arguments are computed for a log that is there only";
        }
        EXPECT_EQ(each.calls, s_Calls);
        s_Calls.clear();
        EXPECT_EQ(each.delivered, SdkLogger().Get().Log(kLogError, "File.cpp", 1, "Class::Operation", "a line"));
        SdkLogger().Destroy();
        EXPECT_EQ(each.calls, s_Calls) << "by the process-wide logger";
    }
    s_Library = &s_Whole;
}

TEST(LoggerTest, DeliversEachPartOfALine) {
    Logger logger("Source");
    EXPECT_TRUE(logger.Log(kLogWarning, "File.cpp", 42, "SyncTable::Get", "%s is %d of %.2f\n", "seven", 7, 0.5));
    ZEL_LOG(logger, kLogTrace, "Class::Operation", "text");
    const std::string here = "LoggerTest.cpp:" + std::to_string(__LINE__ - 1);
    EXPECT_THAT(s_Lines, ElementsAre("1 File.cpp:42 SyncTable::Get seven is 7 of 0.50\n",
                                     "2 " + here + " Class::Operation text"));
}

TEST(LoggerTest, TakesTextsOfAnyLength) {
    for (const std::size_t length : {0u, 1u, 255u, 1023u, 1024u, 4096u, 65536u, 3000000u}) {
        const std::string source(length, 's'), instance(length, 'i'), text(length, 't');
        Logger logger(source.c_str(), instance.c_str());
        EXPECT_TRUE(logger.Log(kLogError, "f", 1, "g", "<%s>", text.c_str()));
        EXPECT_TRUE(s_Names == source + "/" + instance && s_Lines.back() == "0 f:1 g <" + text + ">") << length;
    }
    EXPECT_TRUE(Logger(nullptr, nullptr).Enabled());
    EXPECT_EQ("/", s_Names);
}

// The plain locale has no form for this character, so that the length of the line can't be told.
TEST(LoggerTest, DropsALineWhoseLengthCannotBeMeasured) {
    if (std::snprintf(nullptr, 0, "%ls", L"\x263a") >= 0) {
        GTEST_SKIP() << "this system's C library never fails to measure a line";
    }
    Logger logger("Source");
    EXPECT_FALSE(logger.Log(kLogTrace, "f", 1, "g", "%ls", L"\x263a"));
    logger.Log(kLogTrace, "f", 1, "g", "the next");
    EXPECT_THAT(s_Lines, ElementsAre("2 f:1 g the next"));
}

TEST(LoggerTest, ScopeTimerLogsItsStageOnceWithTheTimeItTook) {
    Logger logger("Source");
    const int line = __LINE__ + 2;
    {
        ZEL_SCOPE_TIMER(timer, "the stage", logger, "Class::Operation");
        s_Ticks += 15;
        timer.Stop();
        s_Ticks += 1'000'000;
        EXPECT_EQ(1u, s_Lines.size());
        ScopeTimer second("a second stage", logger, "File.cpp", 7, "Class::Other");
    }
    const std::string first = "2 LoggerTest.cpp:" + std::to_string(line);
    EXPECT_THAT(s_Lines, ElementsAre(first + " Class::Operation the stage takes 1.500000 microseconds.",
                                     "2 File.cpp:7 Class::Other a second stage takes 0.000000 microseconds."));
}

}  // namespace
}  // namespace zel
