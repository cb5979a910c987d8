#include "tools/zelcam/camera/CameraSelector.h"

#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

std::vector<CameraEntry> Cameras(std::initializer_list<const char*> serials) {
    std::vector<CameraEntry> cameras;
    for (const char* serial : serials) {
        cameras.push_back({static_cast<int>(cameras.size()), "", serial, "", {}});
    }
    return cameras;
}

TEST(CameraSelector, TakesNumbersAndSerialNumbers) {
    const auto cameras = Cameras({"A100", "b200", "1", ""});
    const std::pair<const char*, int> cases[] = {{"0", 0}, {"3", 3}, {"A100", 0}, {"a100", 0}, {"B200", 1}, {"1", 1}};
    for (const auto& [wanted, number] : cases) EXPECT_EQ(SelectCamera(cameras, wanted), number) << wanted;
}

TEST(CameraSelector, NamesTheCamerasWhenNoneOrMoreThanOneIsMeant) {
    const auto cameras = Cameras({"A100", "B200", "C100", "c100"});
    const std::pair<const char*, const char*> cases[] = {
        {"7", "no camera '7': it is neither a camera number nor a serial number; known cameras are 0 (serial A100), "},
        {"B300", "did you mean B200? known cameras"},
        {"C100", "more than one camera has this serial number"},
        {"", "no camera"},
        {"-1", "no camera"},
        {"00", "no camera"},
        {" 0", "no camera"},
        {"0x0", "no camera"}};
    for (const auto& [wanted, line] : cases) ExpectFailure([&] { SelectCamera(cameras, wanted); }, kNoCamera, line);
}

}  // namespace zelcam
