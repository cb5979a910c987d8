// Texts of any kind as cache and master files. The first byte chooses: the text as it stands, or a good file with parts
// of it replaced. What is taken is a table of a legal shape that comes back the same from its own text, and lookup
// tables can be made of it.
#include <cmath>

#include "calibration/TableText.h"
#include "fuzz/Input.h"
#include "tapbalance/LookupTables.h"
#include "tests/tapbalance/ScriptedFlash.h"

using namespace zel;

namespace {

// Each change: where, how many characters go, which come instead.
std::string Changed(std::string text, fuzz::Input& input) {
    while (!input.Ended()) {
        const std::size_t at = (input.Byte() << 8 | input.Byte()) % text.size();
        const std::size_t gone = input.Byte();
        text.replace(at, gone % 16 == 15 ? gone : gone % 16, input.Text());
        if (text.empty()) break;
    }
    return text;
}

void CheckTable(const TapTable& table) {
    FuzzCheck(TapTable::IsValidShape(table.Rows(), table.Columns()) && (table.Taps() == 2 || table.Taps() == 4));
    FuzzCheck(table.FlashBytes().size() ==
              static_cast<std::size_t>(table.Rows()) * static_cast<std::size_t>(table.Columns()) * 4);
    bool seven_decimals = true;  // what a cache file keeps of a number
    for (int row = 0; row < table.Rows(); ++row) {
        const TapRow values = table.Row(row);
        FuzzCheck(std::isfinite(values.millivolts));
        seven_decimals = seven_decimals && std::fabs(values.millivolts) < 1e6f;
        for (const float gain : values.gains) FuzzCheck(std::isfinite(gain));
    }
    TableTextFault fault;
    const auto again = ParseCacheFile(FormatCacheFile(table, table.Digest()), fault);
    FuzzCheck(again && again->digest == table.Digest() && again->table.Rows() == table.Rows());
    // What was read from such a text once has no more digits to lose.
    FuzzCheck(!seven_decimals ||
              FormatCacheFile(again->table, table.Digest()) == FormatCacheFile(table, table.Digest()));
    if (table.Rows() < kFitRows) return;
    const auto tables = MakeLookupTables(table, 4, 1.5f, nullptr);
    FuzzCheck(tables && tables->taps == table.Taps() && tables->entries == 16);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TapTable s_Tables[] = {test::MakeTable(5, 2), test::MakeTable(6, 4)};
    fuzz::Input input(data, size);
    const unsigned flags = input.Byte();
    const bool cache = flags & 1;
    const TapTable& good = s_Tables[flags >> 1 & 1];
    std::string text = FormatCacheFile(good, good.Digest());
    if (!cache) text.erase(0, text.find('\n') + 1);
    text = flags & 4 ? std::string(input.RestText()) : Changed(text, input);
    FuzzCheck(TableOfFileName(text) >= -1 && TableOfFileName(text) < kTapTables);
    TableTextFault fault{TableTextFault::Kind::kDigest, -1, -1, -1, false};
    if (cache) {
        const auto file = ParseCacheFile(text, fault);
        file ? CheckTable(file->table) : FuzzCheck(fault.line >= 0);
    } else {
        const auto table = ParseMasterFile(text, flags & 8 ? Remarks::kAllowed : Remarks::kNone, fault);
        table ? CheckTable(*table) : FuzzCheck(fault.line >= 0);
    }
    return 0;
}
