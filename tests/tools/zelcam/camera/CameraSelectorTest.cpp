#include "tools/zelcam/camera/CameraSelector.h"

#include <gmock/gmock.h>

#include "tools/zelcam/text/Failure.h"

namespace zelcam {

using testing::AllOf;
using testing::HasSubstr;

std::vector<CameraEntry> Cameras(std::initializer_list<const char*> serials) {
    std::vector<CameraEntry> cameras;
    for (const char* serial : serials) {
        CameraEntry entry;
        entry.number = static_cast<int>(cameras.size());
        entry.serial = serial;
        cameras.push_back(entry);
    }
    return cameras;
}

std::string FailureOf(const std::vector<CameraEntry>& cameras, const std::string& wanted) {
    try {
        SelectCamera(cameras, wanted);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.ExitCode(), kExitFailure);
        return failure.what();
    }
    return "no failure";
}

TEST(CameraSelector, TakesNumbersAndSerialNumbers) {
    const auto cameras = Cameras({"A100", "b200", "1", ""});
    const struct {
        const char* wanted;
        int number;
    } cases[] = {{"0", 0}, {"3", 3}, {"A100", 0}, {"a100", 0}, {"B200", 1}, {"1", 1}};
    for (const auto& c : cases) EXPECT_EQ(SelectCamera(cameras, c.wanted), c.number) << c.wanted;
}

TEST(CameraSelector, NamesTheCamerasWhenThereIsNoSuchOne) {
    const auto cameras = Cameras({"A100", "B200"});
    EXPECT_THAT(FailureOf(cameras, "7"),
                AllOf(HasSubstr("no camera '7'"), HasSubstr("0 (serial A100), 1 (serial B200)")));
    EXPECT_THAT(FailureOf(cameras, "B300"), HasSubstr("did you mean B200?"));
    for (const char* wanted : {"", "-1", "00", " 0", "0x0"}) {
        EXPECT_THAT(FailureOf(cameras, wanted), HasSubstr("no camera")) << wanted;
    }
}

TEST(CameraSelector, RefusesASerialNumberThatTwoCamerasHave) {
    EXPECT_THAT(FailureOf(Cameras({"A100", "a100"}), "A100"), HasSubstr("more than one camera"));
}

}  // namespace zelcam
