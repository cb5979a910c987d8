// The camera's parameter table.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstring>
#include <set>

#include "tools/zelcam/check/CameraSession.h"

namespace zelcam::check {

namespace {

constexpr int kIntegerType = 3;  // of an attribute record
constexpr std::size_t kTextBytes = 32;

std::string EntryName(int index) { return fmt::format("{} ({})", zel::SyncTableName(index), index); }

// One answer of an entry; Broken when it is not whole.
TableAnswer Ask(CameraSession& session, int command, int index, std::span<const std::uint8_t> data = {}) {
    TableAnswer answer = session.host.Request(command, index, data);
    Require(answer.complete, fmt::format("command {} of entry {} got no whole answer", command, index));
    return answer;
}

bool AttributesOf(CameraSession& session, int index, zel::SyncTableAttributes& record) {
    const TableAnswer answer = Ask(session, SYNC_TABLE_CMD_GET_ATTRIBUTES, index);
    if (answer.exception == kExceptionBadIndex) return false;
    Require(answer.exception == 0, fmt::format("{}: exception 0x{:02x}", EntryName(index), answer.exception));
    Require(answer.data.size() == sizeof record,
            fmt::format("{}: {} bytes of attributes", EntryName(index), answer.data.size()));
    std::memcpy(&record, answer.data.data(), sizeof record);
    return true;
}

bool Writable(const zel::SyncTableAttributes& record) { return (record.flags & 1) != 0; }

// Calls look(index, record) for each entry that this camera has; answers how many.
template <class Look>
int EachEntry(CameraSession& session, Look look) {
    int entries = 0;
    for (int index = 0; index < SYNC_TABLE_SELECT_MAX; ++index) {
        zel::SyncTableAttributes record{};
        if (!AttributesOf(session, index, record)) continue;
        look(index, record);
        ++entries;
    }
    return entries;
}

int ValueOf(CameraSession& session, int index) {
    int value = 0;
    Require(session.host.Get(index, value), EntryName(index) + " can't be read");
    return value;
}

std::string CheckGet(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    int entries = 0;
    for (int index = 0; index < SYNC_TABLE_SELECT_MAX; ++index) {
        const TableAnswer answer = Ask(session, SYNC_TABLE_CMD_GET, index);
        if (answer.exception == kExceptionBadIndex) continue;
        const std::size_t size = answer.data.size();
        Require(answer.exception == 0, fmt::format("{}: exception 0x{:02x}", EntryName(index), answer.exception));
        Require(zel::SyncTableIsBlock(index) ? size >= 1 && size <= kTextBytes : size == 4,
                fmt::format("{} has {} bytes", EntryName(index), size));
        ++entries;
    }
    for (const int index : {H_SIZE, V_SIZE, BITS_PER_PIXEL}) {
        Require(ValueOf(session, index) > 0, EntryName(index) + " is not positive");
    }
    Require(!session.host.GetText(HW_MODEL).empty(), EntryName(HW_MODEL) + " is empty");
    return fmt::format("{} entries, model {}", entries, session.host.GetText(HW_MODEL));
}

std::string CheckAttributes(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    const int entries = EachEntry(session, [](int index, const zel::SyncTableAttributes& record) {
        Require(std::memchr(record.name, 0, sizeof record.name) != nullptr && *record.name,
                EntryName(index) + " has no name");
        if (record.data_type != kIntegerType) return;
        Require(record.minimum <= record.maximum,
                fmt::format("{} reaches from {} to {}", EntryName(index), record.minimum, record.maximum));
    });
    Require(entries > 0, "there are none");
    return fmt::format("{} records", entries);
}

std::string CheckBadIndex(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    constexpr std::uint8_t kValue[4] = {};
    for (const int index : {static_cast<int>(SYNC_TABLE_SELECT_MAX), -1, 1000}) {
        for (const int command : {SYNC_TABLE_CMD_GET, SYNC_TABLE_CMD_SET, SYNC_TABLE_CMD_GET_ATTRIBUTES}) {
            const bool write = command == SYNC_TABLE_CMD_SET;
            const TableAnswer answer =
                Ask(session, command, index,
                    write ? std::span<const std::uint8_t>(kValue) : std::span<const std::uint8_t>());
            Require(answer.exception == kExceptionBadIndex,
                    fmt::format("command {} of entry {} is answered with 0x{:02x}", command, index, answer.exception));
        }
    }
    return "89, -1 and 1000";
}

std::string CheckWrite(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    zel::SyncTableAttributes record{};
    Require(AttributesOf(session, EXPOSURE_TIME, record), EntryName(EXPOSURE_TIME) + " is missing");
    const int before = ValueOf(session, EXPOSURE_TIME);
    const int middle = before == 2000 ? 3000 : 2000;
    const int wanted = std::clamp(middle, record.minimum, record.maximum);
    const int refused = session.host.Set(EXPOSURE_TIME, wanted);
    Require(refused == 0, fmt::format("{} us: exception 0x{:02x}", wanted, refused));
    const int now = ValueOf(session, EXPOSURE_TIME);
    // A camera may round to what its clock can do.
    Require(std::abs(now - wanted) <= std::max(wanted / 20, 1), fmt::format("{} us became {}", wanted, now));
    session.host.Set(EXPOSURE_TIME, before);
    return fmt::format("{} us of exposure read {}", wanted, now);
}

std::string CheckProtected(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    int entries = 0;
    EachEntry(session, [&](int index, const zel::SyncTableAttributes& record) {
        if (Writable(record) || record.data_type != kIntegerType) return;
        const int exception = session.host.Set(index, record.minimum);
        Require(exception == kExceptionWriteToConst || exception == kExceptionWriteToReadOnly,
                fmt::format("a write to {} is answered with 0x{:02x}", EntryName(index), exception));
        ++entries;
    });
    if (entries == 0) throw Skipped("every entry may be written");
    return fmt::format("{} entries", entries);
}

std::string CheckRange(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    int tried = 0;
    for (const int index : {EXPOSURE_TIME, VGA_GAIN, OB_LEVEL, H_BIN, CLOCK_SPEED_IDX}) {
        zel::SyncTableAttributes record{};
        if (!AttributesOf(session, index, record) || !Writable(record)) continue;
        const int before = ValueOf(session, index);
        for (const bool above : {false, true}) {
            if (above ? record.maximum == INT_MAX : record.minimum == INT_MIN) continue;
            const int value = above ? record.maximum + 1 : record.minimum - 1;
            Require(session.host.Set(index, value) > 0,
                    fmt::format("{} takes {} ({} to {})", EntryName(index), value, record.minimum, record.maximum));
            const int now = ValueOf(session, index);
            Require(now == before, fmt::format("{} was {}, a refused write made it {}", EntryName(index), before, now));
            ++tried;
        }
    }
    if (tried == 0) throw Skipped("no entry has bounds");
    return fmt::format("{} values", tried);
}

std::string CheckIncomplete(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    const int before = ValueOf(session, EXPOSURE_TIME);
    const TableAnswer answer = Ask(session, SYNC_TABLE_CMD_SET, EXPOSURE_TIME);
    Require(answer.exception == kExceptionIncompleteData,
            fmt::format("a write without a value is answered with 0x{:02x}", answer.exception));
    Require(ValueOf(session, EXPOSURE_TIME) == before, "it changed the entry");
    return "exception 0x12";
}

std::string CheckTwoDatagrams(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    constexpr std::uint8_t kOne[4] = {1, 0, 0, 0};
    const std::tuple<int, int, std::span<const std::uint8_t>> kRequests[] = {
        {SYNC_TABLE_CMD_GET, V_SIZE, {}},
        {SYNC_TABLE_CMD_GET_ATTRIBUTES, V_SIZE, {}},
        {SYNC_TABLE_CMD_SET, SYNC_TABLE_SELECT_MAX, kOne},
        {SYNC_TABLE_CMD_GET, HW_MODEL, {}}};
    for (const auto& [command, index, data] : kRequests) {
        Ask(session, command, index, data);
        std::uint8_t more = 0;
        Require(session.transport.RecvData(1, &more, 20) == 0,
                fmt::format("bytes came behind the answer to command {} of entry {}", command, index));
    }
    return "four kinds of answers";
}

std::string CheckUnread(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    const TableAnswer count = Ask(session, SYNC_TABLE_CMD_UNREAD_COUNT, 0);
    const TableAnswer indices = Ask(session, SYNC_TABLE_CMD_UNREAD_INDICES, 0);
    if (count.exception != 0 || indices.exception != 0) throw Skipped("the camera does not tell (the SDK never asks)");
    const std::set<std::uint8_t> different(indices.data.begin(), indices.data.end());
    Require(count.data.size() == 4 && count.data[0] == indices.data.size(),
            fmt::format("{} entries are listed", indices.data.size()));
    Require(different.size() == indices.data.size(), "one is listed twice");
    Require(different.empty() || *different.rbegin() < SYNC_TABLE_SELECT_MAX, "one is beyond the table");
    return fmt::format("{} entries", different.size());
}

std::string CheckBlock(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    zel::SyncTableAttributes record{};
    if (!AttributesOf(session, CAMERA_NAME, record) || !Writable(record)) throw Skipped("no text can be written");
    const std::string before = session.host.GetText(CAMERA_NAME);
    const auto write = [&](const std::string& text) {
        std::vector<std::uint8_t> bytes(text.begin(), text.end());
        bytes.resize(kTextBytes);
        return Ask(session, SYNC_TABLE_CMD_SET, CAMERA_NAME, bytes).exception;
    };
    const int exception = write("left eye");
    const std::string now = session.host.GetText(CAMERA_NAME);
    const int longest = write(std::string(kTextBytes, 'x'));
    const TableAnswer answer = Ask(session, SYNC_TABLE_CMD_GET, CAMERA_NAME);
    write(before);
    Require(exception == 0, fmt::format("exception 0x{:02x}", exception));
    Require(now == "left eye", fmt::format("\"left eye\" became \"{}\"", now));
    Require(longest != 0 || std::ranges::find(answer.data, 0) != answer.data.end(), "a long text has no end");
    return "the camera's name";
}

std::string CheckCalculation(CheckedPlugin& plugin, int camera) {
    CameraSession session(plugin, camera);
    session.Open();
    constexpr auto kLongest = std::chrono::seconds(5);
    const int exception = session.host.Set(CALC_STATE, 1);
    Require(exception == 0, fmt::format("writing 1 is answered with 0x{:02x}", exception));
    const auto begun = std::chrono::steady_clock::now();
    int state = ValueOf(session, CALC_STATE);
    while (state == 1 && std::chrono::steady_clock::now() - begun < kLongest) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        state = ValueOf(session, CALC_STATE);
    }
    Require(state == 2, fmt::format("it became {}", state));
    return "1 became 2";
}

// What the SDK asks for at each start.
std::string CheckNeeded(CheckedPlugin& plugin, int camera) {
    constexpr int kNeeded[] = {H_ROI_ORIGIN,  V_ROI_ORIGIN, H_ROI_PIXELS,    V_ROI_PIXELS,    H_BIN,       V_BIN,
                               EXPOSURE_TIME, CALC_STATE,   SENSOR_TAPS_VAL, CLOCK_SPEED_VAL, CAMERA_STATE};
    CameraSession session(plugin, camera);
    session.Open();
    for (const int index : kNeeded) ValueOf(session, index);
    const int width = ValueOf(session, H_SIZE);
    const int height = ValueOf(session, V_SIZE);
    const int bits = ValueOf(session, BITS_PER_PIXEL);
    const int bytes = ValueOf(session, BYTES_PER_PIXEL);
    const std::string size = fmt::format("{} x {} samples of {} bits, {} bytes", width, height, bits, bytes);
    const bool sane = width >= 1 && height >= 1 && bits >= 1 && bits <= 16 && bytes >= 1 && bytes <= 2;
    Require(sane, "a frame is said to have " + size);
    return size;
}

constexpr Clause kTableClauses[] = {
    {"table", "table-get", "every entry answers its value: 4 bytes, or a block of up to 32", true, CheckGet},
    {"table", "table-attributes", "every entry has an attribute record: a name, bounds in order", true,
     CheckAttributes},
    {"table", "table-needed", "what the SDK reads at each start is there, and makes sense", true, CheckNeeded},
    {"table", "table-bad-index", "an index beyond the table is refused with exception 0x14", true, CheckBadIndex},
    {"table", "table-write", "a value that was written reads back", true, CheckWrite},
    {"table", "table-protected", "entries that may not be written refuse with 0x13 or 0x15", true, CheckProtected},
    {"table", "table-range", "a value out of range is refused and changes nothing", true, CheckRange},
    {"table", "table-incomplete", "a write without a value is refused with exception 0x12", true, CheckIncomplete},
    {"table", "table-two-datagrams", "each answer is a reply and an exception datagram, and no more", true,
     CheckTwoDatagrams},
    {"table", "table-unread", "the list of unread entries is as long as it says", true, CheckUnread},
    {"table", "table-block", "a text is written as a block and reads back, ended", true, CheckBlock},
    {"table", "table-calculation", "CALC_STATE goes from 1 to 2 within 5 s", true, CheckCalculation},
};

}  // namespace

std::span<const Clause> TableClauses() { return kTableClauses; }

}  // namespace zelcam::check
