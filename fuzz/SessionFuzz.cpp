// A whole session with a camera whose every answer the input may change: connect, all parameters, start, frames,
// triggers, stop, close, in any order. Nothing waits, no operation takes longer than its budget.

#include "camera/ZelCameraControl.h"
#include "fuzz/Input.h"
#include "fuzz/StandIns.h"
#include "tests/support/TableCamera.h"
#include "tests/tapbalance/ScriptedFlash.h"

using namespace zel;
using namespace zel::test;

namespace {

// What a camera may say of its size without more memory than a fuzzer should take: small, or too much for any machine.
int Sensible(int index, int value) {
    const bool size = index == H_SIZE || index == V_SIZE || (index >= H_ROI_ORIGIN && index <= V_ROI_PIXELS);
    return size && value > 64 && value < 0x10000000 ? value % 64 : value;
}

struct Camera {
    explicit Camera(fuzz::Input& input) {
        flash.Install(MakeTable(4, 2), MakeTable(4, 4));
        const unsigned kind = input.Byte();
        if (kind & 1) table.m_Blocks[CFA_TYPE] = TextBytes("Bayer");
        if (!(kind & 1)) table.m_Exceptions[CFA_TYPE] = kExceptionBadIndex;
        transport.m_Answers.interface_type = 3 + (kind >> 1 & 3);
        for (unsigned i = input.Below(16); i > 0; --i) {
            const int index = static_cast<int>(input.Below(SYNC_TABLE_SELECT_MAX));
            if (!SyncTableIsBlock(index)) table.m_Values[index] = Sensible(index, input.Number());
            if (const Bytes block = AsBytes(input.Bytes()); SyncTableIsBlock(index)) table.m_Blocks[index] = block;
        }
        faults = fuzz::Input(input.Bytes());
        transport.SetHandler([this](const Bytes& datagram) { return Answer(datagram); });
    }

    // One byte for each exchange says what becomes of the answer; most of them nothing.
    Bytes Answer(const Bytes& datagram) {
        const bool text = datagram.size() > 3 && datagram[0] == 9 && datagram[3] == 't';
        Bytes answer = text && datagram[4] == 'b' ? flash.Answer(datagram) : table.Answer(datagram);
        flash.m_Commands.clear();
        if (table.m_Values[CALC_STATE] == 1) table.m_Values[CALC_STATE] = 2;
        const unsigned fault = faults.Byte();
        if (fault < 0x80) return answer;
        const unsigned kind = fault % 8;
        if (kind == 0) answer.clear();
        if (kind == 1) answer.resize(std::min<std::size_t>(answer.size(), faults.Byte()));
        if (kind == 2) return ExceptionReply(static_cast<int>(faults.Byte()));
        if (kind == 3) return AsBytes(faults.Bytes());
        if (kind == 4) return answer + answer;
        if (kind > 4 && !answer.empty())
            answer[faults.Byte() % answer.size()] = static_cast<unsigned char>(faults.Byte());
        return answer;
    }

    FakeClock clock;
    ScriptedTransport transport{&clock};
    TableCamera table;
    ScriptedFlash flash{64, 8};
    fuzz::Input faults;
};

// What a transport does with one frame.
void Deliver(ScriptedTransport& transport, unsigned number) {
    IZelCameraCommon* const common = transport.Common();
    ZelImage* const image = common ? common->GetFreeImage() : nullptr;
    if (!image) return;
    std::fill_n(image->pixels, static_cast<ZelColorImage*>(image)->buffer_size / 2,
                static_cast<std::uint16_t>(number * 97));
    image->image_number = number;
    common->FillImageInfo(image);
    common->SetPendingImage(image);
    transport.EmitEvent(CAMERA_EVENT_IMAGE_READY);
    transport.EmitImage(image);
}

void Take(ZelColorCamera& camera, unsigned how) {
    ZelImage* const image = how & 1 ? camera.GetPendingImage() : camera.GetLastPendingImage();
    if (!image) return;
    // Every sample is there.
    unsigned sum = 0;
    for (std::size_t i = 0; i < std::size_t{image->w} * image->h; ++i) sum += image->pixels[i];
    FuzzCheck(sum < 0xFFFFFFFFu);
    if (how & 2) camera.FreeImage(image);
}

void Parameters(ZelColorCamera& camera, fuzz::Input& input) {
    const int id = static_cast<int>(input.Below(ZEL_MAX_PARAMS + 2));
    const unsigned size = input.Byte();
    std::vector<unsigned char> data(72);  // the widest; what is told of it is looked at for one parameter alone
    camera.GetParameter(static_cast<unsigned>(id), size, data.data());
    camera.GetParameterValue(static_cast<unsigned>(id));
    const int value = input.Number();
    if (id != ZEL_PARAM_NUM_IMAGE_BUFFERS || value < 64) camera.SetParameterValue(id, value);
    const ZelParamAttrId attribute{id, static_cast<int>(input.Below(8))};
    camera.SetParameter(ZEL_PARAM_CMD_ID_ATTR_ID, &attribute);
    camera.GetParameter(ZEL_PARAM_ATTR, size, data.data());
}

void Color(ZelColorCamera& camera, fuzz::Input& input) {
    const std::vector<unsigned short> entries(768, static_cast<unsigned short>(input.Number()));
    float matrix[9] = {};
    camera.GetColorTransform(matrix);
    camera.ConcatenateColorTransform(input.Number(), input.Number());
    camera.ConcatenateColorMatrix(matrix);
    camera.SetInputLinearizationTable(entries.data(), input.Below(3) * 128, 1 + input.Below(3));
    camera.SetOutputNonLinearizationTable(entries.data(), input.Below(3) * 128, 1 + input.Below(3));
}

int ZEL_CALL Scratchpad(ZelColorImage* image, void*) { return image && image->w > 2 ? 1 : 0; }

// What tools for calibration use.
void Service(ZelCameraControl& camera, fuzz::Input& input) {
    std::vector<unsigned char> bytes(input.Below(16));
    float gains[kMostTaps] = {1.0f, 1.0f, 1.0f, 1.0f};
    float level = 0;
    const auto count = static_cast<int>(bytes.size());
    const unsigned kind = input.Below(8);
    if (kind == 0) camera.TapBalanceEnable(input.Below(2));
    if (kind == 1) camera.TapBalanceGetTableConfig(nullptr, nullptr);
    if (kind == 1) camera.TapBalanceGetTableData(1, &level, gains);
    if (kind == 2) camera.TapBalanceSelectTable(2);
    if (kind == 2) camera.TapBalanceLoadDataFromCamera();
    if (kind == 3) camera.TapBalanceSetTableConfig(0, 4, 4);
    if (kind == 3) camera.TapBalanceSetTableData(0, 12.0f, gains);
    if (kind == 4) camera.SendData(bytes.data(), count);
    if (kind == 5) camera.RecvData(bytes.data(), count, 100);
    if (kind == 6) camera.SetImageAveraging(static_cast<int>(input.Below(4)), 0);
    if (kind == 6) camera.IsMonochrome();
    if (kind == 7) camera.SetScratchpadCallback(&Scratchpad, nullptr);
    if (kind == 7) camera.ConcatenateScratchpadTransform(input.Number(), 0);
}

// What a transport may ask beside its frames.
void Common(IZelCameraCommon& common, fuzz::Input& input) {
    int value = 0;
    common.GetCameraParameter(input.Number(), &value);
    common.TextCommandCommon("info", input.Below(2));
    common.SyncTapBalanceGain();
    common.ReleaseImage(common.GetPendingImage());
    common.FreeAllInUseImages();
}

void Do(ZelCameraControl& control, ZelColorCamera& camera, Camera& device, fuzz::Input& input, unsigned number) {
    const unsigned kind = input.Below(18);
    if (kind == 0) camera.Open();
    if (kind == 1) camera.Close();
    if (kind == 2) camera.Start(static_cast<int>(input.Below(4)));
    if (kind == 3) camera.Stop();
    if (kind == 4 || kind == 5) Parameters(camera, input);
    if (kind == 6 || kind == 7) Deliver(device.transport, number);
    if (kind == 8) Take(camera, input.Byte());
    if (kind == 9) camera.StartTriggerAcquisition();
    if (kind == 10) camera.SoftwareTrigger();
    if (kind == 10) camera.StopTriggerAcquisition(static_cast<int>(input.Below(2)));
    if (kind == 11) camera.SetTextCommand(std::string(input.Text()).c_str());
    if (kind == 12) Color(camera, input);
    if (kind == 13) camera.SetCameraName(std::string(input.Text()).c_str());
    if (kind == 13) FuzzCheck(camera.GetCameraName() != nullptr);
    if (kind == 14) device.transport.EmitEvent(input.Below(12), input.Number());
    if (kind == 15) camera.ResetCamera();
    if (kind == 15) camera.SetExposureToDefault();
    if (kind == 15) camera.FreeAllPendingImages();
    if (kind == 16) Service(control, input);
    if (kind == 17) Common(control, input);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const unsigned flags = input.Byte();
    fuzz::SetLogging(flags >= 0xE0);
    fuzz::Files().clear();
    Camera device(input);
    ZelCameraControl camera(&device.transport, "fuzz");
    device.transport.SetCameraCommon(&camera);
    ZelColorCamera& application = camera;
    if (flags & 2) application.SetImageCallback([](ZelImage*, void*) {}, nullptr);
    if (flags & 4)
        application.SetTextCommandCallback(
            [](const char* text, void*) { FuzzCheck(std::string_view(text).size() < 4096); }, nullptr);
    if (flags & 8) application.Open();
    for (unsigned i = 0; i < 40 && !input.Ended(); ++i) {
        const std::uint32_t start = device.clock.Elapsed();
        Do(camera, application, device, input, i);
        FuzzCheck(device.clock.Elapsed() - start < 600'000);
    }
    application.Close();
    FuzzCheck(!camera.GetFreeImage());
    return 0;
}
