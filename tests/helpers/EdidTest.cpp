#include "helpers/shared/Edid.h"

#include "tests/helpers/EdidBlock.h"

#include <gtest/gtest.h>

namespace rb {

namespace {

TEST(EdidTest, TellsWhoTheDisplayIs) {
    const auto edid = parseEdid(edidBlock("DELL U2723QE"));
    ASSERT_TRUE(edid);
    EXPECT_EQ(edid->vendor, 4268U);
    EXPECT_EQ(edid->vendorLetters, "DEL");
    EXPECT_EQ(edid->product, 0x41D9U);
    EXPECT_EQ(edid->serial, 77U);
    EXPECT_EQ(edid->name, "DELL U2723QE");
    EXPECT_EQ(parseEdid(edidBlock("Thirteen long"))->name, "Thirteen long") << "without a line feed";
    EXPECT_EQ(parseEdid(edidBlock("A\x01\xFFZ  "))->name, "AZ");
    EXPECT_EQ(parseEdid(edidBlock(""))->name, "");
}

TEST(EdidTest, RefusesWhatIsNone) {
    auto block = edidBlock("X");
    EXPECT_FALSE(parseEdid({}));
    EXPECT_FALSE(parseEdid(std::span(block).first(127)));
    block.resize(256, 0xAB); // extensions don't matter
    EXPECT_TRUE(parseEdid(block));
    block[60] = static_cast<std::uint8_t>(block[60] + 1);
    EXPECT_FALSE(parseEdid(block)) << "its sum is wrong";
    EXPECT_FALSE(parseEdid(std::vector<std::uint8_t>(128)));
}

} // namespace

} // namespace rb
