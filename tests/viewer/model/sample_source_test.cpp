#include "viewer/model/sample_source.h"

#include "support/product.h"
#include "support/silent_reports.h"

namespace {

// 4 lines of 3 samples: band 1 holds 11, 12, 13, 21 .. 43, band 2 a hundred more.
ImageProduct two_bands() {
    ImageProduct product{.lines = 4, .samples = 3, .bits = 16, .type = "MSB_INTEGER", .bands = 2};
    product.storage = "BAND_SEQUENTIAL";
    std::vector<int16_t> values;
    for (const int band : {0, 100})
        for (int line = 10; line <= 40; line += 10)
            for (int sample = 1; sample <= 3; ++sample)
                values.push_back(static_cast<int16_t>(band + line + sample));
    product.data = stored(values, std::endian::big);
    return product;
}

TEST(PlainImageSource, BlocksOfABandInAnyOrder) {
    const ScratchFolder scratch;
    const OpenProduct product(write_detached(scratch, "SCENE", two_bands()));
    const auto source = plain_image_source(product.image(), 2);
    ImageDescription description;
    EXPECT_EQ(source->describe(&description), "");
    EXPECT_EQ(description.lines, 4);
    EXPECT_EQ(description.bands, 2);
    EXPECT_EQ(samples_of<int16_t>(source->read_block({3, 4, 2, 3}).get()), (std::vector<int16_t>{132, 133, 142, 143}));
    EXPECT_EQ(samples_of<int16_t>(source->read_block({1, 1, 1, 2}).get()), (std::vector<int16_t>{111, 112}));
    EXPECT_EQ(samples_of<int16_t>(source->read_block({1, 4, 1, 3}).get()).at(11), 143);
}

TEST(PlainImageSource, WhatIsNoBlockIsRefused) {
    const SilentReports reports;
    const ScratchFolder scratch;
    const OpenProduct product(write_detached(scratch, "SCENE", two_bands()));
    const auto source = plain_image_source(product.image(), 1);
    for (const SampleBlock &block : {SampleBlock{}, SampleBlock{1, 5, 1, 3}, SampleBlock{1, 4, 0, 3},
                                     SampleBlock{3, 2, 1, 3}, SampleBlock{1, 4, 1, INT64_MAX}})
        EXPECT_EQ(source->read_block(block), nullptr);
    EXPECT_EQ(oa_errno, 502);
}

// Each label is refused with words before anything is read; none may lead past the end of the samples.
TEST(PlainImageSource, HostileLabelsGiveTheirMessage) {
    ImageProduct huge = two_bands();
    huge.lines = huge.samples = 2000000000;
    huge.type = "IEEE_REAL";
    huge.bits = 64;
    ImageProduct encoded = two_bands();
    encoded.more = "ENCODING_TYPE = ROT13\n";
    ImageProduct odd = two_bands();
    odd.bits = 12;
    struct {
        ImageProduct product;
        const char *error;
    } const cases[] = {
        {huge, "LINES = 2000000000"}, {encoded, "unknown ENCODING_TYPE: ROT13"}, {odd, "SAMPLE_BITS not equal to"}};
    for (const auto &c : cases) {
        const SilentReports reports;
        const ScratchFolder scratch;
        const OpenProduct product(write_detached(scratch, "SCENE", c.product));
        const auto source = plain_image_source(product.image(), 1);
        ImageDescription description;
        EXPECT_NE(source->describe(&description).find(c.error), std::string::npos) << error_string;
    }
}

// Numbers written as text come to another size in memory than the window was told.
TEST(PlainImageSource, SamplesOfAnotherSizeAreNotShown) {
    const SilentReports reports;
    const ScratchFolder scratch;
    ImageProduct text{.lines = 2, .samples = 2, .bits = 16, .type = "ASCII_INTEGER", .data = "11122122"};
    text.more = "INTERCHANGE_FORMAT = ASCII\n";
    const OpenProduct product(write_detached(scratch, "SCENE", text));
    EXPECT_EQ(plain_image_source(product.image(), 1)->read_block({1, 2, 1, 2}), nullptr);
    EXPECT_NE(oa_errno, 0);
}

}  // namespace
