#pragma once

#include "platform/UserDefaults.h"
#include "tests/contract/DesktopUnderTest.h"

#include <limits>

namespace rb {

class UserDefaultsContract : public ContractTest {
protected:
    UserDefaults& defaults() { return desktop().userDefaults; }
};

TEST_P(UserDefaultsContract, EveryKindOfValueComesBackAsItWas) {
    const PropertyDictionary values{
        {"bool", true},
        {"largest", std::numeric_limits<std::int64_t>::max()},
        {"smallest", std::numeric_limits<std::int64_t>::min()},
        {"whole", 3.0}, // stays a floating-point number
        {"fraction", 0.1},
        {"text", "引号\" 换行\n⌃⌥L"},
        {"data", PropertyData{{0, 255, 10, 128}}},
        {"array", PropertyArray{"a", 1, 2.5, false, PropertyArray{}, PropertyDictionary{}}},
        {"dictionary", PropertyDictionary{{"", "empty key"}, {"inner", PropertyDictionary{{"deep", true}}}}},
    };
    for (const auto& [key, value] : values) {
        defaults().setObject("contract." + key, value);
    }
    for (const auto& [key, value] : values) {
        EXPECT_EQ(defaults().objectForKey("contract." + key), value) << key;
    }
}

TEST_P(UserDefaultsContract, RegisteredValuesAnswerUntilOneIsStored) {
    defaults().registerDefaults({{"contract.a", true}, {"contract.b", 10}});
    EXPECT_TRUE(defaults().boolForKey("contract.a"));
    EXPECT_EQ(defaults().integerForKey("contract.b"), 10);
    defaults().setObject("contract.a", false);
    EXPECT_FALSE(defaults().boolForKey("contract.a"));
    defaults().registerDefaults({{"contract.a", true}});
    EXPECT_FALSE(defaults().boolForKey("contract.a")) << "registering doesn't touch what is stored";
    defaults().removeObject("contract.a");
    EXPECT_TRUE(defaults().boolForKey("contract.a"));
    defaults().removeObject("contract.never set");
    EXPECT_EQ(defaults().objectForKey("contract.never set"), std::nullopt);
}

TEST_P(UserDefaultsContract, ReadingsConvertBetweenKinds) {
    struct Case {
        PropertyValue stored;
        bool asBool;
        std::int64_t asInteger;
        std::optional<std::string> asString;
    };
    const std::vector<Case> cases{
        {true, true, 1, std::nullopt},
        {false, false, 0, std::nullopt},
        {42, true, 42, "42"},
        {-1, true, -1, "-1"},
        {-2.9, true, -2, std::nullopt},
        {0.5, true, 0, std::nullopt},
        {1e300, true, 9'200'000'000'000'000'000, std::nullopt},
        {"YES", true, 0, "YES"},
        {"true", true, 0, "true"},
        {"NO", false, 0, "NO"},
        {" 105 keys", true, 105, " 105 keys"},
        {"+7", true, 7, "+7"},
        {"", false, 0, ""},
        {"nothing", false, 0, "nothing"},
        {PropertyArray{1}, false, 0, std::nullopt},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(i);
        defaults().setObject("contract.converted", cases[i].stored);
        EXPECT_EQ(defaults().boolForKey("contract.converted"), cases[i].asBool);
        EXPECT_EQ(defaults().integerForKey("contract.converted"), cases[i].asInteger);
        if (cases[i].asString) {
            EXPECT_EQ(defaults().stringForKey("contract.converted"), cases[i].asString);
        }
    }
    defaults().setObject("contract.paths", PropertyArray{"/a", "/b"});
    EXPECT_EQ(defaults().stringArrayForKey("contract.paths"), (std::vector<std::string>{"/a", "/b"}));
    defaults().setObject("contract.paths", PropertyArray{"/a", 1});
    EXPECT_EQ(defaults().stringArrayForKey("contract.paths"), std::nullopt);
}

} // namespace rb
