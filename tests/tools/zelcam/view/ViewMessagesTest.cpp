#include "tools/zelcam/view/ViewMessages.h"

#include <gtest/gtest.h>

#include "tools/zelcam/text/Failure.h"

namespace zelcam {

// What a page says may come from anybody.
TEST(ViewMessages, RefuseWhatMakesNoSense) {
    for (const char* text :
         {"", "{", "[]", "7", "null", "{}", "{\"type\":7}", "{\"type\":null}", "\xff\xfe", "{\"type\":\"view\"}x"}) {
        EXPECT_THROW(ParseMessage(text), Failure) << text;
    }
    EXPECT_THROW(ParseMessage(std::string(16000, '[')), Failure);
    const char* const views[] = {
        R"({"type":"view"})",
        R"({"type":"view","view":1,"x":0,"y":0,"width":1,"height":1,"columns":1})",
        R"({"type":"view","view":1,"x":-1,"y":0,"width":1,"height":1,"columns":1,"rows":1})",
        R"({"type":"view","view":1,"x":"0","y":0,"width":1,"height":1,"columns":1,"rows":1})",
        R"({"type":"view","view":1,"x":0,"y":0,"width":1e300,"height":1,"columns":1,"rows":1})",
        R"({"type":"view","view":4294967296,"x":0,"y":0,"width":1,"height":1,"columns":1,"rows":1})",
        R"({"type":"view","view":1,"x":0,"y":0,"width":1,"height":1,"columns":0,"rows":1})",
        R"({"type":"view","view":1,"x":0,"y":0,"width":1,"height":[],"columns":1,"rows":1})",
    };
    for (const char* text : views) EXPECT_THROW(ViewIn(ParseMessage(text)), Failure) << text;
    for (const char* text : {R"({"type":"probe","pointer":7})", R"({"type":"probe","line":{"x0":1}})",
                             R"({"type":"probe","region":{"x":0,"y":0,"width":1,"height":null}})"}) {
        EXPECT_THROW(ProbeIn(ParseMessage(text)), Failure) << text;
    }
    const Json odd = ParseMessage(R"({"type":"x","flag":1,"text":7,"zero":"a\u0000b","long":"abcd"})");
    EXPECT_THROW(FlagIn(odd, "flag"), Failure);
    EXPECT_THROW(TextIn(odd, "text", 9), Failure);
    EXPECT_THROW(TextIn(odd, "zero", 9), Failure);
    EXPECT_THROW(TextIn(odd, "long", 3), Failure);
}

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
