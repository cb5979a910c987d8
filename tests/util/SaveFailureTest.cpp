// What both writers refuse, and that they leave nothing behind.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/support/PageReservations.h"
#include "tests/util/FileTools.h"
#include "util/ZelUtilImpl.h"

namespace zel {
namespace {

class SaveFailureTest : public testing::TestWithParam<bool (ZelUtil::*)(const char*, ZelImage*)> {
  protected:
    void TearDown() override { platform::SetPageReservationLimit(-1); }
    bool Save(const char* name, ZelImage* image) { return (UtilInstance()->*GetParam())(name, image); }
    bool Png() const { return GetParam() == &ZelUtil::SavePNG; }

    const test::TemporaryFile m_File{".image"};
    test::Frame m_Frame{8, 8};
};

TEST_P(SaveFailureTest, ANullImageOrNameIsRefused) {
    EXPECT_FALSE(Save(m_File.Name(), nullptr));
    EXPECT_FALSE(Save(nullptr, m_Frame.Image()));
    m_Frame->pixels = nullptr;
    EXPECT_FALSE(Save(m_File.Name(), m_Frame.Image()));
    EXPECT_FALSE(m_File.Exists());
}

// What a transport wrote into a record's geometry.
TEST_P(SaveFailureTest, AFrameLargerThanItsBufferIsRefused) {
    m_Frame->buffer_size = 8 * 8 * 2;
    EXPECT_TRUE(Save(m_File.Name(), m_Frame.Image()));
    for (const auto& [w, h] : {std::pair(8u, 9u), {30000u, 30000u}, {65536u, 32768u}, {0x80000000u, 2u}}) {
        m_Frame->w = w;
        m_Frame->h = h;
        EXPECT_FALSE(Save(m_File.Name(), m_Frame.Image())) << w << " x " << h;
    }
    m_Frame->w = 0;
    EXPECT_EQ(Save(m_File.Name(), m_Frame.Image()), !Png()) << "there is no such PNG file";
}

TEST_P(SaveFailureTest, AFileThatCannotBeOpenedIsRefused) {
    const long long before = platform::LivePageReservations();
    EXPECT_FALSE(Save((testing::TempDir() + "no/such/folder/image").c_str(), m_Frame.Image()));
    EXPECT_FALSE(Save("", m_Frame.Image()));
    EXPECT_EQ(before, platform::LivePageReservations());
}

TEST_P(SaveFailureTest, WithoutMemoryNoPngFileIsMade) {
    const long long before = platform::LivePageReservations();
    for (int reservations : {0, 1, 2}) {
        platform::SetPageReservationLimit(reservations);
        const bool enough = !Png() || reservations == 2;
        EXPECT_EQ(enough, Save(m_File.Name(), m_Frame.Image())) << reservations;
        EXPECT_EQ(enough, m_File.Exists());
        EXPECT_EQ(before, platform::LivePageReservations());
    }
}

TEST_P(SaveFailureTest, APngFrameThatNoMemoryHoldsIsRefused) {
    if (!Png()) {
        EXPECT_TRUE(Save(m_File.Name(), m_Frame.Image()));
        return;
    }
    m_Frame->w = m_Frame->h = std::numeric_limits<unsigned>::max();
    EXPECT_FALSE(Save(m_File.Name(), m_Frame.Image()));
    EXPECT_FALSE(m_File.Exists());
}

INSTANTIATE_TEST_SUITE_P(Writers, SaveFailureTest, testing::Values(&ZelUtil::SaveTIFF, &ZelUtil::SavePNG),
                         [](const auto& writer) { return writer.index == 0 ? "Tiff" : "Png"; });

}  // namespace
}  // namespace zel
