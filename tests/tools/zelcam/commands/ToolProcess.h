// Running the program itself as a child process.
#ifndef TESTS_ZELCAM_TOOLPROCESS_H
#define TESTS_ZELCAM_TOOLPROCESS_H

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "platform/ChildProcess.h"
#include "platform/User.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

struct ToolResult {
    int exit_code;
    std::string out;
    std::string err;

    // The standard output as JSON; a discarded value when it is not.
    nlohmann::json Json() const { return nlohmann::json::parse(out, nullptr, false); }
};

using zel::test::FileText;
using zel::test::TemporaryFolder;

// A setting of the cameras that are simulated from now on.
inline void Simulate(const std::string& name, const std::string& value) {
    zel::platform::SetEnvironment(("ZEL_SIM_" + name).c_str(), value.c_str());
}

// Small, unpaced cameras, every other setting at its default. Must run before the SDK looks for cameras.
inline void UseFastCameras(const char* camera_link = "1", const char* ebus = "0", const char* usb = "0") {
    for (const char* name : {"CFA_PHASE", "COLOR_SPACE", "FAULTS", "FILL", "SCENE", "SEED", "TAPS"}) Simulate(name, "");
    Simulate("CL_CAMERAS", camera_link);
    Simulate("EBUS_CAMERAS", ebus);
    Simulate("USB_CAMERAS", usb);
    Simulate("SIZE", "64x48");
    Simulate("PACE", "none");
}

// A folder that has the cache files of the cameras' calibration where the system lets them. On Windows they lie in the
// user's own, and those of the simulated cameras are removed.
class CacheFolder : public TemporaryFolder {
  public:
    CacheFolder() {
        zel::platform::SetEnvironment("XDG_DATA_HOME", Path().string().c_str());
        RemoveFiles();
    }
    ~CacheFolder() {
        RemoveFiles();
        zel::platform::SetEnvironment("XDG_DATA_HOME", "");
    }

  private:
    static void RemoveFiles() {
        const auto folder = zel::platform::Utf8Path(zel::platform::CalibrationFolder());
        std::error_code ignored;
        for (const std::string camera : {"L2048-4M_300101", "E150-2M_400101"})
            for (const char* speed : {"_20MHz.txt", "_40MHz.txt"})
                std::filesystem::remove(folder / ("zel_" + camera + speed), ignored);
    }
};

// What no command takes, however busy the machine is. Two that hang are still told before the test's own time is over.
constexpr unsigned kHangMs = 100000;
constexpr int kHungCode = 124;

// Runs a line of the system's shell, in UTF-8. Result: its exit code, a signal's number, or kHungCode when it had to be
// ended.
inline int System(const std::string& line) {
    // On a busy machine Wine's shell now and then does not find a program that is there; it has run nothing then.
    constexpr int kNotFound = 9009, kTries = 4;
    zel::platform::ProcessEnd end;
    for (int i = 0; i < kTries && (i == 0 || end.code == kNotFound); ++i) {
        zel::platform::ChildProcess shell(zel::platform::ShellLine{line});
        if (!shell.Started()) throw std::runtime_error("the system's shell can't be started");
        if (!shell.Wait(kHangMs, end)) return kHungCode;
    }
    return end.code;
}

// Runs a command line of the system's shell in this folder, its output going where `out` says, a file by default.
inline ToolResult RunCommand(const std::string& line, std::string out = "") {
    const TemporaryFolder folder;
    const std::string file = (folder.Path() / "out").make_preferred().string();
    const std::string err = (folder.Path() / "err").make_preferred().string();
    if (out.empty()) out = "\"" + file + "\"";
    const int code = System(line + " >" + out + " 2>\"" + err + "\"");
    ToolResult result{code, FileText(file, std::ios::in), FileText(err, std::ios::in)};
    if (code == kHungCode)
        ADD_FAILURE() << "hung and was ended: " << line << "\nit had printed: " << result.out << "\n" << result.err;
    return result;
}

// Runs "NAME ARGUMENTS", a program of this folder, with the environment as it is. Arguments with blanks are quoted
// with ".
inline ToolResult RunProgram(const std::string& name, const std::string& arguments, const std::string& out = "") {
    return RunCommand(std::filesystem::path("./" + name).make_preferred().string() + " " + arguments, out);
}

inline ToolResult RunTool(const std::string& arguments) { return RunProgram("zelcam", arguments); }

// Expects the action to end in a failure of this kind whose line has `line` in it.
template <class Action>
void ExpectFailure(Action action, const FailureKind& kind, const std::string& line) {
    try {
        action();
        ADD_FAILURE() << "no failure; expected " << line;
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), testing::HasSubstr(line));
        EXPECT_EQ(failure.ExitCode(), kind.exit_code) << line;
    }
}

// Expects an object to have these members, among others, and nested objects likewise.
inline void ExpectMembers(const nlohmann::json& object, const nlohmann::json& members) {
    nlohmann::json expected = object;
    expected.merge_patch(members);
    EXPECT_EQ(object, expected);
}

// What the tool prints in a call that succeeds.
inline std::string OutputOf(const std::string& arguments) {
    const ToolResult result = RunTool(arguments);
    EXPECT_EQ(result.exit_code, 0) << arguments << result.err;
    return result.out;
}
inline nlohmann::json JsonOf(const std::string& arguments) {
    return nlohmann::json::parse(OutputOf(arguments + " --json"), nullptr, false);
}

// The same for a call that fails: one line, exit code and code are of one kind.
inline nlohmann::json FailureOfTool(const std::string& arguments, const FailureKind& kind, const std::string& line) {
    const ToolResult result = RunTool(arguments + " --json");
    nlohmann::json json = result.Json();
    EXPECT_EQ(result.exit_code, kind.exit_code) << arguments;
    EXPECT_THAT(result.err, testing::HasSubstr(line)) << arguments;
    const nlohmann::json error = json.is_object() ? json["error"] : json;
    EXPECT_EQ("zelcam: " + error.value("message", "") + "\n", result.err) << arguments << result.out;
    EXPECT_TRUE(error.value("code", "") == kind.code && error.value("exit_code", 0) == kind.exit_code) << error;
    return json;
}

}  // namespace zelcam

#endif
