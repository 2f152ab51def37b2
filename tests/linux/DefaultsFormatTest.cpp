#include "desktops/linux/DefaultsFormat.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>

namespace rb {

namespace {

using testing::HasSubstr;

PropertyValue nested(int depth) {
    PropertyValue value = 1;
    for (int level = 0; level < depth; ++level) {
        value = PropertyArray{value};
    }
    return value;
}

TEST(DefaultsFormat, EveryKindOfValueComesBackAsItWas) {
    const PropertyDictionary values = {
        {"bool", true},
        {"big", std::numeric_limits<std::int64_t>::max()},
        {"small", std::numeric_limits<std::int64_t>::min()},
        {"real", 0.1},
        {"wholeReal", 3.0},
        {"negativeZero", -0.0},
        {"tiny", std::numeric_limits<double>::denorm_min()},
        {"huge", std::numeric_limits<double>::max()},
        {"infinite", -std::numeric_limits<double>::infinity()},
        {"text", "晾衣绳 \"quoted\" \\ / \b\f\n\r\t\x01\x7f \xF0\x9F\x91\x95"},
        {"nulInside", std::string("a\0b", 3)},
        {"notUtf8", "/home/me/caf\xE9"},
        {"data", PropertyData{{0, 255, 1, 2}}},
        {"noData", PropertyData{}},
        {"array", PropertyArray{1, "two", PropertyArray{}, PropertyDictionary{}}},
        {"", PropertyDictionary{{"inner", PropertyDictionary{{"key", 1.5}}}}},
        // A program's own dictionaries that look like ours.
        {"looksLikeData", PropertyDictionary{{"$data", "AAAA"}}},
        {"looksLikeReal", PropertyDictionary{{"$real", PropertyArray{}}}},
        {"dollars", PropertyDictionary{{"$$data", 1}, {"$", 2}, {"$data", 3}}},
        {"$data", "at the top"},
    };
    const auto text = writeDefaults(values);
    ASSERT_TRUE(text);
    const ParsedDefaults parsed = parseDefaults(*text);
    ASSERT_TRUE(parsed.values) << parsed.error << "\n" << *text;
    EXPECT_EQ(*parsed.values, values) << *text;
    EXPECT_TRUE(std::signbit(*parsed.values->at("negativeZero").get<double>()));
    const auto nan = writeDefaults({{"nan", std::nan("")}});
    EXPECT_TRUE(std::isnan(*parseDefaults(nan.value_or("")).values->at("nan").get<double>()));
}

TEST(DefaultsFormat, PeopleCanReadAndWriteIt) {
    EXPECT_EQ(writeDefaults({{"HotKeyCode", 105}, {"Paths", PropertyArray{"/a", "/b"}}}),
              "{\n  \"HotKeyCode\": 105,\n  \"Paths\": [\n    \"/a\",\n    \"/b\"\n  ]\n}\n");
    EXPECT_EQ(writeDefaults({}), "{}\n");
    const auto byHand = parseDefaults("\t{ \"a\" : [ true ,1e2, -0.5E-1 ],\r\n\"\\u6654\\ud83d\\udc55\\/\":{} }\n\n");
    ASSERT_TRUE(byHand.values) << byHand.error;
    EXPECT_EQ(*byHand.values, (PropertyDictionary{{"a", PropertyArray{true, 100.0, -0.05}},
                                                  {"晔\xF0\x9F\x91\x95/", PropertyDictionary{}}}));
}

TEST(DefaultsFormat, TheSessionsLocaleHasNoSay) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    const char* comma = std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    const auto text = writeDefaults({{"real", 1.5}});
    const auto parsed = parseDefaults(text.value_or(""));
    std::setlocale(LC_NUMERIC, before.c_str());
    EXPECT_THAT(text.value_or(""), HasSubstr("1.5")) << (comma != nullptr ? comma : "no German locale here");
    EXPECT_EQ(parsed.values, (PropertyDictionary{{"real", 1.5}}));
}

TEST(DefaultsFormat, WhatIsNotOursIsRefusedWithItsPlace) {
    const std::pair<std::string, const char*> cases[] = {
        {"", "end of input"},
        {"[]", "object"},
        {"{", "end of input"},
        {"{}x", "invalid literal"},
        {"{\"a\":1,}", "string literal"},
        {"{\"a\":1,\"a\":2}", "twice"},
        {"{\"$a\":1,\"$$a\":2}", "twice"},
        {"{\"a\":{\"$b\":1,\"$$b\":2}}", "twice"},
        {"{\"a\":null}", "null"},
        {"{\"a\" 1}", "':'"},
        {"{\"a\":[1 2]}", "']'"},
        {"{\"a\":01}", "'}'"},
        {"{\"a\":+1}", "invalid literal"},
        {"{\"a\":.5}", "invalid literal"},
        {"{\"a\":1.}", "digit"},
        {"{\"a\":1e}", "digit"},
        {"{\"a\":-}", "digit"},
        {"{\"a\":9223372036854775808}", "range"},
        {"{\"a\":1e999}", "overflow"},
        {"{\"a\":NaN}", "invalid literal"},
        {"{\"a\":truely}", "invalid literal"},
        {"{\"a\":\"\n\"}", "control"},
        {std::string("{\"a\":\"\0\"}", 9), "NUL"},
        {std::string("{\"a\":1}\0", 8), "NUL"},
        {"{\"a\":\"\xC3\"}", "UTF-8"},
        {"{\"a\":\"\xED\xA0\x80\"}", "UTF-8"},
        {"{\"a\":\"\\ud800\"}", "surrogate"},
        {"{\"a\":\"\\udc00\"}", "surrogate"},
        {"{\"a\":\"\\u12g4\"}", "4 hex digits"},
        {"{\"a\":\"\\x\"}", "backslash"},
        {"{\"a\":\"\\", "backslash"},
        {"{\"a\":\"b", "quote"},
        {"{\"a\":{\"$data\":\"A\"}}", "$data"},
        {"{\"a\":{\"$data\":\"AB==\"}}", "$data"}, // unused bits set
        {"{\"a\":{\"$data\":\"====\"}}", "$data"},
        {"{\"a\":{\"$data\":1}}", "$data"},
        {"{\"a\":{\"$real\":\"1\"}}", "$real"},
        {"{\"a\":// no comments\n1}", "invalid literal"},
    };
    for (const auto& [text, reason] : cases) {
        const ParsedDefaults parsed = parseDefaults(text);
        EXPECT_FALSE(parsed.values) << text;
        EXPECT_THAT(parsed.error, HasSubstr(reason)) << text;
    }
    EXPECT_THAT(parseDefaults("{\n\"a\": 1,\n\"b\": ?\n}").error, HasSubstr("line 3"));
}

TEST(DefaultsFormat, DepthAndLengthHaveTheSameLimitsBothWays) {
    for (const PropertyValue& leaf : {nested(0), PropertyValue(PropertyData{{1}})}) {
        PropertyValue value = leaf;
        int depth = leaf.get<PropertyData>() != nullptr ? 2 : 1;
        for (; depth < deepestDefaults; ++depth) {
            value = PropertyArray{value};
        }
        const auto deepest = writeDefaults({{"a", value}});
        ASSERT_TRUE(deepest);
        EXPECT_TRUE(parseDefaults(*deepest).values);
        EXPECT_FALSE(writeDefaults({{"a", PropertyArray{value}}}));
    }
    const std::string bomb(100'000, '[');
    EXPECT_THAT(parseDefaults("{\"a\":" + bomb).error, HasSubstr("deep"));
    EXPECT_THAT(parseDefaults("{\"a\":\"" + std::string(longestDefaults, 'x') + "\"}").error, HasSubstr("longer"));
    EXPECT_FALSE(writeDefaults({{"a", std::string(longestDefaults, 'x')}}));
    EXPECT_FALSE(writeDefaults({{"a", PropertyDictionary{{"\xFF", 1}}}}));
}

} // namespace

} // namespace rb
