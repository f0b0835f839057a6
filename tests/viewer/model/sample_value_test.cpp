#include "viewer/model/sample_value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

ImageDescription description_of(int64_t bits, const char *type) {
    ImageDescription description;
    description.sample_bits = bits;
    description.sample_type = type;
    description.is_signed = std::string(type).find("UNSIGNED") == std::string::npos;
    return description;
}

template <typename T>
std::vector<uint8_t> mapped(const std::vector<T> &values, const char *type, RealRange range) {
    std::vector<uint8_t> display(values.size());
    map_clamped(values.data(), description_of(8 * sizeof(T), type), range, std::ssize(values), display.data());
    return display;
}

TEST(SampleValue, IsTakenForWhatTheLabelSays) {
    const uint64_t bits = 0xFFFFFFFFFFFFFFFE;
    const auto text = [&](int64_t size, const char *type) {
        return sample_text(&bits, 0, description_of(size, type), true);
    };
    EXPECT_EQ(text(8, "UNSIGNED_INTEGER"), "254 (0xFE)");
    EXPECT_EQ(text(8, "LSB_INTEGER"), "-2 (0xFE)");
    EXPECT_EQ(text(16, "MSB_UNSIGNED_INTEGER"), "65534 (0xFFFE)");
    EXPECT_EQ(text(32, "MSB_INTEGER"), "-2 (0xFFFFFFFE)");
    EXPECT_EQ(text(64, "MSB_UNSIGNED_INTEGER"), "18446744073709551614 (0xFFFFFFFFFFFFFFFE)");
    EXPECT_EQ(text(32, "PC_REAL"), "NaN");
    EXPECT_EQ(text(64, "VAX_REAL"), "NaN");
}

TEST(SampleRange, PassesOverWhatIsNoNumber) {
    const float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> values = {NAN, 3, -infinity, -7.5F, infinity};
    const auto found = find_sample_range(values.data(), std::ssize(values), description_of(32, "IEEE_REAL"));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->minimum, -7.5);
    EXPECT_EQ(found->maximum, 3);
    EXPECT_FALSE(find_sample_range(values.data(), 1, description_of(32, "IEEE_REAL")));
    const std::vector<uint16_t> bright(300, 65535);  // no starting value bends the range
    EXPECT_EQ(find_sample_range(bright.data(), 300, description_of(16, "UNSIGNED_INTEGER"))->minimum, 65535);
}

TEST(ClampedStretch, ReachesBothEndsAndNeverWraps) {
    std::vector<uint8_t> all(256);
    for (size_t i = 0; i < all.size(); ++i)
        all[i] = static_cast<uint8_t>(i);
    EXPECT_EQ(mapped(all, "UNSIGNED_INTEGER", {0, 255}), all);
    EXPECT_EQ(mapped<uint8_t>({9, 10, 15, 20, 21}, "UNSIGNED_INTEGER", {10, 20}),
              (std::vector<uint8_t>{0, 0, 128, 255, 255}));
    EXPECT_EQ(mapped<int8_t>({-128, 0, 127}, "INTEGER", {-128, 127}), (std::vector<uint8_t>{0, 128, 255}));
    EXPECT_EQ(mapped<int64_t>({INT64_MIN, 0, INT64_MAX}, "MSB_INTEGER", {-2, 2}), (std::vector<uint8_t>{0, 128, 255}));
    const double most = std::numeric_limits<double>::max();
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(mapped<double>({-most, 0, most, NAN, infinity, -infinity}, "IEEE_REAL", {-most, most}),
              (std::vector<uint8_t>{0, 128, 255, 0, 255, 0}));
    EXPECT_EQ(mapped<double>({0, 1}, "IEEE_REAL", {0, 5e-324}), (std::vector<uint8_t>{0, 255}));
}

}  // namespace
