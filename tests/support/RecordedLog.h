// The log lines of this process, for programs made with zel_recorded_test().
//
//     RecordedLog log;                                   // starts empty
//     ... code that logs ...
//     EXPECT_EQ(1, log.Count("m_Camera is 0"));
//     EXPECT_THAT(log.Messages("TextProtocol"), testing::ElementsAre("ENTRY", ...));
#ifndef TESTS_SUPPORT_RECORDEDLOG_H
#define TESTS_SUPPORT_RECORDEDLOG_H

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/DynamicLibrary.h"
#include "tests/support/RecordingLog/RecordedLine.h"

namespace zel::test {

class RecordedLog {
  public:
    RecordedLog() {
        if (!m_Clear) throw std::runtime_error("the recording log library was not found beside this program");
        Clear();
    }
    ~RecordedLog() { platform::UnloadSharedLibrary(m_Library); }
    RecordedLog(const RecordedLog&) = delete;
    RecordedLog& operator=(const RecordedLog&) = delete;

    void Clear() { m_Clear(); }
    // Loggers that live now.
    int LiveLogs() const { return m_LiveLogs(); }

    std::vector<RecordedLine> Lines() const {
        std::vector<RecordedLine> lines;
        while (const RecordedLine* line = m_Line(lines.size())) lines.push_back(*line);
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
        return static_cast<int>(std::ranges::count(Messages("", level), message));
    }

    // How many lines contain this text.
    int CountContaining(const std::string& part) const {
        const auto contains = [&](const std::string& message) { return message.find(part) != std::string::npos; };
        return static_cast<int>(std::ranges::count_if(Messages(), contains));
    }

  private:
    template <class Function>
    Function* Find(const char* name) const {
        return platform::FindFunction<Function*>(m_Library, name);
    }
    const platform::LibraryHandle m_Library = platform::LoadSharedLibrary("kestrane_zel_logger.dll");
    void (*const m_Clear)() = Find<void()>("zel_recorded_clear");
    int (*const m_LiveLogs)() = Find<int()>("zel_recorded_live_logs");
    const RecordedLine* (*const m_Line)(std::size_t) = Find<const RecordedLine*(std::size_t)>("zel_recorded_line");
};

}  // namespace zel::test

#endif
