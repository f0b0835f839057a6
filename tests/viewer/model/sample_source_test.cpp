#include "viewer/model/sample_source.h"

#include "support/product.h"
#include "support/silent_reports.h"

namespace {

// What could not be read is told when the image is described, before a window is made.
TEST(PlainImageSource, AnUnknownEncodingIsTold) {
    const SilentReports reports;
    const ScratchFolder scratch;
    const ImageProduct encoded{.more = "ENCODING_TYPE = ROT13\n", .data = "a"};
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
