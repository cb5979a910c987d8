// The composed version text.
#include "tests/sdk/SdkFixture.h"

namespace zel::test {
namespace {

class VersionText : public SdkFixture {
  protected:
    const std::string m_Own = "zel_sdk.dll         - 3.6.0.0.";
};

TEST_F(VersionText, HasOneLineForEachLibraryThatAnswers) {
    EXPECT_EQ(m_Own, get_version_str());
    m_Edt->version = "edt 1";
    m_Pleora->version = "";
    m_Usb->version = "usb 3";
    EXPECT_EQ(m_Own + "\nedt 1\nusb 3", get_version_str());
    // A recorded library answers where it is.
    ASSERT_EQ(1, Search(0, 0, 1));
    EXPECT_EQ(m_Own + "\nedt 1\nusb 3", get_version_str());
    m_Sdk->Close();
    EXPECT_EQ(m_Own + "\nedt 1\nusb 3", get_version_str());
}

TEST_F(VersionText, IsCutAt1023Characters) {
    const std::string text(600, 'v');
    m_Edt->version = text.c_str();
    m_Pleora->version = text.c_str();
    m_Usb->version = "never seen";
    EXPECT_EQ((m_Own + "\n" + text + "\n" + text).substr(0, 1023), get_version_str());
}

}  // namespace
}  // namespace zel::test
