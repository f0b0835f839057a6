#include "viewer/model/image_description.h"

#include "support/product.h"

namespace {

// Describes the only object of a label with these statements.
std::string describe(const std::string &statements, ImageDescription *description) {
    const OdlTree root = parse_label("OBJECT = IMAGE\n" + statements + "\nEND_OBJECT = IMAGE");
    return describe_image(root->first_child, description);
}

TEST(DescribeImage, TakesEveryKeyword) {
    const SilentReports reports;
    ImageDescription description;
    EXPECT_EQ(describe("LINES = 30\nLINE_SAMPLES = 20\nSAMPLE_BITS = 16\nSAMPLE_TYPE = \"MSB_UNSIGNED_INTEGER\"\n"
                       "MINIMUM = 5\nMAXIMUM = 1.5\nBANDS = 3\nLINE_DISPLAY_DIRECTION = \"UP\"\n"
                       "SAMPLE_DISPLAY_DIRECTION = LEFT",
                       &description),
              "");
    EXPECT_EQ(description.line_samples, 20);
    EXPECT_EQ(description.sample_type, "MSB_UNSIGNED_INTEGER");
    EXPECT_FALSE(description.is_signed);
    EXPECT_EQ(description.minimum, 5);
    EXPECT_EQ(description.maximum, -1);  // a real number is no integer
    EXPECT_EQ(description.line_display_direction + description.sample_display_direction, "UPLEFT");
    EXPECT_TRUE(reports.nothing_written());

    ImageDescription plain;
    EXPECT_EQ(describe("LINES = 1\nLINE_SAMPLES = 1\nSAMPLE_BITS = 8\nSAMPLE_TYPE = LSB_INTEGER", &plain), "");
    EXPECT_TRUE(plain.is_signed);
    EXPECT_EQ(plain.bands, 1);
    EXPECT_EQ(plain.line_display_direction + plain.sample_display_direction, "DOWNRIGHT");
}

TEST(DescribeImage, TheFirstFailureIsTold) {
    const SilentReports reports;
    const std::pair<const char *, const char *> cases[] = {
        {"SAMPLE_BITS = 12", "Open Image - get LINE_SAMPLES failed"},
        {"LINE_SAMPLES = 2\nLINES = \"2\"", "Open Image - get LINES failed"},
        {"LINE_SAMPLES = 2\nLINES = -2", "Open Image - get LINES failed\nLINES = -2 is not a size."},
        {"LINE_SAMPLES = 2\nLINES = 2", "Open Image - get SAMPLE_BITS failed"},
        {"LINE_SAMPLES = 2\nLINES = 2\nSAMPLE_BITS = 12", "Open Image - get SAMPLE_TYPE failed"},
        {"LINE_SAMPLES = 2\nLINES = 2\nSAMPLE_BITS = 12\nSAMPLE_TYPE = X",
         "Open Image - SAMPLE_BITS not equal to 8, 16, 32 or 64"},
    };
    for (const auto &[statements, error] : cases) {
        ImageDescription description;
        EXPECT_EQ(describe(statements, &description), error) << statements;
    }
}

TEST(Blocks, LargeImagesAreDivided) {
    const std::tuple<int64_t, int64_t, bool, bool> cases[] = {
        {2000, 2000, false, false}, {2001, 2000, true, false}, {3000, 1000, false, false},
        {3001, 1000, true, false},  {1500, 2501, false, true}, {5000, 5000, true, true},
        {3999, 1, false, false},    {1, 4000, false, true},    {INT64_MAX, INT64_MAX, true, true},
    };
    for (const auto &[lines, line_samples, lines_large, samples_large] : cases) {
        ImageDescription description;
        ASSERT_EQ(describe("LINES = " + std::to_string(lines) + "\nLINE_SAMPLES = " + std::to_string(line_samples) +
                               "\nSAMPLE_BITS = 8\nSAMPLE_TYPE = UNSIGNED_INTEGER",
                           &description),
                  "");
        EXPECT_EQ(description.lines_large, lines_large) << lines << " x " << line_samples;
        EXPECT_EQ(description.samples_large, samples_large) << lines << " x " << line_samples;
        initialize_display_image_ranges(&description, lines_large, samples_large);
        EXPECT_EQ(description.block,
                  (SampleBlock{1, lines_large ? 2000 : lines, 1, samples_large ? 2000 : line_samples}));
    }
}

TEST(Blocks, StepsStayInTheImage) {
    ImageDescription description;
    description.lines = 5000;
    description.line_samples = 4500;
    struct {
        SampleBlock from;
        BlockStep step;
        SampleBlock to;  // as `from` when there is no step
    } const cases[] = {
        {{1, 2000, 1, 2000}, BlockStep::Down, {2001, 4000, 1, 2000}},
        {{4001, 5000, 1, 2000}, BlockStep::Down, {4001, 5000, 1, 2000}},
        {{1500, 3499, 1, 2000}, BlockStep::Up, {1, 1499, 1, 2000}},
        {{1, 2000, 1, 2000}, BlockStep::Up, {1, 2000, 1, 2000}},
        {{5, 9, 2501, 4500}, BlockStep::Right, {5, 9, 2501, 4500}},
        {{5, 9, 1, 2500}, BlockStep::Right, {5, 9, 2501, 4500}},
        {{5, 9, 4001, 4500}, BlockStep::Left, {5, 9, 2001, 4000}},
    };
    for (const auto &c : cases) {
        description.block = c.from;
        SampleBlock block = c.from;
        EXPECT_EQ(auto_get_image_ranges(description, c.step, &block), c.from != c.to);
        EXPECT_EQ(block, c.to);
    }
}

TEST(Blocks, FieldsAreWholePositiveNumbers) {
    int64_t value = 0;
    EXPECT_EQ(convert_to_long(" 4000 ", "Start Line", &value), "");
    EXPECT_EQ(value, 4000);
    for (const char *text : {"", "0", "-5", "12a", "+", "1 2"})
        EXPECT_EQ(convert_to_long(text, "Stop Line", &value),
                  "Invalid value entered in the Stop Line field. Value must be a positive integer greater than 0")
            << text;
    EXPECT_EQ(convert_to_long("99999999999999999999", "Start Line Sample", &value),
              "Overflow has occurred while converting the value in the Start Line Sample field");
    EXPECT_EQ(value, 4000);
}

TEST(Blocks, TheFirstFaultOfAChosenRangeIsTold) {
    struct {
        SampleBlock block;
        const char *error;
    } const cases[] = {
        {{1, 4001, 10, 20}, ""},
        {{1, 4002, 20, 10}, "Difference between Stop and Start Line values is greater than 4000. Please"},
        {{20, 10, 20, 10}, "Stop Line value cannot be less than the Start Line value"},
        {{10, 20, 20, 10}, "Stop Line Sample value cannot be less than the Start Line Sample value"},
        {{7, 8, 9, 9}, "Start and stop lines and/or line samples cannot be equal"},
        {{4990, 5001, 1, 20}, "Start and/or Stop Line Value is greater than 5000, the maximum line value allowed"},
        {{7, 7, 1, 4501}, "Difference between Stop and Start Line Sample values"},
        {{4990, 5001, 4490, 4501}, "Start and/or Stop Line Sample value is greater than 4500, the maximum line sample"},
    };
    for (const auto &c : cases) {
        const std::string error = check_for_valid_ranges(c.block, 5000, 4500, chosen_span_limit);
        EXPECT_EQ(error.substr(0, std::string(c.error).size()), c.error);
        EXPECT_EQ(error.empty(), *c.error == '\0');
    }
}

}  // namespace
