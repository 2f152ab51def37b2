#include "desktops/linux/Log.h"

#include <gtest/gtest.h>

namespace rb {

namespace {

TEST(Log, OneLineWhateverIsInIt) {
    EXPECT_EQ(logLine("cannot watch /home/我/图片"), "Rook Bay: cannot watch /home/我/图片\n");
    EXPECT_EQ(logLine("a\nRook Bay: forged\r\t"), "Rook Bay: a\\x0aRook Bay: forged\\x0d\\x09\n");
    EXPECT_EQ(logLine("\x1b[2J\x7f"), "Rook Bay: \\x1b[2J\\x7f\n") << "nothing that drives a terminal";
    EXPECT_EQ(logLine("\xC2\x9B"
                      "2J"),
              "Rook Bay: \\xc2\\x9b2J\n")
        << "the eight-bit form of it";
    EXPECT_EQ(logLine("caf\xE9 \xED\xA0\x80"), "Rook Bay: caf\\xe9 \\xed\\xa0\\x80\n");
    EXPECT_EQ(logLine(std::string("a\0b", 3)), "Rook Bay: a\\x00b\n");
}

} // namespace

} // namespace rb
