#include "tools/zelcam/view/Access.h"

#include <gtest/gtest.h>

#include "tools/zelcam/view/RateLimit.h"

namespace zelcam {

static const std::string kToken = "abcdefghijklmnopqrstuv";

TEST(Access, JudgesByHostTokenAndOrigin) {
    const std::string page = "/" + kToken + "/";
    const std::string socket = page + "socket";
    const char* const local = "127.0.0.1";
    const struct {
        const char* address;
        std::string target;
        const char *host, *origin;  // origin null: none
        bool upgrade;
        Verdict verdict;
    } cases[] = {
        {local, page, "127.0.0.1:8080", nullptr, false, Verdict::kGood},
        {local, page, "localhost:8080", "http://localhost:8080", false, Verdict::kGood},
        {local, page + "a.js?x=/y", "127.0.0.1:8080", nullptr, false, Verdict::kGood},
        {local, page, "127.0.0.1:8081", nullptr, false, Verdict::kWrongHost},
        {local, page, "127.0.0.1", nullptr, false, Verdict::kWrongHost},
        {local, page, "evil.example:8080", nullptr, false, Verdict::kWrongHost},
        {local, page, "127.0.0.1.evil.example:8080", nullptr, false, Verdict::kWrongHost},
        {local, page, "192.168.1.5:8080", nullptr, false, Verdict::kWrongHost},
        {local, page, "", nullptr, false, Verdict::kWrongHost},
        {local, "/", "127.0.0.1:8080", nullptr, false, Verdict::kUnknown},
        {local, "/" + kToken, "127.0.0.1:8080", nullptr, false, Verdict::kUnknown},
        {local, "/abcdefghijklmnopqrstuw/", "127.0.0.1:8080", nullptr, false, Verdict::kUnknown},
        {local, "/abcdefghijklmnopqrstuvv/", "127.0.0.1:8080", nullptr, false, Verdict::kUnknown},
        {local, "//", "127.0.0.1:8080", nullptr, false, Verdict::kUnknown},
        {local, "http://127.0.0.1:8080" + page, "127.0.0.1:8080", nullptr, false, Verdict::kUnknown},
        {local, page, "127.0.0.1:8080", "http://evil.example", false, Verdict::kForeign},
        {local, socket, "127.0.0.1:8080", "http://127.0.0.1:8080", true, Verdict::kGood},
        {local, socket, "127.0.0.1:8080", nullptr, true, Verdict::kForeign},
        {local, socket, "127.0.0.1:8080", "", true, Verdict::kForeign},
        {local, socket, "127.0.0.1:8080", "null", true, Verdict::kForeign},
        {local, socket, "127.0.0.1:8080", "https://127.0.0.1:8080", true, Verdict::kForeign},
        {local, socket, "127.0.0.1:8080", "http://localhost:8080", true, Verdict::kForeign},
        {local, socket, "127.0.0.1:8080", "http://127.0.0.1:8080.evil", true, Verdict::kForeign},
        {"::1", page, "[::1]:8080", nullptr, false, Verdict::kGood},
        {"10.0.0.7", page, "10.0.0.7:8080", nullptr, false, Verdict::kGood},
        {"10.0.0.7", page, "localhost:8080", nullptr, false, Verdict::kWrongHost},
        // Every address of this computer, but no name: those can be made to lead here.
        {"0.0.0.0", page, "10.0.0.7:8080", nullptr, false, Verdict::kGood},
        {"::", page, "[fe80::1]:8080", nullptr, false, Verdict::kGood},
        {"0.0.0.0", page, "1.2.3.evil:8080", nullptr, false, Verdict::kWrongHost},
        {"::", page, "[evil]:8080", nullptr, false, Verdict::kWrongHost},
    };
    for (const auto& row : cases) {
        const Access access(kToken, row.address, 8080);
        RequestFacts facts{row.target, row.host, std::nullopt, row.upgrade};
        if (row.origin) facts.origin = row.origin;
        EXPECT_EQ(access.Judge(facts), row.verdict) << row.target << " " << row.host << " row " << &row - cases;
    }
    const Access access(kToken, local, 8080);
    EXPECT_EQ(std::tuple(access.PathOf(page + "a/b.js?c"), access.PathOf(page)), std::tuple("a/b.js", ""));
    EXPECT_EQ(access.PageAddress(), "http://127.0.0.1:8080" + page);
    EXPECT_TRUE(!access.IsOpenToOthers() && Access(kToken, "0.0.0.0", 8080).IsOpenToOthers());
}

TEST(Access, TokensAreLongAndNew) {
    EXPECT_EQ(NewToken().size(), 22u);
    EXPECT_NE(NewToken(), NewToken());
}

TEST(RateLimit, AllowsABurstAndThenSoManyASecond) {
    RateLimit limit(10.0, 3.0);
    const RateLimit::Clock::time_point start = RateLimit::Clock::now();
    for (const auto& [ms, allowed] :
         {std::pair(0, true), {0, true}, {0, true}, {0, false}, {50, false}, {150, true}, {151, false}})
        EXPECT_EQ(limit.Allows(start + std::chrono::milliseconds(ms)), allowed) << ms;
}

}  // namespace zelcam
