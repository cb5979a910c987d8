// A camera's calibration flash whose content and answers are those of a good one but for what the input changes, and
// everything that TapBalance does with it: directory, rows, files, writing.

#include "calibration/TableText.h"
#include "fuzz/Input.h"
#include "fuzz/StandIns.h"
#include "tapbalance/TapBalance.h"
#include "tests/support/FakeClock.h"
#include "tests/tapbalance/ScriptedFlash.h"

using namespace zel;
using namespace zel::test;

namespace {

const TapTable s_Tables[] = {MakeTable(5, 2), MakeTable(6, 4), MakeTable(4, 4, 1)};

constexpr const char* kFile = "20MHz.txt";  // in memory: the first table's cache file

void Rows(TapBalance& tables, int row) {
    int rows = -1, taps = -1;
    tables.GetTableConfig(&rows, &taps);
    float values[1 + kMostTaps];
    if (taps == 2) tables.GetTableData(row, values, values + 1, values + 2);
    if (taps == 4) tables.GetTableData(row, values, values + 1);
    tables.GetTableData(row, values, values + 1, values + 2, values + 3, values + 4);
}

void Correct(TapBalance& tables, unsigned choice) {
    constexpr int kWidths[] = {0, 2, 8, 9};
    std::vector<unsigned short> pixels(9 * 8, 1000);
    tables.Enable(true);
    tables.CalculateLUT();
    tables.TranslatePixels(kWidths[choice % 4], 8, choice & 4 ? 2 : 4, choice & 8 ? 1 : 0, pixels.data());
    tables.PrintTable();
}

void Do(TapBalance& tables, fuzz::Input& input) {
    constexpr float kGains[] = {1.0f, 0.9f, 2.5f, 1.1f};
    const unsigned kind = input.Below(18);
    if (kind == 0) tables.LoadDataFromCamera();
    if (kind == 1) tables.SelectTable(static_cast<int>(input.Below(4)) - 1);
    if (kind == 2) Rows(tables, input.Number());
    if (kind == 3) tables.LoadDataTableFromCamera(static_cast<int>(input.Below(4)) - 1);
    if (kind == 4) tables.CheckDownload();
    if (kind == 5) Correct(tables, input.Byte());
    if (kind == 6) tables.SetTableConfig(static_cast<int>(input.Below(3)), input.Number(), 2 + input.Number() % 3);
    if (kind == 7) tables.SetTableData(input.Number(), static_cast<float>(input.Number()), kGains);
    if (kind == 8) tables.WriteTableConfigToCamera();
    if (kind == 9) tables.WriteDataToCamera();
    if (kind == 10) tables.FlashTest();
    if (kind == 11) tables.ForgetFlash();
    if (kind == 12) tables.SetBitsPerPixel(static_cast<int>(input.Below(12)));
    if (kind == 13) tables.SetGain(static_cast<float>(input.Number()));
    if (kind == 14) tables.LoadDataFromFile(kFile, input.Below(2));
    if (kind == 15) tables.LoadCacheFiles();
    if (kind == 16) tables.WriteDataToFile();
    if (kind == 17) tables.LoadDataFromMasterFile(kFile);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const unsigned flags = input.Byte();
    fuzz::SetLogging(flags >= 0xE0);
    ScriptedFlash flash(flags & 2 ? 64 : 24, 24);
    flash.Install(s_Tables[flags >> 2 & 1], s_Tables[1 + (flags >> 3 & 1)]);
    // Bytes of the flash, then answers in its place: to which commands, after how many.
    for (unsigned i = input.Below(8); i > 0; --i) {
        const std::size_t at = input.Byte();
        flash.Put(at, Bytes{static_cast<unsigned char>(input.Byte())});
    }
    const std::string start = "tb " + std::string(input.Text().substr(0, 3));
    const std::string reply(input.Text());
    unsigned after = input.Byte(), times = input.Byte();
    flash.m_Fault = [&](const std::string& command) -> std::optional<std::string> {
        flash.m_Commands.clear();
        if (!command.starts_with(start) || (after > 0 && after--) || times == 0 || !times--) return std::nullopt;
        return reply;
    };
    fuzz::Files() = {{kFile, FormatCacheFile(s_Tables[0], s_Tables[0].Digest())}};
    FakeClock clock;
    ScriptedTransport transport(&clock);
    transport.SetHandler([&](const Bytes& datagram) { return flash.Answer(datagram); });
    ExchangeLock lock;
    TextProtocol text(&transport, "fuzz", lock);
    TapBalance tables(text, "fuzz");
    tables.SetBitsPerPixel(4);
    tables.SetCameraTexts("fuzz", "1");
    for (int i = 0; i < 12 && !input.Ended(); ++i) {
        const int before = transport.Exchanges();
        Do(tables, input);
        FuzzCheck(transport.Exchanges() - before < 4 * 1000 * 20 * 2 + 1000);
    }
    return 0;
}
