#include "platform/NetworkLinks.h"

#include <algorithm>
#include <charconv>

namespace zel::platform {

namespace {

// Four numbers of a byte each with points between them.
std::optional<std::uint32_t> AddressIn(const std::string& text) {
    std::uint32_t address = 0;
    const char* at = text.data();
    const char* const end = at + text.size();
    for (int i = 0; i < 4; ++i) {
        unsigned char byte = 0;
        if (i > 0 && (at == end || *at++ != '.')) return std::nullopt;
        const auto [behind, error] = std::from_chars(at, end, byte);
        if (error != std::errc()) return std::nullopt;
        at = behind;
        address = address << 8 | byte;
    }
    return at == end ? std::optional(address) : std::nullopt;
}

}  // namespace

bool Reaches(const NetworkLink& link, const std::string& text) {
    const std::optional<std::uint32_t> address = AddressIn(text);
    return address && std::ranges::any_of(link.nets, [&](const NetworkLink::Net& net) {
               return net.mask != 0 && ((net.address ^ *address) & net.mask) == 0;
           });
}

}  // namespace zel::platform
