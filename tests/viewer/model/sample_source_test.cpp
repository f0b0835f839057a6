#include "viewer/model/sample_source.h"

#include "support/gif.h"
#include "support/jpeg2000.h"
#include "support/product.h"

namespace {

// What could not be read is told when the image is described, before a window is made.
TEST(PlainImageSource, AnUnknownEncodingIsTold) {
    const SilentReports reports;
    const ScratchFolder scratch;
    const ImageProduct encoded{.more = "ENCODING_TYPE = ROT13\n", .data = "a"};
    const OpenProduct product(write_detached(scratch, "SCENE", encoded));
    ImageDescription description;
    EXPECT_NE(image_band_source(product.image(), 1)->describe(&description).find("unknown ENCODING_TYPE: ROT13"),
              std::string::npos);
}

// Numbers written as text come to another size in memory than the window was told.
TEST(PlainImageSource, SamplesOfAnotherSizeAreNotShown) {
    const SilentReports reports;
    const ScratchFolder scratch;
    ImageProduct text{.lines = 2, .samples = 2, .bits = 16, .type = "ASCII_INTEGER", .data = "11122122"};
    text.more = "INTERCHANGE_FORMAT = ASCII\n";
    const OpenProduct product(write_detached(scratch, "SCENE", text));
    EXPECT_EQ(image_band_source(product.image(), 1)->read_block({1, 2, 1, 2}), nullptr);
    EXPECT_NE(oa_errno, 0);
}

// The image is decoded whole; the first part is cut from one decoding, the others from the next.
TEST(PlainImageSource, PartsOfAGifImageAreCutOutOfTheWhole) {
    const ScratchFolder scratch;
    const std::string path = scratch.write("X.gif", gif_header(3, 3) + gif_image(3, 3, "abcdefghi") + ";");
    const OdlTree root(OaParseLabelFile(path.c_str(), nullptr, 0, 1));
    const auto source = image_band_source(OdlFindObjDesc(root.get(), "GIF_IMAGE", nullptr, nullptr, 1, 1), 1);
    ImageDescription description;
    EXPECT_EQ(source->describe(&description), "");
    EXPECT_EQ(bytes_of(source->read_block({2, 3, 1, 2}).get()), "degh");
    EXPECT_EQ(bytes_of(source->read_block({1, 1, 2, 3}).get()), "bc");
    scratch.write("X.gif", "");
    EXPECT_EQ(bytes_of(source->read_block({3, 3, 2, 2}).get()), "h");
}

// A window may lay components over each other, so that all have the image's size.
TEST(Jpeg2000Source, ComponentsHaveTheSizeOfTheImage) {
    const ScratchFolder scratch;
    const Jpeg2000Picture picture{.width = 5, .height = 4, .components = 3, .step = 2, .levels = 1};
    const OpenProduct product(write_jpeg2000(scratch.file("x.jp2"), picture));
    for (const uint32_t band : {1U, 3U}) {
        const auto source = image_band_source(product.image(), band);
        ImageDescription description;
        ASSERT_EQ(source->describe(&description), "");
        EXPECT_EQ(description.line_samples, 5);
        EXPECT_EQ(description.lines, 4);
        EXPECT_EQ(description.bands, 3);
        const uint32_t step = picture.step_of(band - 1);
        std::string expected;
        for (uint32_t line = 1; line < 4; ++line)
            for (uint32_t sample = 2; sample < 5; ++sample)
                expected.push_back(static_cast<char>(picture.value(band - 1, line / step, sample / step)));
        EXPECT_EQ(bytes_of(source->read_block({2, 4, 3, 5}).get()), expected);
    }
}

}  // namespace
