#include "helpers/update/Versions.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace rb {

namespace {

TEST(VersionsTest, AreOrderedAsPeopleNumberThem) {
    // Each comes before the next.
    const std::vector<std::string> rising{
        "0.0~rc1", "0.1-alpha", "0.1-beta2", "0.1-beta10", "0.1", "0.1.1", "0.2", "0.9", "0.10", "1a", "1.0", "1.0.0.1",
        "2",       "10",        "10.00000000000000000000001",      "10.99999999999999999999999"};
    for (std::size_t i = 0; i < rising.size(); ++i) {
        for (std::size_t k = 0; k < rising.size(); ++k) {
            EXPECT_EQ(compareVersions(rising[i], rising[k]), i <=> k) << rising[i] << " and " << rising[k];
        }
    }
}

TEST(VersionsTest, ZerosAndSignsBetweenDoNotCount) {
    EXPECT_TRUE(compareVersions("1.0", "1") == 0);
    EXPECT_TRUE(compareVersions("1.0.0", "1.0") == 0);
    EXPECT_TRUE(compareVersions("01.002", "1.2") == 0);
    EXPECT_TRUE(compareVersions("1-2+3", "1.2.3") == 0);
    EXPECT_TRUE(compareVersions("", "0") == 0);
}

TEST(VersionsTest, OnlyWhatCanBePartOfAFileNameIsAVersion) {
    for (const char* good : {"1", "0.1.0", "1.2~rc1+git-3"}) {
        EXPECT_TRUE(isVersion(good)) << good;
    }
    for (const char* bad : {"", ".1", "v1", "1/2", "1 2", "../1", "1\n", "1%2F", "１"}) {
        EXPECT_FALSE(isVersion(bad)) << bad;
    }
    EXPECT_FALSE(isVersion(std::string(65, '1')));
}

TEST(VersionsTest, PackagesAddAnEpochAndARevision) {
    EXPECT_EQ(upstreamVersion("0.2.0"), "0.2.0");
    EXPECT_EQ(upstreamVersion("0.2.0-1"), "0.2.0");
    EXPECT_EQ(upstreamVersion("1:0.2.0-rc1-3~deb12u1"), "0.2.0-rc1");
}

} // namespace

} // namespace rb
