#include "devices/kit/Wire.h"

#include <algorithm>

namespace zel::kit {

namespace {

constexpr std::size_t kHeader = 3;
constexpr std::size_t kArguments = 6;
constexpr std::size_t kData = 10;

// The payload's length as the header has it.
std::size_t PayloadLength(std::span<const std::uint8_t> datagram) {
    return std::size_t{datagram[1]} * 256 + datagram[2];
}

std::uint8_t High(std::size_t length) { return static_cast<std::uint8_t>(length >> 8); }
std::uint8_t Low(std::size_t length) { return static_cast<std::uint8_t>(length); }

}  // namespace

std::string_view CommandText(std::span<const std::uint8_t> datagram) {
    std::string_view text(reinterpret_cast<const char*>(datagram.data()), datagram.size());
    if (datagram.size() >= kHeader && datagram[0] == 9 && datagram.size() - kHeader == PayloadLength(datagram)) {
        text.remove_prefix(kHeader);
    }
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n' || text.back() == '\0' || text.back() == ' ')) {
        text.remove_suffix(1);
    }
    return text;
}

std::string_view NextWord(std::string_view& rest) {
    const std::size_t begin = std::min(rest.find_first_not_of(' '), rest.size());
    const std::size_t end = std::min(rest.find(' ', begin), rest.size());
    const std::string_view word = rest.substr(begin, end - begin);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return word;
}

int TableCommand(std::span<const std::uint8_t> datagram) { return datagram.size() > kHeader ? datagram[kHeader] : 0; }

std::optional<TableRequest> ReadTableRequest(std::span<const std::uint8_t> datagram) {
    // The argument length of a long block write holds its low byte only, so the datagram's own length counts.
    if (datagram.size() < kData || datagram.size() - kHeader != PayloadLength(datagram)) return std::nullopt;
    const auto index = static_cast<int>(Little32(datagram.subspan(kArguments)));
    return TableRequest{TableCommand(datagram), index, datagram.subspan(kData)};
}

void AppendTextReply(std::string_view text, std::vector<std::uint8_t>& answer) {
    const std::size_t length = text.size() + 3;
    answer.insert(answer.end(), {9, High(length), Low(length)});
    answer.insert(answer.end(), text.begin(), text.end());
    answer.insert(answer.end(), {'\r', '\n', 0});
}

void AppendTableReply(int command, std::span<const std::uint8_t> data, int exception,
                      std::vector<std::uint8_t>& answer) {
    const std::size_t length = 3 + data.size();
    const auto code = static_cast<std::uint8_t>(command);
    answer.insert(answer.end(), {0, High(length), Low(length), code, High(data.size()), Low(data.size())});
    answer.insert(answer.end(), data.begin(), data.end());
    if (exception == 0) {
        answer.insert(answer.end(), {0, 0, 0});
    } else {
        answer.insert(answer.end(), {0, 0, 3, code, 0, static_cast<std::uint8_t>(exception)});
    }
}

void AppendLittle32(std::vector<std::uint8_t>& to, std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) to.push_back(static_cast<std::uint8_t>(value >> shift));
}

std::uint32_t Little32(std::span<const std::uint8_t> bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4 && i < bytes.size(); ++i) value |= std::uint32_t{bytes[i]} << (8 * i);
    return value;
}

}  // namespace zel::kit
