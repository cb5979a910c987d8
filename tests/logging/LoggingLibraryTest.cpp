// The logging library as loggers meet it: found by name, asked through the environment.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "sdk/Logger.h"
#include "tests/support/Process.h"

namespace zel {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// The line without its time stamp, "2024-02-29T23:59:59.999Z ".
std::string AfterStamp(const std::string& line) {
    constexpr std::string_view kForm = "dddd-dd-ddTdd:dd:dd.dddZ ";
    EXPECT_GE(line.size(), kForm.size()) << line;
    for (std::size_t i = 0; i < kForm.size() && i < line.size(); ++i) {
        const bool fits = kForm[i] == 'd' ? line[i] >= '0' && line[i] <= '9' : line[i] == kForm[i];
        EXPECT_TRUE(fits) << "character " << i << " of " << line;
    }
    return line.substr(std::min(line.size(), kForm.size()));
}

std::vector<std::string> SplitLines(std::istream&& text) {
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        if (line.ends_with('\r')) line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

class LoggingLibrary : public testing::Test {
  protected:
    void SetUp() override {
        static int s_Number = 0;  // a file is kept open for as long as the library is loaded
        m_File = std::filesystem::temp_directory_path() / ("zel_log_" + std::to_string(++s_Number) + ".txt");
        std::filesystem::remove(m_File);
    }
    void TearDown() override {
        platform::SetEnvironment("ZEL_LOG", nullptr);
        std::error_code error;
        std::filesystem::remove(m_File, error);
    }

    static void Ask(const std::string& value) { platform::SetEnvironment("ZEL_LOG", value.c_str()); }
    std::string InFile(const std::string& level) const { return level + ":" + m_File.string(); }
    std::vector<std::string> FileLines() const { return SplitLines(std::ifstream(m_File, std::ios::binary)); }

    // What `work` prints on the error stream.
    template <class Work>
    static std::vector<std::string> ErrorLines(Work work) {
        testing::internal::CaptureStderr();
        work();
        return SplitLines(std::istringstream(testing::internal::GetCapturedStderr()));
    }

    std::filesystem::path m_File;
};

void LogOneOfEachLevel() {
    Logger logger("Source", "instance");
    logger.Log(kLogError, "File.cpp", 11, "Class::First", "an error");
    logger.Log(kLogWarning, "File.cpp", 22, "Class::Second", "a warning");
    logger.Log(kLogTrace, "File.cpp", 33, "Class::Third", "a trace");
}

TEST_F(LoggingLibrary, IsQuietUnlessAsked) {
    for (const char* value : {"", "error", ""}) {
        Ask(value);
        EXPECT_EQ(*value != '\0', Logger("Source").Enabled()) << "ZEL_LOG=" << value;
    }
    EXPECT_THAT(ErrorLines(LogOneOfEachLevel), IsEmpty());
}

TEST_F(LoggingLibrary, PrintsTheLevelsAskedForToTheErrorStream) {
    const std::string values[] = {"error", "warning", "trace"};
    for (std::size_t level = 0; level < 3; ++level) {
        for (const char* no_file : {"", ":"}) {
            Ask(values[level] + no_file);
            const std::vector<std::string> lines = ErrorLines(LogOneOfEachLevel);
            ASSERT_EQ(level + 1, lines.size()) << values[level] << no_file;
            EXPECT_THAT(lines[level], HasSubstr("Z " + values[level] + " Source[instance] Class::"));
        }
    }
}

TEST_F(LoggingLibrary, ShowsEveryPartOfALine) {
    Ask(InFile("trace"));
    Logger logger("Source", "instance");
    EXPECT_TRUE(logger.Log(kLogWarning, "File.cpp", 22, "Class::Second", "50%% of {} is %d", 7));
    EXPECT_TRUE(Logger("Source").Log(kLogError, "Other.cpp", 1, "Function", "no instance"));
    const std::vector<std::string> lines = FileLines();
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ("warning Source[instance] Class::Second File.cpp:22 50% of {} is 7", AfterStamp(lines[0]));
    EXPECT_EQ("error Source Function Other.cpp:1 no instance", AfterStamp(lines[1]));
}

TEST_F(LoggingLibrary, DropsOneLineEndOfAMessage) {
    Ask(InFile("trace"));
    Logger logger("Source");
    for (const char* message : {"plain", "unix\n", "windows\r\n", "two\n\n", "\ninside"}) {
        EXPECT_TRUE(logger.Log(kLogTrace, "f", 1, "g", "%s", message));
    }
    std::vector<std::string> ends;
    for (const std::string& line : FileLines()) ends.push_back(line.substr(line.rfind(' ') + 1));
    EXPECT_THAT(ends, ElementsAre("plain", "unix", "windows", "two", "", "", "inside"));
}

TEST_F(LoggingLibrary, AddsToAFileThatIsThereAndWritesEveryLineOutAtOnce) {
    std::ofstream(m_File) << "from before\n";
    Ask(InFile("error"));
    Logger logger("Source");
    for (std::size_t i = 1; i <= 3; ++i) {
        logger.Log(kLogError, "f", 1, "g", "more");
        logger.Log(kLogTrace, "f", 1, "g", "not wanted");
        EXPECT_EQ(1 + i, FileLines().size());
    }
    EXPECT_EQ("from before", FileLines().front());
}

TEST_F(LoggingLibrary, KeepsLinesOfSeveralThreadsApart) {
    constexpr int kThreads = 4, kLines = 100;
    Ask(InFile("trace"));
    const Logger keep_loaded("Source");
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([i] {
            Logger logger("Source", std::to_string(i).c_str());
            const std::string text(200, static_cast<char>('a' + i));
            for (int line = 0; line < kLines; ++line) logger.Log(kLogTrace, "f", 1, "g", "%s", text.c_str());
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::vector<int> counts(kThreads, 0);
    for (const std::string& line : FileLines()) {
        const int thread = line.back() - 'a';
        ASSERT_TRUE(thread >= 0 && thread < kThreads) << line;
        const std::string end = " Source[" + std::to_string(thread) + "] g f:1 " + std::string(200, line.back());
        EXPECT_THAT(line, testing::EndsWith(end));
        ++counts[static_cast<std::size_t>(thread)];
    }
    EXPECT_THAT(counts, testing::Each(kLines));
}

// A program that ends while a camera's thread logs on.
TEST_F(LoggingLibrary, TakesLinesUntilTheProcessIsGone) {
    static std::atomic<int> s_Lines{0};
    const auto end_while_logging = [] {
        // Runs after whatever the library would have torn down.
        std::atexit([] {
            for (const int seen = s_Lines; s_Lines < seen + 200;) std::this_thread::yield();
        });
        std::thread([] {
            for (Logger logger("Source");;) s_Lines += logger.Log(kLogTrace, "f", 1, "g", "%s", "still running");
        }).detach();
        while (s_Lines == 0) std::this_thread::yield();
        std::exit(0);
    };
    // Where there is no fork the test runs anew in the process that ends, with its parent's environment.
    if (!std::getenv("ZEL_LOG")) Ask(InFile("trace"));
    EXPECT_EXIT(end_while_logging(), testing::ExitedWithCode(0), "");
    EXPECT_GE(FileLines().size(), 200u);
}

TEST_F(LoggingLibrary, NamesTheKnownValuesOnceWhenAnotherIsSet) {
    for (const std::string value : {"everything", "Trace", "trace ", "1", "errors", ":zel.log", "debug:zel.log"}) {
        Ask(value);
        const std::vector<std::string> lines = ErrorLines([] {
            const Logger keep_loaded("Source");
            LogOneOfEachLevel();
            EXPECT_FALSE(Logger("Source").Enabled()) << "the value counts as not asked for";
        });
        ASSERT_EQ(1u, lines.size()) << value;
        for (const std::string& word : {"ZEL_LOG=" + value, std::string("error, warning"), std::string(":FILE")}) {
            EXPECT_THAT(lines[0], HasSubstr(word));
        }
    }
}

TEST_F(LoggingLibrary, UsesTheErrorStreamForAFileThatCannotBeOpened) {
    const std::filesystem::path folder = m_File;
    std::filesystem::create_directory(folder);  // a folder is no file
    Ask("error:" + folder.string());
    const std::vector<std::string> lines = ErrorLines(LogOneOfEachLevel);
    ASSERT_EQ(2u, lines.size());
    EXPECT_THAT(lines[0], HasSubstr(folder.string() + " can't be opened"));
    EXPECT_THAT(lines[1], testing::EndsWith(" an error"));
}

TEST_F(LoggingLibrary, TellsWhenALineCouldNotBeWritten) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "this system has no file that is always full";
    Ask("trace:/dev/full");
    Logger logger("Source");
    ASSERT_TRUE(logger.Enabled());
    EXPECT_FALSE(logger.Log(kLogTrace, "f", 1, "g", "no room"));
}

TEST_F(LoggingLibrary, TakesMissingTexts) {
    using GetLog = void*(ZEL_CALL*)(const char*, const char*);
    using LogLine = int(ZEL_CALL*)(void*, int, const char*, int, const char*, const char*);
    const platform::LibraryHandle library = platform::LoadSharedLibrary("kestrane_zel_logger.dll");
    ASSERT_NE(nullptr, library);
    const auto get_log = platform::FindFunction<GetLog>(library, "zel_get_log");
    const auto log_line = platform::FindFunction<LogLine>(library, "zel_log");
    ASSERT_TRUE(get_log && log_line);
    EXPECT_NE(0, log_line(nullptr, 0, "f", 1, "g", "no log")) << "a log that was refused takes no lines";
    Ask(InFile("trace"));
    void* log = get_log(nullptr, nullptr);
    ASSERT_NE(nullptr, log);
    EXPECT_EQ(0, log_line(log, -5, nullptr, 0, nullptr, nullptr)) << "a level below the first is an error";
    EXPECT_EQ(0, log_line(log, 99, "f", 1, "g", "above the last")) << "and one above the last is not wanted";
    const std::vector<std::string> lines = FileLines();
    ASSERT_EQ(1u, lines.size());
    EXPECT_THAT(lines[0], HasSubstr(" error "));
    platform::UnloadSharedLibrary(library);
}

}  // namespace
}  // namespace zel
