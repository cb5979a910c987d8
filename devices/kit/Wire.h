// The datagrams of both protocols, from the camera's side. Lengths are big-endian, values little-endian.
//
// Text command:   9 | length (2) | text                 or the text alone
// Text reply:     9 | length (2) | text CR LF NUL
//
// Table request:  0 | length (2) | command | argument length (2) | index (4) | data
// Table reply:    0 | length (2) | command | data length (2)     | data
// and after it:   0 | 0 0                                  no exception
//                 0 | 0 3 | command | 0 | exception code
#ifndef DEVICES_KIT_WIRE_H
#define DEVICES_KIT_WIRE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zel::kit {

inline bool IsTableRequest(std::span<const std::uint8_t> datagram) { return !datagram.empty() && datagram[0] == 0; }

// The text of a datagram that is a command, without its line end.
std::string_view CommandText(std::span<const std::uint8_t> datagram);
// Takes the first word off a command.
std::string_view NextWord(std::string_view& rest);

struct TableRequest {
    int command = 0;
    int index = 0;
    std::span<const std::uint8_t> data;
};
// None: the datagram is not whole.
std::optional<TableRequest> ReadTableRequest(std::span<const std::uint8_t> datagram);
// The command of a datagram that need not be whole; 0 when it has none.
int TableCommand(std::span<const std::uint8_t> datagram);

void AppendTextReply(std::string_view text, std::vector<std::uint8_t>& answer);
// exception: 0 = none.
void AppendTableReply(int command, std::span<const std::uint8_t> data, int exception,
                      std::vector<std::uint8_t>& answer);

void AppendLittle32(std::vector<std::uint8_t>& to, std::uint32_t value);
std::uint32_t Little32(std::span<const std::uint8_t> bytes);

}  // namespace zel::kit

#endif
