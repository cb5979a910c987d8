// The logging library as loggers meet it: found by name, asked through the environment. It stays loaded for good.
#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "sdk/Logger.h"
#include "tests/support/Process.h"

namespace zel {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

struct LoggingLibrary : testing::Test {
    // The last run's file: Windows removes none that is open.
    LoggingLibrary() { std::filesystem::remove(m_File); }
    ~LoggingLibrary() override { Ask(""); }
    static void Ask(const std::string& value) { platform::SetEnvironment("ZEL_LOG", value.c_str()); }

    // The lines of a text, with TIME in place of their time stamps.
    static std::vector<std::string> Lines(std::istream&& text) {
        static const std::regex kStamp("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z ");
        std::vector<std::string> lines;
        for (std::string line; std::getline(text, line);) lines.push_back(std::regex_replace(line, kStamp, "TIME "));
        return lines;
    }
    std::vector<std::string> FileLines() const { return Lines(std::ifstream(m_File)); }
    // What a logger prints on the error stream.
    static std::vector<std::string> ErrorLines() {
        testing::internal::CaptureStderr();
        Logger logger("Source", "instance");
        logger.Log(kLogError, "File.cpp", 11, "Class::First", "an error");
        logger.Log(kLogWarning, "File.cpp", 22, "Class::Second", "a warning");
        logger.Log(kLogTrace, "File.cpp", 33, "Class::Third", "a trace");
        std::string text = testing::internal::GetCapturedStderr();
        std::erase(text, '\r');
        return Lines(std::istringstream(text));
    }

    // Each test has a file of its own, for the library keeps it open, and values of ZEL_LOG that it has not seen yet.
    static inline int s_Number = 0;
    const std::string m_Number = std::to_string(++s_Number);
    const std::string m_File = std::filesystem::absolute("logging_library_" + m_Number + ".txt").string();
};

TEST_F(LoggingLibrary, PrintsTheLevelsAskedForToTheErrorStream) {
    const std::pair<const char*, std::size_t> cases[] = {{"", 0},         {"error", 1}, {"error:", 1}, {"warning", 2},
                                                         {"warning:", 2}, {"trace", 3}, {"trace:", 3}, {"", 0}};
    std::vector<std::string> expected{"TIME error Source[instance] Class::First File.cpp:11 an error",
                                      "TIME warning Source[instance] Class::Second File.cpp:22 a warning",
                                      "TIME trace Source[instance] Class::Third File.cpp:33 a trace"};
    for (const auto& [value, lines] : cases) {
        Ask(value);
        EXPECT_EQ(lines > 0, Logger("Source").Enabled()) << "ZEL_LOG=" << value;
        EXPECT_EQ(std::vector(expected.begin(), expected.begin() + static_cast<int>(lines)), ErrorLines()) << value;
    }
}

TEST_F(LoggingLibrary, AddsEachLineToAFileAtOnceWithoutOneLineEndOfItsOwn) {
    std::ofstream(m_File) << "from before\n";
    Ask("warning:" + m_File);
    Logger logger("Source");
    for (const char* message : {"50% of {}", "unix\n", "windows\r\n", "two\n\n", "\ninside"}) {
        EXPECT_TRUE(logger.Log(kLogError, "f", 1, "g", "%s", message));
        EXPECT_TRUE(logger.Log(kLogTrace, "f", 1, "g", "not wanted"));
    }
    EXPECT_THAT(FileLines(), ElementsAre("from before", "TIME error Source g f:1 50% of {}",
                                         "TIME error Source g f:1 unix", "TIME error Source g f:1 windows",
                                         "TIME error Source g f:1 two", "", "TIME error Source g f:1 ", "inside"));
}

// A program that ends while threads of its cameras log on.
TEST_F(LoggingLibrary, TakesWholeLinesUntilTheProcessIsGone) {
    static std::atomic<int> s_Lines{0};
    const auto end_while_logging = [] {
        // Runs after whatever the library would have torn down.
        std::atexit([] {
            for (const int seen = s_Lines; s_Lines < seen + 400;) std::this_thread::yield();
        });
        for (const char letter : {'a', 'b', 'c', 'd'}) {
            std::thread([text = std::string(200, letter)] {
                for (Logger logger("Source");;) s_Lines += logger.Log(kLogTrace, "f", 1, "g", "%s", text.c_str());
            }).detach();
        }
        while (s_Lines < 400) std::this_thread::yield();
        std::exit(0);
    };
    // Where there is no fork the test runs anew in the process that ends, with its parent's environment.
    if (!std::getenv("ZEL_LOG")) Ask("trace:" + m_File);
    EXPECT_EXIT(end_while_logging(), testing::ExitedWithCode(0), "");
    const std::vector<std::string> lines = FileLines();
    EXPECT_GE(lines.size(), 800u);
    for (const std::string& line : lines) EXPECT_EQ("TIME trace Source g f:1 " + std::string(200, line.back()), line);
}

TEST_F(LoggingLibrary, NamesTheKnownValuesOnceWhenAnotherIsSet) {
    for (const std::string start : {"everything", "Trace:", "trace :", "1:", "errors:", ":zel.log", "debug:zel.log"}) {
        Ask(start + m_Number);
        const std::vector<std::string> lines = ErrorLines();
        ASSERT_EQ(1u, lines.size()) << start;
        EXPECT_THAT(lines[0],
                    AllOf(HasSubstr("ZEL_LOG=" + start + m_Number), HasSubstr("error, warning"), HasSubstr(":FILE")));
        EXPECT_THAT(ErrorLines(), ElementsAre()) << "the value counts as not asked for";
    }
}

TEST_F(LoggingLibrary, TellsOfAFileThatCannotBeOpenedOrWritten) {
    std::filesystem::create_directory(m_File);  // a folder is no file
    Ask("error:" + m_File);
    EXPECT_THAT(ErrorLines(), ElementsAre(HasSubstr(m_File + " can't be opened"), HasSubstr(" an error")));
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "this system has no file that is always full";
    Ask("trace:/dev/full");
    Logger logger("Source");
    EXPECT_TRUE(logger.Enabled() && !logger.Log(kLogTrace, "f", 1, "g", "no room"));
}

TEST_F(LoggingLibrary, TakesMissingTexts) {
    const platform::LibraryHandle library = platform::LoadSharedLibrary("kestrane_zel_logger.dll");
    using GetLog = void*(ZEL_CALL*)(const char*, const char*);
    using LogLine = int(ZEL_CALL*)(void*, int, const char*, int, const char*, const char*);
    const auto get_log = platform::FindFunction<GetLog>(library, "zel_get_log");
    const auto log_line = platform::FindFunction<LogLine>(library, "zel_log");
    ASSERT_TRUE(get_log && log_line);
    EXPECT_NE(0, log_line(nullptr, 0, "f", 1, "g", "no log")) << "a log that was refused takes no lines";
    Ask("trace:" + m_File);
    void* log = get_log(nullptr, nullptr);
    ASSERT_NE(nullptr, log);
    EXPECT_EQ(0, log_line(log, -5, nullptr, 0, nullptr, nullptr)) << "a level below the first is an error";
    EXPECT_EQ(0, log_line(log, 99, "f", 1, "g", "above the last")) << "and one above the last is not wanted";
    EXPECT_THAT(FileLines(), ElementsAre(HasSubstr(" error ")));
    platform::UnloadSharedLibrary(library);
}

}  // namespace
}  // namespace zel
