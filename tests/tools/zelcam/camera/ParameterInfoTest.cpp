#include "tools/zelcam/camera/ParameterInfo.h"

#include <gtest/gtest.h>

#include <set>

#include "include/ZelParameters.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

TEST(ParameterInfo, HasEveryIdOnceAndInOrder) {
    unsigned id = 0;
    std::set<std::string> names;
    for (const ParameterInfo& info : AllParameters()) {
        EXPECT_EQ(info.id, id < ZEL_MAX_PARAMS ? id : ZEL_PARAM_MODEL_VALUE_1 + (id - ZEL_MAX_PARAMS)) << info.name;
        EXPECT_TRUE(names.insert(info.name).second) << info.name << " stands there twice";
        EXPECT_STRNE(info.description, "") << info.name;
        ++id;
    }
    EXPECT_EQ(id, ZEL_MAX_PARAMS + 6u);
}

TEST(ParameterInfo, IsFoundInEverySpellingAndOthersAreRefused) {
    for (const char* wanted : {"EXPOSURE_TIME_US", "exposure_time_us", "Exposure-Time-us", "ZEL_PARAM_EXPOSURE_TIME_US",
                               "zel_param_exposure_time_us", "58", " 58 "}) {
        EXPECT_EQ(FindParameter(wanted).id, unsigned{ZEL_PARAM_EXPOSURE_TIME_US}) << wanted;
    }
    for (const char* wanted : {"", "73", "-1", "5x", "99999999999", "ZEL_PARAM_"}) {
        EXPECT_THROW(FindParameter(wanted), Failure) << wanted;
    }
}

}  // namespace zelcam
