// Progress shown by the application's callback.
#include "util/ProgressReporter.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "util/ProgressControl.h"

namespace zel {
namespace {

using testing::ElementsAre;

class ProgressReporterTest : public testing::Test {
  protected:
    ProgressReporterTest() { ProgressReporter::SetCallback(&Note, this); }
    ~ProgressReporterTest() override { ProgressReporter::SetCallback(nullptr, nullptr); }

    static void ZEL_CALL Note(const char* line1, const char* line2, int percent, void* test) {
        auto* const self = static_cast<ProgressReporterTest*>(test);
        self->m_Reports.push_back(std::string(line1) + "|" + line2 + "|" + std::to_string(percent));
        if (self->m_Reports.size() == self->m_RemoveAfter) ProgressReporter::SetCallback(nullptr, nullptr);
    }

    ProgressControl m_Control;
    std::vector<std::string> m_Reports;
    std::size_t m_RemoveAfter = 0;
};

TEST_F(ProgressReporterTest, IsToldEveryChangeAndTheEnd) {
    ASSERT_TRUE(StartProgress(&m_Control));
    EXPECT_FALSE(m_Control.thread.Started()) << "no window, on any system";
    SetProgressText(&m_Control, 0, "Stopping camera...");
    SetProgressText(&m_Control, 1, std::string(70, 'x').c_str());
    for (const int done : {0, 0, 84, 85, 500, -500}) UpdateProgress(&m_Control, done, 200);
    EndProgress(&m_Control);
    const std::string texts = "Stopping camera...|" + std::string(64, 'x') + "|";
    EXPECT_THAT(m_Reports, ElementsAre("Stopping camera...||-1", texts + "-1", texts + "0", texts + "42", texts + "100",
                                       texts + "0", "||-1"));
}

TEST_F(ProgressReporterTest, MayRemoveItselfAndIsNotCalledAfterwards) {
    m_RemoveAfter = 1;
    ASSERT_TRUE(StartProgress(&m_Control));
    SetProgressText(&m_Control, 0, "first");
    SetProgressText(&m_Control, 0, "second");
    EndProgress(&m_Control);
    EXPECT_THAT(m_Reports, ElementsAre("first||-1"));
}

}  // namespace
}  // namespace zel
