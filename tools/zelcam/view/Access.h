// Who may look: which requests the viewer's server answers. Pure rules; everything that is passed in may come from
// anybody.
#ifndef ZELCAM_ACCESS_H
#define ZELCAM_ACCESS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zelcam {

// Whether two texts are equal, in a time that tells nothing about where they differ.
bool EqualInConstantTime(std::string_view secret, std::string_view given);

// 128 random bits as 22 letters of base64url. Throws Failure when the system has none.
std::string NewToken();

// What the headers of a request say; one that is missing, or there twice, is empty.
struct RequestFacts {
    std::string_view target;
    std::string_view host;
    std::optional<std::string_view> origin;
    bool upgrade = false;  // to a WebSocket
};

enum class Verdict {
    kGood,
    kWrongHost,  // 400: the address in the browser is a name that somebody else made lead here
    kForeign,    // 403: a page of somebody else asks
    kUnknown,    // 404: the token or the file is none
};

class Access {
  public:
    // address: where the server listens, "127.0.0.1", "::1", "0.0.0.0", ...
    Access(std::string token, const std::string& address, unsigned port);

    Verdict Judge(const RequestFacts& request) const;
    // What stands behind "/TOKEN/" in a target, without a query: "" is the page. Nothing when the token is not there.
    std::optional<std::string_view> PathOf(std::string_view target) const;

    // The page's address for a browser on this computer.
    std::string PageAddress() const;
    // Whether other computers can reach the server.
    bool IsOpenToOthers() const { return m_OpenToOthers; }

  private:
    bool IsOurs(std::string_view host) const;

    std::string m_Token;
    std::string m_Port;                // ":8080"
    std::vector<std::string> m_Names;  // without the port; the first one is for browsers here
    bool m_AnyAddress = false;         // every address in numbers leads here
    bool m_OpenToOthers = false;
};

}  // namespace zelcam

#endif
