// The log lines of this process, for programs made with zel_recorded_test().
//
//     RecordedLog log;                                   // starts empty
//     ... code that logs ...
//     EXPECT_EQ(1, log.Count("m_Camera is 0"));
//     EXPECT_THAT(log.Messages("TextProtocol"), testing::ElementsAre("ENTRY", ...));
#ifndef TESTS_SUPPORT_RECORDEDLOG_H
#define TESTS_SUPPORT_RECORDEDLOG_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/DynamicLibrary.h"

namespace zel::test {

struct RecordedLine {
    int level;
    int line;
    std::string source;
    std::string instance;
    std::string file;
    std::string function;
    std::string message;
};

class RecordedLog {
  public:
    RecordedLog() : m_Library(platform::LoadSharedLibrary("kestrane_zel_logger.dll")) {
        m_Clear = platform::FindFunction<void (*)()>(m_Library, "zel_recorded_clear");
        m_Count = platform::FindFunction<int (*)()>(m_Library, "zel_recorded_count");
        m_LiveLogs = platform::FindFunction<int (*)()>(m_Library, "zel_recorded_live_logs");
        m_Line = platform::FindFunction<int (*)(int, int*, const char**)>(m_Library, "zel_recorded_line");
        if (!Loaded()) {
            ADD_FAILURE() << "the recording log library was not found beside this program";
            return;
        }
        Clear();
    }
    ~RecordedLog() { platform::UnloadSharedLibrary(m_Library); }
    RecordedLog(const RecordedLog&) = delete;
    RecordedLog& operator=(const RecordedLog&) = delete;

    bool Loaded() const { return m_Clear && m_Count && m_LiveLogs && m_Line; }
    void Clear() {
        if (Loaded()) m_Clear();
    }
    // Loggers that live now.
    int LiveLogs() const { return Loaded() ? m_LiveLogs() : 0; }

    std::vector<RecordedLine> Lines() const {
        std::vector<RecordedLine> lines;
        for (int i = 0, count = Loaded() ? m_Count() : 0; i < count; ++i) {
            int numbers[2] = {};
            const char* texts[5] = {};
            if (!m_Line(i, numbers, texts)) break;
            lines.push_back({numbers[0], numbers[1], texts[0], texts[1], texts[2], texts[3], texts[4]});
        }
        return lines;
    }

    // The messages of one source ("SyncTable"), or of all; of one level, or of all.
    std::vector<std::string> Messages(const std::string& source = "", int level = -1) const {
        std::vector<std::string> messages;
        for (const RecordedLine& line : Lines()) {
            if ((source.empty() || line.source == source) && (level < 0 || line.level == level)) {
                messages.push_back(line.message);
            }
        }
        return messages;
    }

    // How many lines have exactly this message, at this level or at any.
    int Count(const std::string& message, int level = -1) const {
        const std::vector<std::string> messages = Messages("", level);
        return static_cast<int>(std::count(messages.begin(), messages.end(), message));
    }

    // How many lines contain this text.
    int CountContaining(const std::string& part) const {
        const std::vector<std::string> messages = Messages();
        return static_cast<int>(std::count_if(messages.begin(), messages.end(), [&](const std::string& message) {
            return message.find(part) != std::string::npos;
        }));
    }

  private:
    platform::LibraryHandle m_Library;
    void (*m_Clear)() = nullptr;
    int (*m_Count)() = nullptr;
    int (*m_LiveLogs)() = nullptr;
    int (*m_Line)(int, int*, const char**) = nullptr;
};

}  // namespace zel::test

#endif
