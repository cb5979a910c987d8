#include "tools/zelcam/view/ViewMessages.h"

#include <gtest/gtest.h>

namespace zelcam {

TEST(ViewMessages, MeasureWithinTheFrameAlone) {
    const std::vector<std::uint16_t> values{1, 2, 3, 4, 5, 6};
    const Samples frame{values, 3, 2, 1, 12};
    const auto probed = [&](const char* text) {
        Json message = Json::object();
        AddProbe(message, ProbeIn(ParseMessage(text)), frame);
        return message;
    };
    EXPECT_EQ(probed(R"({"type":"probe","pointer":{"x":2.7,"y":1}})")["pointer"]["value"], 6);
    EXPECT_EQ(probed(R"({"type":"probe","line":{"x0":0,"y0":0,"x1":2,"y1":0}})")["line"]["values"], Json({1, 2, 3}));
    const Json region = probed(R"({"type":"probe","region":{"x":1,"y":0,"width":9,"height":9}})")["region"];
    EXPECT_EQ(region["width"], 2);
    EXPECT_EQ(region["mean"], 4.0);
    EXPECT_TRUE(probed(R"({"type":"probe","pointer":{"x":3,"y":0},"line":{"x0":0,"y0":0,"x1":0,"y1":2},
                           "region":{"x":0,"y":2,"width":1,"height":1}})")
                    .empty());
    EXPECT_TRUE(probed(R"({"type":"probe","region":{"x":0,"y":0,"width":0,"height":1}})").empty());
}

}  // namespace zelcam
