// Sessions with a camera that goes wrong wherever it can, and every log text of them, to the letter: users and scripts
// search for these. Each test plays one session step by step and compares what it logged with the transcript of its
// name in this folder. ZEL_WRITE_TRANSCRIPT=1 in the environment writes the transcripts anew; `git diff` shows what
// changed.
#include <array>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <regex>

#include "camera/ZelCameraFactory.h"
#include "image/ImageManager.h"
#include "link/TextProtocol.h"
#include "tests/camera/CameraFixture.h"
#include "tests/support/RecordedLog.h"

namespace zel::test {
namespace {

struct Session : CameraTest {
    // Does something and writes down what that logs: of the sources shown every line, of others what went wrong.
    void Step(const std::string& heading, const std::function<void()>& act) {
        m_Log.Clear();
        m_Addresses.clear();
        act();
        m_Lines.push_back("== " + heading);
        for (const RecordedLine& line : m_Log.Lines()) {
            if (line.level == kLogTrace && m_Shown.find(line.source) == std::string::npos) continue;
            const char* const levels[] = {"error ", "warning ", "trace "};
            const std::string name = line.source + "[" + line.instance + "] " + line.function + ": ";
            m_Lines.push_back(levels[line.level] + name + Masked(line.message));
        }
    }

    // Without what differs from run to run. Addresses are numbered by their first appearance in the step.
    std::string Masked(std::string message) {
        static const std::pair<std::regex, const char*> kMasks[] = {
            {std::regex("\n"), "\\n"},
            {std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d{3}"), "TIME"},
            {std::regex("\\d+\\.\\d{6} microseconds"), "TIME microseconds"},
            {std::regex("line:\\d+"), "line:LINE"},
            {std::regex(": .*[/\\\\](?=zel_)"), ": FOLDER/"},
            {std::regex("CPU does( NOT)? support"), "CPU does or does NOT support"},
        };
        for (const auto& [form, mask] : kMasks) message = std::regex_replace(message, form, mask);
        static const std::regex kAddress("0x0*([1-9a-f][0-9a-f]{5,})");
        for (std::smatch found; std::regex_search(message, found, kAddress);) {
            const std::size_t number = m_Addresses.try_emplace(found.str(1), m_Addresses.size() + 1).first->second;
            message = found.prefix().str() + "0x<" + std::to_string(number) + ">" + found.suffix().str();
        }
        return message;
    }

    void TearDown() override {
        const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
        const std::string path = ZEL_TRANSCRIPTS "/" + test + ".log";
        if (std::getenv("ZEL_WRITE_TRANSCRIPT")) {
            std::ofstream stream(path, std::ios::binary);
            for (const std::string& line : m_Lines) stream << line << '\n';
            FAIL() << path << " was written, not compared";
        }
        std::vector<std::string> expected;
        std::ifstream stream(path);
        for (std::string line; std::getline(stream, line);) expected.push_back(line.substr(0, line.find('\r')));
        using testing::internal::edit_distance::CreateUnifiedDiff;
        EXPECT_TRUE(expected == m_Lines) << "(-: " << path << ")\n" << CreateUnifiedDiff(expected, m_Lines);
    }

    std::string m_Shown;
    ExchangeLock m_Lock;

  private:
    RecordedLog m_Log;
    std::map<std::string, std::size_t> m_Addresses;
    std::vector<std::string> m_Lines;
};

TEST_F(Session, Link) {
    SyncTable table(&m_Transport, "camera 3", m_Lock);
    TextProtocol protocol(&m_Transport, "camera 3", m_Lock), nowhere(nullptr, nullptr, m_Lock);
    int value = 0;
    SyncTableAttributes record = m_Table.m_Attributes[H_BIN] = MakeAttributes(H_BIN, "h bin", 1, 8, 1);
    const Bytes block = LittleEndian(7) + Bytes(8, 0);
    std::array<char, TextProtocol::kReplyCapacity> out{"before"};
    const auto get = [&] { return table.Get(V_BIN, &value); };
    const auto set = [&] { return table.Set(V_BIN, 2); };
    const auto set_block = [&] { table.Set(CAMERA_NAME, block.data(), 2); };
    const auto get_attributes = [&] { return table.GetAttribute(V_BIN, &record); };
    const auto command = [&] { protocol.Send("info") && protocol.Recv(out.data(), 1); };

    m_Shown = "SyncTable";
    m_Transport.SetReceiveCost(10);
    Step("a value is read", get);
    Step("a value outside the table is written", [&] { table.Set(89, 2); });
    Step("values are written", [&] { table.Set(SW_TRIG, 1) && table.Set(FRAME_COUNT, 3); });
    Step("a block is written", set_block);
    Step("attributes are read", [&] { table.GetAttribute(H_BIN, &record); });
    table.OverloadAttr(H_BIN, &record);
    Step("attributes are the host's own", [&] { table.GetAttribute(H_BIN, &record); });
    table.SetCachedReads(1);
    table.SetFlags(H_BIN, SYNC_TABLE_FLAG_LOCKED | SYNC_TABLE_FLAG_READABLE_FROM_CACHE);
    Step("an entry is locked", [&] { table.Get(H_BIN, nullptr) && table.Set(H_BIN, 2); });
    table.SetFlags(H_BIN, SYNC_TABLE_FLAG_USE_TARGET_VALUE);
    Step("an entry lives in the host", [&] { table.Get(H_BIN, nullptr) && table.OverloadAttr(H_BIN, &record); });

    const Bytes reply = TableReply(SYNC_TABLE_CMD_SET, {1, 2});
    const struct {
        const char* heading;
        Bytes reply;
        std::function<void()> act;
    } replies[] = {
        {"silence", {}, set},
        {"a reply of 256 bytes is announced, which is refused without a word", {0, 1, 0}, set},
        {"a reply ends early", Bytes(reply.begin(), reply.end() - 1), set},
        {"the exception datagram is missing", reply, set},
        {"the exception datagram ends early", reply + Bytes{0, 0, 3, 0}, set},
        {"the exception datagram has no code", reply + Datagram(0, {1}), set},
        {"a text's header ends early", {9}, command},
        {"a text ends early", {9, 0, 6, 'a', 'b'}, [&] { protocol.Send("") && protocol.Recv(nullptr, 1); }},
        {"a text is too long", {9, 0x10, 0}, command},
        {"a text is far too long", {9, 0x80, 0}, command},
        {"a text", TextReply("OK"), command},
    };
    m_Shown = "TextProtocol";
    for (const auto& each : replies) {
        m_Transport.QueueReply(each.reply);
        Step(each.heading, each.act);
    }
    Step("no link", [&] { nowhere.Send("info") || nowhere.Recv(out.data(), 1); });
    for (const int code : {0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x77}) {
        m_Table.m_Exceptions[CAMERA_NAME] = m_Table.m_Exceptions[V_BIN] = code;
        Step("a write is refused", set);
    }
    Step("a block is refused", set_block);
    Step("a read is repeated three times", get);
    m_Table.m_Exceptions[V_BIN] = kExceptionBadIndex;
    Step("a read of a bad index is not", get);
    m_Shown = "SyncTable";
    Step("attributes are refused", get_attributes);
    m_Transport.SetShortSend(1);
    Step("nothing is sent", [&] { return get() || set() || get_attributes(); });
    Step("a block of less than nothing", [&] { table.Set(CAMERA_NAME, block.data(), -1); });
}

TEST_F(Session, Camera) {
    int value = 0;
    m_Shown = "ZelCameraControl TapBalance";
    m_Table.m_Values[VGA_GAIN] = 300;
    m_Table.m_Texts["tb f s"] = "ERR no flash";
    m_Camera->TapBalanceEnable(true);
    Step("connection", [&] { m_Camera->Open(); });
    const ZelParamAttrId maximum{ZEL_PARAM_HSIZE, ZEL_ATTR_MAX_VALUE};
    Step("selection", [&] { m_Camera->SetParameter(ZEL_PARAM_CMD_ID_ATTR_ID, &maximum); });
    Step("parameter", [&] { m_Camera->GetParameter(ZEL_PARAM_VSIZE, 4, &value); });
    Step("not one", [&] { m_Camera->GetParameter(99, 4, &value) || m_Camera->SetParameterValue(ZEL_MAX_PARAMS, 1); });
    Step("read-only parameter", [&] { m_Camera->SetParameterValue(ZEL_PARAM_DROPPED_FRAMES, 1); });
    Step("gain", [&] { m_Camera->SetParameterValue(ZEL_PARAM_GAIN, 400); });
    Step("analog gain", [&] { m_Camera->SetParameterValue(ZEL_PARAM_VGA_GAIN, 50); });
    m_Table.m_Values[VGA_GAIN] = -7;
    Step("gain at the transport's wish", [&] { m_Camera->SyncTapBalanceGain(); });
    for (const unsigned id : {8u, 10u, 11u}) {
        const ZelCameraEvent event{id, 0, {}};
        Step("event", [&] { m_Camera->EventCallback(&event); });
    }

    m_Shown += " ImageManager";
    m_Camera->SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 2);
    ZelImage* image = nullptr;
    const auto take = [&] { image = m_Camera->GetFreeImage(); };
    Step("start", [&] { m_Camera->Start(); });
    Step("a free record", take);
    image->image_number = 7;
    Step("it becomes pending", [&] { m_Camera->SetPendingImage(image); });
    Step("it is fetched", [&] { static_cast<ZelCamera&>(*m_Camera).GetPendingImage(); });
    Step("it is given back", [&] { m_Camera->FreeImage(image); });
    m_Camera->SetPendingImage(m_Camera->GetFreeImage());
    Step("the newest one", [&] { m_Camera->GetLastPendingImage(); });
    Step("all become free", [&] { m_Camera->FreeAllInUseImages(); });
    m_Camera->GetFreeImage();
    m_Camera->GetFreeImage();
    Step("none is free", take);
    ZelImageInternal strangers[2];
    Step("a stranger", [&] { m_Camera->SetPendingImage(strangers) || m_Camera->ReleaseImage(strangers); });
    Logger logger("ImageManager", "a list of its own");
    ImageList list("m_List", logger);
    Step("records come twice, the last one unseen", [&] {
        for (const int i : {0, 1, 1, 0}) Enqueue(&list, &strangers[i]);
    });
    Step("no list", [&] { Dequeue(nullptr); });
    Step("stop", [&] { m_Camera->Stop(); });
    Step("close", [&] { m_Camera->Close(); });

    Refuse(CAMERA_STATE);
    Step("a start is refused", [&] { m_Camera->Start(); });
    m_Table.m_Blocks[HW_MODEL] = TextBytes("Z");
    Step("unknown model", [&] { m_Camera->ConnectCommon(); });
    m_Transport.m_Answers.disconnect = 1;
    Step("the link stays", [&] { m_Camera->Close(); });
    Step("no link", [&] { zel_camera_control_create(nullptr, ""); });
    CameraControlLogger().Destroy();
}

// Why a small color camera's pictures have no colors.
TEST_F(Session, ColorCamera) {
    const unsigned short entries[4] = {};
    const auto picture = [this] {
        m_Camera->ConnectCommon();
        m_Camera->StartCommon();
        m_Camera->SetPendingImage(m_Camera->GetFreeImage());
        m_Camera->GetPendingColorImage();
    };
    Step("bad depth", [&] { m_Camera->ConcatenateColorTransform(ZEL_COLOR_TRANSFORM_16_BIT, 17); });
    m_Table.m_Exceptions.erase(CFA_TYPE);
    m_Table.m_Values[CFA_PHASE] = 7;
    m_Table.m_Blocks[CCM_OUTPUT_COLOR_SPACE] = TextBytes("sRGB");
    m_Camera->SetInputLinearizationTable(entries, 1, 4);
    Step("bad color space, phase and table", picture);
    m_Table.m_Blocks[CCM_OUTPUT_COLOR_SPACE] = TextBytes("XYZ");
    m_Table.m_Values[H_BIN] = m_Table.m_Values[V_BIN] = 2;
    Step("binning", picture);
}

}  // namespace
}  // namespace zel::test
