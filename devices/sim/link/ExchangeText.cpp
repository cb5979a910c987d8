#include "devices/sim/link/ExchangeText.h"

#include "devices/kit/Entry.h"
#include "devices/kit/Wire.h"

namespace zel::sim {

namespace {

std::string CommandName(int command) {
    switch (command) {
        case SYNC_TABLE_CMD_GET:
            return "GET";
        case SYNC_TABLE_CMD_SET:
            return "SET";
        case SYNC_TABLE_CMD_GET_ATTRIBUTES:
            return "ATTRIBUTES";
        default:
            return "COMMAND " + std::to_string(command);
    }
}

}  // namespace

int ExchangeEntry(std::span<const std::uint8_t> datagram) {
    return kit::IsTableRequest(datagram) && datagram.size() >= 10 ? static_cast<int>(kit::Little32(datagram.subspan(6)))
                                                                  : -1;
}

std::string ExchangeText(std::span<const std::uint8_t> datagram) {
    if (kit::IsTableRequest(datagram)) {
        if (datagram.size() < 10) return "incomplete request";
        std::string text = CommandName(datagram[3]) + ' ' + kit::EntryName(ExchangeEntry(datagram));
        if (datagram[3] == SYNC_TABLE_CMD_SET) {
            text += ' ' + std::to_string(static_cast<int>(kit::Little32(datagram.subspan(10))));
        }
        return text;
    }
    const bool header = datagram.size() >= 3 && datagram[0] == 9;
    std::string text = "text ";
    for (const std::uint8_t byte : datagram.subspan(header ? 3 : 0)) {
        if (byte == '\r') {
            text += "\\r";
        } else if (byte == '\n') {
            text += "\\n";
        } else {
            text += byte >= ' ' && byte < 127 ? static_cast<char>(byte) : '?';
        }
    }
    return text;
}

}  // namespace zel::sim
