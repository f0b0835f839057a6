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
}

// What could not be read is told when the image is described, before a window is made.
TEST(PlainImageSource, AnUnknownEncodingIsTold) {
    const SilentReports reports;
    const ScratchFolder scratch;
    ImageProduct encoded = two_bands();
    encoded.more = "ENCODING_TYPE = ROT13\n";
    const OpenProduct product(write_detached(scratch, "SCENE", encoded));
    ImageDescription description;
    EXPECT_NE(plain_image_source(product.image(), 1)->describe(&description).find("unknown ENCODING_TYPE: ROT13"),
              std::string::npos);
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
