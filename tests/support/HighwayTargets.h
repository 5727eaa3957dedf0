// Tests run once per instruction set compiled in and supported here (SSSE3 to AVX-512 and
// the portable fallbacks), each its own test so that the sets run side by side under ctest.
//
//   class MyOnTarget : public talonvireo::testing::OnEachHighwayTarget {};
//   TEST_P(MyOnTarget, ...) { ... }
//   TALONVIREO_ON_EVERY_HIGHWAY_TARGET(MyOnTarget);
#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <string>

#include <hwy/targets.h>

namespace talonvireo {
namespace testing {

// Makes the parameter's instruction set the one dispatched to while the test runs.
class OnEachHighwayTarget : public ::testing::TestWithParam<std::int64_t> {
protected:
    void SetUp() override { hwy::SetSupportedTargetsForTest(GetParam()); }
    void TearDown() override { hwy::SetSupportedTargetsForTest(0); }
};

// The instruction set's name as a test name: letters and digits, the rest '_'.
inline std::string highwayTargetName(const ::testing::TestParamInfo<std::int64_t>& info) {
    std::string name = hwy::TargetName(info.param);
    for (char& c : name) {
        c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    }
    return name;
}

}  // namespace testing
}  // namespace talonvireo

#define TALONVIREO_ON_EVERY_HIGHWAY_TARGET(Suite)                                      \
    INSTANTIATE_TEST_SUITE_P(EveryTarget, Suite,                                       \
                             ::testing::ValuesIn(hwy::SupportedAndGeneratedTargets()), \
                             talonvireo::testing::highwayTargetName)
