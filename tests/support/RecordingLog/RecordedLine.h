// One log line as the recording library keeps it. It and its readers are built together, so the record is shared.
#ifndef TESTS_SUPPORT_RECORDINGLOG_RECORDEDLINE_H
#define TESTS_SUPPORT_RECORDINGLOG_RECORDEDLINE_H

#include <string>

namespace zel::test {

struct RecordedLine {
    int level;
    std::string source;
    std::string instance;
    std::string function;
    std::string message;
};

}  // namespace zel::test

#endif
