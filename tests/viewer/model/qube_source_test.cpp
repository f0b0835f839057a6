#include "viewer/model/qube_source.h"

#include "support/qube_product.h"
#include "support/silent_reports.h"
#include "viewer/model/stretch.h"

namespace {

struct Shown {
    std::string fault;
    std::vector<int> levels;
    std::string value;  // at line 1, sample 2
};

Shown show(const QubeProduct &product, const OaQubePlane &plane) {
    const SilentReports reports;
    const ScratchFolder folder;
    const OdlTree root(OaParseLabelFile(write_qube(folder, "Q", product).c_str(), nullptr, 0, 1));
    const std::shared_ptr<OaQube> qube = OaQubePtr(OaOpenQube(root->first_child));
    const auto source = qube_plane_source(qube, plane, "LATITUDE 2");
    ImageDescription description;
    Shown shown;
    shown.fault = source->describe(&description);
    const OaObjectPtr samples = source->read_block({1, description.lines, 1, description.line_samples});
    if (!samples)
        return shown;
    EXPECT_EQ(samples->size, description.lines * description.line_samples * description.sample_bits / 8);
    EXPECT_EQ(build_display_image(samples->data, &description, description.lines, description.line_samples), "");
    const uint8_t *pixels = description.display_image->pixels.get();
    shown.levels.assign(pixels, pixels + description.lines * description.line_samples);
    shown.value = source->value_text(1, 2, true);
    return shown;
}

// Values of the core: 41 and 49, 42 and 50.
TEST(QubeSource, ShowsWhatIsDataBetweenItsExtremes) {
    constexpr OaQubePlane band = {};
    constexpr OaQubePlane back = {OA_BAND_AXIS, 1, true};
    const QubeProduct::Sizes core = {2, 2, 1};
    const QubeProduct::Sizes suffix = {0, 0, 1};
    const std::string scale = "CORE_BASE = -91\nCORE_MULTIPLIER = 2\nCORE_UNIT = K\n";  // -9, -7; 7, 9
    const std::tuple<QubeProduct, OaQubePlane, std::vector<int>, const char *> cases[] = {
        {{.core = core}, band, {0, 28, 227, 255}, "band 1: 42 (0x002A)"},
        {{.core = core, .type = "MSB_UNSIGNED_INTEGER", .bytes = 1}, band, {41, 42, 49, 50}, "band 1: 42 (0x2A)"},
        {{.core = core, .type = "MSB_INTEGER", .bytes = 1}, band, {0, 28, 227, 255}, "band 1: 42 (0x2A)"},
        {{.core = core, .bytes = 1, .more = scale}, band, {0, 28, 227, 255}, "band 1: -7 K (0x2A)"},
        {{.core = core, .type = "UNSIGNED_INTEGER", .bytes = 1, .more = "CORE_NULL = 42\n"},
         band,
         {41, 0, 49, 50},
         "band 1: NULL (0x2A)"},
        {{.core = core, .more = "CORE_VALID_MINIMUM = 1000\n"}, band, {0, 0, 0, 0}, "band 1: BELOW_MINIMUM (0x002A)"},
        {{.core = core, .type = "VAX_REAL", .bytes = 8, .more = "CORE_VALID_MINIMUM = 43\n"},
         band,
         {0, 0, 0, 255},
         "band 1: BELOW_MINIMUM"},
        {{.core = core, .suffix = suffix, .more = "BAND_SUFFIX_NAME = LATITUDE\nBAND_SUFFIX_UNIT = DEG\n"},
         back,
         {0, 247, 8, 255},
         "LATITUDE 2: 28061 DEG"},
    };
    for (const auto &[product, plane, levels, value] : cases) {
        const Shown shown = show(product, plane);
        EXPECT_EQ(shown.fault, "");
        EXPECT_EQ(shown.levels, levels) << value;
        EXPECT_EQ(shown.value, value);
    }
    const Shown odd = show({.core = core, .suffix = suffix, .suffix_type = "CHARACTER"}, back);
    EXPECT_EQ(odd.fault, "Open Qube failed\nLATITUDE 2: items of type CHARACTER and 4 bytes cannot be shown.");
    EXPECT_TRUE(odd.levels.empty());
}

TEST(QubeSource, TellsLargeIntegersApart) {
    OaQubeItem item;
    item.type = "LSB_INTEGER";
    item.bytes = 4;
    ImageDescription description;
    description.sample_bits = 32;
    description.sample_type = item.type;
    description.qube_item = std::make_shared<OaQubeItem>(item);
    const int32_t samples[] = {2'000'000'000, 2'000'000'001, 2'000'000'002};
    ASSERT_EQ(build_display_image(samples, &description, 1, 3), "");
    const uint8_t *pixels = description.display_image->pixels.get();
    EXPECT_EQ(std::vector<int>(pixels, pixels + 3), (std::vector<int>{0, 128, 255}));
}

}  // namespace
