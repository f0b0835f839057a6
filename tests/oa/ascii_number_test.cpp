#include "oa/ascii_number.h"

#include "base/text.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <random>
#include <string>

namespace {

double real_of(const std::string &text) {
    return OalReadAsciiReal(reinterpret_cast<const uint8_t *>(text.data()), static_cast<int64_t>(text.size()));
}
int64_t integer_of(const std::string &text) {
    return OalReadAsciiInteger(reinterpret_cast<const uint8_t *>(text.data()), static_cast<int64_t>(text.size()));
}

TEST(AsciiNumber, ReadsRealsAsTheStandardLibraryDoes) {
    constexpr const char *known[] = {
        "",     " ",         "1.5",    "  -2.5  ",         "+.5",           "5.",       ".",      "-",     "+-3",
        "1e5",  "1e",        "1e+",    "1E-400",           "-1e400",        "4.9e-324", "1e-330", "0x1p3", "-0x.8",
        "inf",  "-INFINITY", "nan",    "1.5abc",           "1,5",           "-0",       "e5",     ".e5",   "-abc",
        "1e22", "1e23",      "123e22", "9007199254740993", "1e99999999999", "\t\n7"};
    std::vector<std::string> texts(std::begin(known), std::end(known));
    for (const std::string &text :
         {std::string("9007199254740992e22"), std::string("0.1000000000000000055511151231257827021181583404541015625"),
          std::string("179769313486231580793e289"), std::string(400, '0') + "12", "0." + std::string(400, '0') + "12",
          std::string("1\0002", 3)})
        texts.push_back(text);
    std::mt19937_64 random(3);
    for (int i = 0; i < 20000; ++i) {
        const auto value = std::bit_cast<double>(random());
        texts.push_back(util_format(i % 3 ? "%.*e" : "%.*g", static_cast<int>(random() % 22), value));
        texts.push_back(
            util_format("%.*f", static_cast<int>(random() % 12), static_cast<double>(random() % 100000) / 7));
    }
    for (const std::string &text : texts) {
        const double expected = strtod(text.c_str(), nullptr);
        if (expected != expected)
            EXPECT_NE(real_of(text), real_of(text)) << text;
        else
            EXPECT_EQ(std::bit_cast<uint64_t>(real_of(text)), std::bit_cast<uint64_t>(expected)) << text;
        // The other letter of an exponent says the same.
        if (const size_t letter = text.find('e'); letter != std::string::npos && isdigit(text[0])) {
            std::string other = text;
            other[letter] = letter % 2 ? 'D' : 'd';
            EXPECT_EQ(real_of(other), expected) << other;
        }
    }
}

TEST(AsciiNumber, ReadsIntegersAsTheStandardLibraryDoes) {
    for (const std::string text :
         {"", "  12 ", "-7", "+9x", "3.9", "- 1", "--1", "9223372036854775807", "9223372036854775808",
          "-9223372036854775808", "-9223372036854775809", "99999999999999999999999", "\v0x10", "007"})
        EXPECT_EQ(integer_of(text), strtol(text.c_str(), nullptr, 10)) << text;
}

}  // namespace
