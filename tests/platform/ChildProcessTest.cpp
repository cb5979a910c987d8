// Programs that this one runs.
#include "platform/ChildProcess.h"

#include <gtest/gtest.h>

namespace zel::platform {

// Whatever the shell started holds the output open; it ends with the last of them.
TEST(ChildProcess, KillEndsWhatTheShellStarted) {
#ifdef _WIN32
    ChildProcess shell(ShellLine{"echo begun & cmd /c for /l %i in (1,0,2) do @rem"});
#else
    ChildProcess shell(ShellLine{"echo begun; sleep 100000; true"});
#endif
    constexpr unsigned kPatience = 60000;
    ASSERT_TRUE(shell.Started());
    std::string text;
    ASSERT_EQ(shell.Read(text, kPatience), ChildProcess::Output::kSome);
    EXPECT_EQ(text.substr(0, 5), "begun");
    ProcessEnd end;
    EXPECT_FALSE(shell.Wait(0, end));
    shell.Kill();
    EXPECT_TRUE(shell.Wait(kPatience, end));
    ChildProcess::Output output = ChildProcess::Output::kSome;
    while (output == ChildProcess::Output::kSome) output = shell.Read(text, kPatience);
    EXPECT_EQ(output, ChildProcess::Output::kEnded);
}

}  // namespace zel::platform
