#include "tools/zelcam/view/Access.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "platform/Random.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

namespace {

// An address in numbers, as browsers write it: no name is one, so that no name can be made to lead here.
bool IsNumeric(std::string_view host) {
    if (host.starts_with('[')) {
        return host.size() > 2 && host.ends_with(']') &&
               host.find_first_not_of("0123456789abcdefABCDEF:.", 1) == host.size() - 1;
    }
    return std::count(host.begin(), host.end(), '.') == 3 &&
           host.find_first_not_of("0123456789.") == std::string_view::npos;
}

}  // namespace

bool EqualInConstantTime(std::string_view secret, std::string_view given) {
    unsigned difference = secret.size() == given.size() ? 0 : 1;
    for (std::size_t i = 0; i < secret.size(); ++i) {
        const char other = given.empty() ? '\0' : given[i % given.size()];
        difference |= static_cast<unsigned char>(secret[i] ^ other);
    }
    return difference == 0;
}

std::string NewToken() {
    constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    std::array<std::uint8_t, 16> random{};
    if (!zel::platform::RandomBytes(random)) {
        throw Failure("the viewer can't be protected", "the system gives no random numbers", "");
    }
    std::string token;
    unsigned bits = 0;
    int left = 0;
    for (const std::uint8_t byte : random) {
        bits = bits << 8 | byte;
        for (left += 8; left >= 6; left -= 6) token += kLetters[bits >> (left - 6) & 63];
    }
    if (left > 0) token += kLetters[bits << (6 - left) & 63];
    return token;
}

Access::Access(std::string token, const std::string& address, unsigned port)
    : m_Token(std::move(token)), m_Port(":" + std::to_string(port)) {
    const bool wide = address.find(':') != std::string::npos;
    const std::string written = wide ? "[" + address + "]" : address;
    m_AnyAddress = address == "0.0.0.0" || address == "::";
    const bool loopback = address == "::1" || address.starts_with("127.");
    m_OpenToOthers = !loopback;
    if (m_AnyAddress) {
        m_Names = {wide ? "[::1]" : "127.0.0.1", "localhost"};
    } else {
        m_Names = {written};
        if (loopback) m_Names.emplace_back("localhost");
    }
}

bool Access::IsOurs(std::string_view host) const {
    if (host.ends_with(m_Port)) {
        host.remove_suffix(m_Port.size());
    } else if (m_Port != ":80") {
        return false;
    }
    return std::find(m_Names.begin(), m_Names.end(), host) != m_Names.end() || (m_AnyAddress && IsNumeric(host));
}

Verdict Access::Judge(const RequestFacts& request) const {
    if (!IsOurs(request.host)) return Verdict::kWrongHost;
    const auto path = PathOf(request.target);
    if (!path) return Verdict::kUnknown;
    // Browsers send the origin with every WebSocket, and with requests of other pages.
    if (!request.origin) return request.upgrade ? Verdict::kForeign : Verdict::kGood;
    constexpr std::string_view kScheme = "http://";
    const bool own = request.origin->starts_with(kScheme) && request.origin->substr(kScheme.size()) == request.host;
    return own ? Verdict::kGood : Verdict::kForeign;
}

std::optional<std::string_view> Access::PathOf(std::string_view target) const {
    if (!target.starts_with('/')) return std::nullopt;
    target.remove_prefix(1);
    target = target.substr(0, target.find('?'));
    const std::size_t slash = target.find('/');
    if (!EqualInConstantTime(m_Token, target.substr(0, slash)) || slash == std::string_view::npos) return std::nullopt;
    return target.substr(slash + 1);
}

std::string Access::PageAddress() const { return "http://" + m_Names.front() + m_Port + "/" + m_Token + "/"; }

}  // namespace zelcam
