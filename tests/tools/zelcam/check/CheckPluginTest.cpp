// The check of plug-ins against one that is good and the same with one thing wrong at a time.

#include "platform/LibraryFiles.h"
#include "tests/tools/zelcam/commands/ToolProcess.h"

namespace zelcam {

using testing::HasSubstr;
using namespace std::string_literals;

namespace {

// A library with its faults, and the cameras behind it.
constexpr const char* kPlugin = "zel_bad_plugin.dll";

ToolResult Check(const std::string& fault, const std::string& arguments) {
    UseFastCameras("0", "0", "1");
    Simulate("FILL", "static");
    zel::platform::SetEnvironment("ZEL_TEST_FAULT", fault.c_str());
    const ToolResult result = RunTool("check-plugin " + arguments);
    zel::platform::SetEnvironment("ZEL_TEST_FAULT", "");
    return result;
}

struct Planted {
    const char* fault;
    const char* clause;  // that fails
    const char* seen;    // a piece of what it says
};

// These are given less time than others need on a busy machine.
constexpr const char* kHung = "did not come back within 1 s";

constexpr Planted kFaults[] = {
    {"count-changes", "camera-count", "first 2, then 3"},
    {"any-camera", "unknown-camera", "a transport for camera -1"},
    {"text-too-long", "text-ends", "get_camera_name(0) is longer than 63 bytes"},
    {"text-changes", "text-steady", "get_camera_name(0) is first"},
    {"new-transport", "same-transport", "another one"},
    {"type-changes", "interface-type-steady", "first 5, when asked again 3"},
    {"camera-object-lost", "camera-object", "another one than was bound"},
    {"call-before-connect", "quiet-at-first", "a call came"},
    {"connect-code-lost", "connect-code", "0 instead of 17"},
    {"exit-in-connect", "connect", "ended with exit code 3, in Connect"},
    {"led-stuck", "led", "switched on, it reads 0"},
    {"utilization-high", "link-figures", "a utilization of 1.5"},
    {"short-send", "send-count", "SendData of 10 bytes answered 9"},
    {"header-swapped", "datagram-header", "begins 00 07 00"},
    {"receive-too-many", "receive-pieces", "RecvData of 13 bytes answered 14"},
    {"receive-drops", "receive-keeps", "the rest of the reply did not come"},
    {"receive-negative", "receive-timeout", "answered -1"},
    {"receive-at-once", "receive-timeout", "instead of 50"},
    {"text-unended", "text-reply-end", "\"info\" does not"},
    {"byte-behind", "table-two-datagrams", "bytes came behind"},
    {"exception-unsent", "table-bad-index", "no whole answer"},
    {"const-accepted", "table-protected", "answered with 0x00"},
    {"range-accepted", "table-range", "EXPOSURE_TIME (9) takes 0"},
    {"clock-missing", "table-needed", "CLOCK_SPEED_VAL (12) can't be read"},
    {"write-ignored", "table-write", "2000 us became"},
    {"start-uncalled", "start", "0 calls of StartCommon"},
    {"start-crashes", "start", "in Start"},
    {"start-code-lost", "start-code", "0 instead of 14"},
    {"stop-hangs", "stop", kHung},
    {"frame-after-stop", "stop", "after Stop"},
    {"handle-lost", "start-stop-cycles", "handles more"},
    {"lock-held", "no-lock-held", kHung},
    {"event-missing", "frame-order", "'image' came where 'event' belongs"},
    {"event-late", "frame-order", "'image' came where 'event' belongs"},
    {"numbers-repeat", "frame-numbers", "7 after 7"},
    {"frame-too-long", "frame-inside-record", "behind a record"},
    {"frame-too-long", "frame-small-record", "behind it"},
    {"samples-too-high", "frame-samples", "a sample is 65535"},
    {"record-lost", "records-returned", "were taken"},
    {"drops-uncounted", "dropped-frames", "3 numbers are left out, 0 counted as lost"},
    {"sequence-ignored", "sequence", "after the last frame"},
    {"call-after-disconnect", "silent-after-disconnect", "after Disconnect"},
    {"call-after-null", "silent-after-null", "after SetCameraCommon(null)"},
    {"trigger-twice", "trigger-one-frame", "trigger"},
    {"context-lost", "hot-plug-events", "context 0"},
    {"link-lost-untold", "link-events", kHung},
    {"events-after-unload", "unload-ends-events", "2 events"},
    {"dies-with-unload", "outlives-unload", "its camera object is gone"},
    {"dead-after-unload", "works-after-unload", "0 cameras, 1 before"},
    {"second-load-fails", "reload", "-1 cameras at load 2"},
    {"end-badly", "process-end", "ended with exit code 3"},
};

}  // namespace

class PlantedFault : public testing::TestWithParam<Planted> {};

TEST_P(PlantedFault, IsFoundByItsClause) {
    const Planted& planted = GetParam();
    const std::string options = planted.seen == kHung ? " --time-limit 1 --json --only " : " --json --only ";
    const ToolResult result = Check(planted.fault, kPlugin + options + planted.clause);
    EXPECT_EQ(result.exit_code, kProblemsFound.exit_code) << result.out << result.err;
    const auto clauses = result.Json()["clauses"];
    ASSERT_EQ(clauses.size(), 1u) << result.out;
    EXPECT_EQ(clauses[0]["state"], "FAIL");
    EXPECT_THAT(clauses[0]["seen"].get<std::string>(), HasSubstr(planted.seen));
}

INSTANTIATE_TEST_SUITE_P(CheckPlugin, PlantedFault, testing::ValuesIn(kFaults), [](const auto& planted) {
    std::string name = planted.param.fault + std::string("_") + planted.param.clause;
    std::ranges::replace(name, '-', '_');
    return name;
});

TEST(CheckPlugin, WithoutAFaultEveryClauseIsKept) {
    const ToolResult result = Check("", std::string(kPlugin) + " --json");
    const auto json = result.Json();
    EXPECT_EQ(result.exit_code, 0) << result.err;
    EXPECT_EQ(json["failed"], 0) << result.out;
    EXPECT_EQ(json["skipped"], 0) << "the cameras can be unplugged by command";
    for (const Planted& planted : kFaults) {
        const auto is_it = [&](const auto& one) { return one["id"] == planted.clause; };
        EXPECT_TRUE(std::ranges::any_of(json["clauses"], is_it)) << planted.clause;
    }
}

// One that crashes or hangs costs its clause, and the others are checked.
TEST(CheckPlugin, ACrashIsALineAndNotTheEnd) {
    const ToolResult result =
        Check("start-crashes", std::string(kPlugin) + " --only connect,start,stop,table-get,process-end");
    for (const char* line : {"ok   connect: ", "FAIL start: ", "FAIL stop: ", "ok   table-get: ", "ok   process-end: ",
                             "3 ok, 2 failed, 0 skipped"})
        EXPECT_THAT(result.out, HasSubstr(line));
    EXPECT_THAT(result.err, HasSubstr("2 of 5 clauses"));
}

TEST(CheckPlugin, WhatCanNotBeCheckedIsToldWithItsReason) {
    const std::tuple<const char*, FailureKind, const char*> cases[] = {
        {"", kUsage, "no plug-in is named"},
        {"zel_usb.dll --only stpo", kUsage, "did you mean stop?"},
        {"zel_usb.dll --taps 2", kUsage, "--taps is for"},
        {"zel_usb.dll --samples x.pgm --taps 3", kUsage, "--taps"},
        {"zel_usb.dll --samples x.pgm --taps 4", kRefused, "with this number of taps"},
        {"zel_usb.dll --bytes no_such_folder/x.pgm", kOutput, "can't be written"},
        {"no_such.dll --bytes x.pgm", kNoCamera, "no camera"},
        {"edt_camera_link.dll", kNoCamera, "no such camera is attached"},
        {"--only load,led zel_usb.dll -c 5", kNoCamera, "no such camera is attached"},
        {"no_such.dll --only load,start", kProblemsFound, "1 of 1 clause"},
    };
    UseFastCameras("0", "0", "1");
    for (const auto& [arguments, kind, line] : cases) FailureOfTool("check-plugin "s + arguments, kind, line);
    const auto bare = Check("", "zel_bare_plugin.dll --only library --json").Json();
    EXPECT_THAT(bare["clauses"][1]["seen"].get<std::string>(), HasSubstr("missing: create_camera_interface, destroy_"));
    EXPECT_EQ(bare["skipped"], 5) << bare;
    // A path with all that a command line may trip over.
    const TemporaryFolder folder;
    const std::string file = zel::platform::LibraryFileName("zel_bare_plugin.dll");
    std::filesystem::create_directory(zel::platform::Utf8Path(folder / "a  b'c é"));
    std::filesystem::copy_file(file, zel::platform::Utf8Path(folder / "a  b'c é/" + file));
    EXPECT_THAT(RunTool("check-plugin --only load" + folder.Quoted("a  b'c é/" + file)).out,
                HasSubstr("1 ok, 0 failed"));
    EXPECT_THAT(RunTool("check-plugin --list").out, HasSubstr("frame-order"));
}

}  // namespace zelcam
