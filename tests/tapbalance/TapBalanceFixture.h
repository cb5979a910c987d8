// A tap balance object whose camera is a scripted flash, and a clock that costs no time.
#ifndef TESTS_TAPBALANCE_TAPBALANCEFIXTURE_H
#define TESTS_TAPBALANCE_TAPBALANCEFIXTURE_H

#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "tapbalance/TapBalance.h"
#include "tests/support/FakeClock.h"
#include "tests/support/Process.h"
#include "tests/tapbalance/ScriptedFlash.h"

namespace zel::test {

struct TapBalanceTest : testing::Test {
    TapBalanceTest() {
        // Where cache files go on Linux; on Windows the folder is the user's.
        platform::SetEnvironment("XDG_DATA_HOME", testing::TempDir().c_str());
        m_Transport.SetHandler([this](const Bytes& datagram) { return m_Flash.Answer(datagram); });
        m_TapBalance.SetBitsPerPixel(12);
        m_TapBalance.SetCameraTexts("test model", testing::UnitTest::GetInstance()->current_test_info()->name());
    }
    ~TapBalanceTest() override {
        for (const int select : {0, 1}) std::remove(CachePath(select).c_str());
        platform::SetEnvironment("XDG_DATA_HOME", nullptr);
    }

    std::string CachePath(int select) {
        m_TapBalance.SelectTable(select);
        return m_TapBalance.CacheFilePath();
    }
    static void WriteText(const std::string& path, const std::string& text) { std::ofstream(path) << text; }
    static std::string ReadText(const std::string& path) {
        std::ifstream file(path);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }
    // Both tables loaded and correction on.
    void LoadAndEnable(const TapTable& first, const TapTable& second) {
        m_Flash.Install(first, second);
        ASSERT_TRUE(m_TapBalance.LoadDataFromCamera() && m_TapBalance.Enable(true));
    }

    FakeClock m_Clock;
    ScriptedTransport m_Transport{&m_Clock};
    ScriptedFlash m_Flash;
    ExchangeLock m_ExchangeLock;
    TextProtocol m_TextProtocol{&m_Transport, "test", m_ExchangeLock};
    TapBalance m_TapBalance{m_TextProtocol, "test"};
};

}  // namespace zel::test

#endif
