#include "logger/LogRequest.h"

#include <gtest/gtest.h>

namespace zel::logger {
namespace {

using Kind = LogRequest::Kind;

struct Case {
    const char* value;
    Kind kind;
    int level;
    const char* file;
};

class LogRequestTest : public testing::TestWithParam<Case> {};

TEST_P(LogRequestTest, IsReadFromTheValue) {
    const LogRequest request = ParseLogRequest(GetParam().value);
    EXPECT_EQ(GetParam().kind, request.kind);
    EXPECT_EQ(GetParam().file, request.file);
    if (request.kind == Kind::kLines) {
        EXPECT_EQ(GetParam().level, request.level);
    }
}

INSTANTIATE_TEST_SUITE_P(Values, LogRequestTest,
                         testing::Values(Case{"", Kind::kNothing, 0, ""}, Case{"error", Kind::kLines, 0, ""},
                                         Case{"warning", Kind::kLines, 1, ""}, Case{"trace", Kind::kLines, 2, ""},
                                         Case{"trace:", Kind::kLines, 2, ""},
                                         Case{"error:zel.log", Kind::kLines, 0, "zel.log"},
                                         Case{"warning:c:\\logs\\a:b", Kind::kLines, 1, "c:\\logs\\a:b"},
                                         Case{"Trace", Kind::kUnknown, 0, ""}, Case{"trace ", Kind::kUnknown, 0, ""},
                                         Case{"1", Kind::kUnknown, 0, ""}, Case{"errors", Kind::kUnknown, 0, ""},
                                         Case{":zel.log", Kind::kUnknown, 0, ""},
                                         Case{"debug:zel.log", Kind::kUnknown, 0, ""}));

}  // namespace
}  // namespace zel::logger
