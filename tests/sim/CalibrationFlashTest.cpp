// The "tb" commands and the calibration tables behind them.
#include <gtest/gtest.h>

#include <bit>
#include <sstream>

#include "link/ICameraInterface.h"
#include "sim/FlashDirectory.h"
#include "sim/SimCamera.h"
#include "tests/sim/Datagram.h"

namespace zel::sim {
namespace {

std::string Hex(const Sha1Digest& digest) {
    std::string text;
    for (const unsigned byte : digest) {
        constexpr const char* kDigits = "0123456789abcdef";
        text += {kDigits[byte >> 4], kDigits[byte & 15]};
    }
    return text;
}

// Messages of FIPS 180, and lengths around the end of a block.
TEST(Sha1Test, PublishedVectors) {
    const struct {
        std::string message;
        const char* digest;
    } cases[] = {
        {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
        {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
        {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
        {std::string(55, 'a'), "c1c8bbdc22796e28c0e15163d20899b65621d65a"},
        {std::string(56, 'a'), "c2db330f6083854c99d4b5bfb6e8f29f201be699"},
        {std::string(64, 'a'), "0098ba824b5c16427bd7a1122a5a442a25ec644d"},
        {std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
    };
    for (const auto& c : cases) {
        const Bytes bytes(c.message.begin(), c.message.end());
        EXPECT_EQ(Hex(Sha1(bytes)), c.digest) << c.message.size();
    }
}

// Reads the memory as a host does.
class FlashHost : public FirmwareHost {
  public:
    explicit FlashHost(int interface_type) : FirmwareHost(ModelOfLink(interface_type, 0)) {}

    std::vector<std::uint8_t> Read(std::uint32_t position, std::uint32_t count) {
        std::vector<std::uint8_t> bytes;
        while (bytes.size() < count) {
            const auto at = position + static_cast<std::uint32_t>(bytes.size());
            EXPECT_EQ(Text(Command("tb g", {at / Flash::kPageSize})), "OK");
            const auto left = static_cast<std::uint32_t>(count - bytes.size());
            const std::uint32_t piece = std::min({8u, left, Flash::kPageSize - at % Flash::kPageSize});
            std::istringstream reply(Text(Command("tb r", {at % Flash::kPageSize, piece})));
            unsigned byte = 0;
            std::uint32_t got = 0;
            for (; reply >> std::hex >> byte; ++got) bytes.push_back(static_cast<std::uint8_t>(byte));
            if (got != piece) return {};
        }
        return bytes;
    }
    static std::string Command(const char* name, const std::vector<std::uint32_t>& numbers) {
        std::ostringstream text;
        text << name << std::hex;
        for (const std::uint32_t number : numbers) text << ' ' << number;
        return text.str();
    }
};

std::uint32_t Number(const Bytes& bytes, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) value |= std::uint32_t{bytes[at + i]} << (8 * i);
    return value;
}

TEST(CalibrationFlash, CommandsAnswerInTheAgreedForm) {
    FlashHost host(CAMERA_TYPE_EDT_CAMERA_LINK);
    const struct {
        const char* command;
        const char* reply;
    } cases[] = {
        {"tb f s", "OK"},
        {"tb p s\r\n", "108"},
        {"tb p n", "100"},
        {"tb p c", "OK"},
        {"tb r 0 4", "ff ff ff ff"},
        {"tb w 2 10 ff 0 3C\r\n", "OK"},
        {"tb r 2 4\r\n", "10 ff 0 3c"},
        {"tb w 107 7", "OK"},
        {"tb r 107 1", "7"},
        {"tb s ff", "OK"},
        {"tb p c", "OK"},
        {"tb g ff", "OK"},
        {"tb r 2 4", "10 ff 0 3c"},
        {"tb g 0", "OK"},
        {"tb r 0 3", "2 20 0"},
    };
    for (const auto& c : cases) EXPECT_EQ(host.Text(c.command), c.reply) << c.command;
    for (const char* wrong : {"tb",
                              "tb x 1",
                              "tb f x",
                              "tb p x",
                              "tb p s s",
                              "tb g",
                              "tb g 100",
                              "tb g -1",
                              "tb g 1 2",
                              "tb s 100",
                              "tb g zz",
                              "tb r 0",
                              "tb r 0 0",
                              "tb r 0 109",
                              "tb r 107 2",
                              "tb r 108 1",
                              "tb r ffffffff 2",
                              "tb r 100000000 1",
                              "tb r 0 1 2",
                              "tb w 0",
                              "tb w 107 1 2",
                              "tb w ffffffff 1 2",
                              "tb w 0 100",
                              "tb w 0 0x1",
                              "tb gg 0"}) {
        EXPECT_EQ(host.Text(wrong).substr(0, 4), "ERR ") << wrong;
    }
    EXPECT_EQ(host.Text("tb r 0 3"), "2 20 0");  // nothing of it reached the buffer
    EXPECT_EQ(host.Raw({'t', 'b', ' ', 'p', ' ', 's'}), (Bytes{9, 0, 6, '1', '0', '8', '\r', '\n', 0}));
}

TEST(CalibrationFlash, HoldsTheTablesUnderTheirDigests) {
    for (const int type : {CAMERA_TYPE_EDT_CAMERA_LINK, CAMERA_TYPE_PLEORA_EBUS}) {
        FlashHost host(type);
        const CalibrationData data = FactoryCalibration(ModelOfLink(type, 0));
        const Bytes directory = host.Read(0, 57);
        ASSERT_EQ(directory.size(), 57u);
        ASSERT_EQ(directory[0], 2);
        for (std::size_t i = 0; i < 2; ++i) {
            SCOPED_TRACE(i);
            const CalibrationTable& table = data.tables[i];
            const std::size_t entry = 1 + i * 28;
            const std::uint32_t rows = Number(directory, entry, 2);
            const std::uint32_t columns = Number(directory, entry + 2, 2);
            const std::uint32_t offset = Number(directory, entry + 4, 4);
            ASSERT_EQ(rows, table.Rows());
            ASSERT_EQ(columns, table.gains.size() + 1);
            const Bytes cells = host.Read(offset, rows * columns * 4);
            ASSERT_EQ(cells.size(), rows * columns * 4);
            Bytes message;
            AppendLittle32(message, columns - 1);
            AppendLittle32(message, rows);
            int crossing = 0;
            for (std::uint32_t column = 0; column < columns; ++column) {
                for (std::uint32_t row = 0; row < rows; ++row) {
                    const std::uint32_t bits = Number(cells, (row * columns + column) * 4, 4);
                    AppendLittle32(message, bits);
                    const float wanted = column == 0 ? table.millivolts[row] : table.gains[column - 1][row];
                    EXPECT_EQ(std::bit_cast<float>(bits), wanted);
                    const std::uint32_t in_page = (offset + row * columns * 4) % Flash::kPageSize;
                    crossing += column == 0 && in_page + columns * 4 > Flash::kPageSize;
                }
            }
            EXPECT_GT(crossing, 0);
            const Sha1Digest digest = Sha1(message);
            EXPECT_TRUE(std::equal(digest.begin(), digest.end(), directory.begin() + static_cast<int>(entry) + 8));
        }
    }
}

TEST(CalibrationFlash, ACameraOfOneTapHasAnEmptyDirectory) {
    FlashHost host(CAMERA_TYPE_USB);
    EXPECT_EQ(host.Read(0, 57), Bytes(57, 0xFF));
}

TEST(CalibrationFlash, WhatIsStoredOutlivesPowerAndTheBufferDoesNot) {
    FlashHost host(CAMERA_TYPE_EDT_CAMERA_LINK);
    ASSERT_EQ(host.Text("tb w 0 1 2 3"), "OK");
    ASSERT_EQ(host.Text("tb s 80"), "OK");
    host.Target().PowerCycle();
    EXPECT_EQ(host.Text("tb r 0 3"), "ff ff ff");
    ASSERT_EQ(host.Text("tb g 80"), "OK");
    EXPECT_EQ(host.Text("tb r 0 3"), "1 2 3");
}

class FlashCamera : public testing::Test {
  protected:
    static Settings Fast(double speed = 0.0) {
        Settings settings;
        settings.speed = speed;
        return settings;
    }

    // The reply without its line end; empty when none came in half a second.
    static std::string Ask(SimCamera& camera, const std::string& command) {
        camera.Send(std::span(reinterpret_cast<const std::uint8_t*>(command.data()), command.size()));
        std::uint8_t reply[4200];
        const int size = camera.Receive(reply, 500);
        return size < 6 ? "" : std::string(reply + 3, reply + size - 3);
    }
    static void Script(SimCamera& camera, const char* line) {
        std::string error;
        const std::optional<Fault> fault = ParseFault(line, error);
        ASSERT_TRUE(fault) << error;
        camera.AddFault(*fault);
    }

    SimCamera m_Camera{ModelOfLink(CAMERA_TYPE_EDT_CAMERA_LINK, 0), Fast()};
};

TEST_F(FlashCamera, PagesTakeTheirTimeUnlessUnpaced) {
    using Clock = std::chrono::steady_clock;
    const auto seconds = [](SimCamera& camera, const char* command) {
        const auto start = Clock::now();
        EXPECT_EQ(Ask(camera, command), "OK");
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    SimCamera paced(m_Camera.Model(), Fast(0.2));
    EXPECT_GE(seconds(paced, "tb g 0"), 0.005);
    EXPECT_GE(seconds(paced, "tb s 80"), 0.05);
    m_Camera.SetFlashTimes({std::chrono::milliseconds(30), {}});
    EXPECT_GE(seconds(m_Camera, "tb g 0"), 0.03);
    // Unpaced stores take no time of their own: a hundred of them stay below what ten of them take at real pace.
    SimCamera instant(m_Camera.Model(), Fast());
    double total = 0.0;
    for (int i = 0; i < 100; ++i) total += seconds(instant, "tb s 80");
    EXPECT_LT(total, 0.1);
}

TEST_F(FlashCamera, FaultsStrikeInTheMiddleOfADownload) {
    Script(m_Camera, "no-reply text=tb_r after=1");
    Script(m_Camera, "garble text=tb_r after=2");
    EXPECT_EQ(Ask(m_Camera, "tb g 0"), "OK");
    EXPECT_EQ(Ask(m_Camera, "tb r 0 3"), "2 20 0");
    EXPECT_EQ(Ask(m_Camera, "tb r 0 3"), "");
    EXPECT_EQ(Ask(m_Camera, "tb g 0"), "OK");
    EXPECT_EQ(Ask(m_Camera, "tb r 0 3"), "2 2? 0");
    EXPECT_EQ(Ask(m_Camera, "tb r 0 3"), "2 20 0");
    Script(m_Camera, "unplug text=tb after=2");
    EXPECT_EQ(Ask(m_Camera, "tb p s"), "108");
    EXPECT_NE(Ask(m_Camera, "info"), "");
    EXPECT_EQ(Ask(m_Camera, "tb p n"), "100");
    EXPECT_EQ(Ask(m_Camera, "tb p s"), "");
    EXPECT_FALSE(m_Camera.Plugged());
}

// The second row (0x400 is offset e8 of page 3; a row has 20 bytes) crosses the page's end and is read byte by byte.
TEST_F(FlashCamera, ABadGainStaysUntilTheRowIsReadAgain) {
    const auto gain_of_second_row = [this] {
        std::uint32_t bits = 0;
        for (unsigned i = 0; i < 8; ++i) {
            const unsigned offset = 0xE8 + 20 + i;
            const unsigned page = 3 + offset / Flash::kPageSize;
            Ask(m_Camera, FlashHost::Command("tb g", {page}));
            const std::string reply = Ask(m_Camera, FlashHost::Command("tb r", {offset % Flash::kPageSize, 1}));
            if (i >= 4) bits |= static_cast<std::uint32_t>(std::stoul(reply, nullptr, 16)) << (8 * (i - 4));
        }
        return std::bit_cast<float>(bits);
    };
    const float good = gain_of_second_row();
    EXPECT_EQ(good, FactoryCalibration(m_Camera.Model()).tables[0].gains[0][1]);
    Script(m_Camera, "bad-gain after=1");
    Ask(m_Camera, "tb g 3");
    Ask(m_Camera, "tb r e8 8");  // the first row passes
    EXPECT_EQ(gain_of_second_row(), 3.0f);
    EXPECT_EQ(gain_of_second_row(), good);
    Script(m_Camera, "nan-gain times=2");
    EXPECT_TRUE(std::isnan(gain_of_second_row()));
    EXPECT_TRUE(std::isnan(gain_of_second_row()));
    EXPECT_EQ(gain_of_second_row(), good);
}

}  // namespace
}  // namespace zel::sim
