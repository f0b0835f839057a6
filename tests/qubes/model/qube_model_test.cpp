#include "qubes/model/qube_text.h"
#include "qubes/model/spectrum.h"
#include "support/qube_product.h"
#include "support/silent_reports.h"

#include <algorithm>

namespace {

constexpr OaQubeAxis S = OA_SAMPLE_AXIS, L = OA_LINE_AXIS, B = OA_BAND_AXIS;

OaQubePtr open_qube(const ScratchFolder &folder, const QubeProduct &product) {
    const OdlTree root(OaParseLabelFile(write_qube(folder, "Q", product).c_str(), nullptr, 0, 1));
    return OaQubePtr(OaOpenQube(OdlFindObjDesc(root.get(), "QUBE", nullptr, nullptr, 1, SCOPE_TO_END)));
}

using Texts = std::vector<std::string>;

TEST(Spectrum, IsTheMeanOfWhatIsValidInTheBox) {
    const SilentReports reports;
    const ScratchFolder folder;
    const QubeProduct one_null = {.order = {B, S, L}, .suffix = {1, 0, 0}, .more = "CORE_NULL = 51\n"};
    const QubeProduct no_data = {.core = {1, 2, 1}, .more = "CORE_NULL = 41\nCORE_LOW_REPR_SATURATION = 49\n"};
    const QubeProduct scaled = {.core = {1, 2, 1}, .more = "CORE_BASE = 2147483600\nCORE_MULTIPLIER = 0.1\n"};
    const QubeProduct large = {.core = {1, 2, 1}, .more = "CORE_MULTIPLIER = 1e306\n"};
    const struct {
        QubeProduct product;
        int64_t line, sample, box;
        Texts values;
    } cases[] = {
        {one_null, 2, 3, 1, {"NULL", "83"}},   {one_null, 2, 3, 3, {"51", "83"}},
        {one_null, 2, 4, 3, {"51.6", "83.5"}},  // (6 x 51.5 - 51) / 5 of band 1
        {one_null, 1, 1, 3, {"45.5", "77.5"}}, {one_null, 3, 1, 99, {"50.4545454545455", "82.5"}},  // all
        {no_data, 1, 1, 3, {"NULL"}},          {no_data, 2, 1, 5, {"LOW_REPR_SATURATION"}},
        {scaled, 1, 1, 1, {"2147483604.1"}},   {large, 2, 1, 3, {"4.5e+307"}},
    };
    for (const auto &c : cases) {
        const OaQubePtr qube = open_qube(folder, c.product);
        QubeSpectrum spectrum;
        ASSERT_TRUE(read_spectrum(qube.get(), c.line, c.sample, c.box, &spectrum)) << error_string;
        Texts values(spectrum.values.size());
        std::ranges::transform(spectrum.values, values.begin(), spectrum_value_text);
        EXPECT_EQ(values, c.values) << c.line << " " << c.sample << " " << c.box;
    }
    const OaQubePtr qube = open_qube(folder, one_null);
    QubeSpectrum unchanged;
    for (const auto &[line, sample, box] :
         {std::array{0, 1, 1}, {4, 1, 1}, {1, 5, 3}, {1, 1, 0}, {1, 1, 2}, {1, 1, 101}}) {
        EXPECT_FALSE(read_spectrum(qube.get(), line, sample, box, &unchanged)) << line << " " << sample << " " << box;
        expect_report(502, "");
    }
    EXPECT_TRUE(unchanged.values.empty());
}

TEST(QubeText, SuffixPlanesAreFoundByTheirNames) {
    const SilentReports reports;
    const ScratchFolder folder;
    const OaQubePtr open = open_qube(folder, {.suffix = {3, 1, 2},
                                              .more = "SAMPLE_SUFFIX_NAME = (\"A\nB\", \" Dark 2 \")\n"
                                                      "LINE_SUFFIX_NAME = FLAT\n"
                                                      "BAND_SUFFIX_NAME = DARK\nBAND_SUFFIX_BASE = (1, 2)\n"});
    OaQubeKeywords qube = OaKeywordsOfQube(open.get());
    const auto found = [&](const std::string &name) {
        const auto plane = find_suffix_plane(qube, name);
        return plane ? util_format("%s %lld", OaQubeAxisName(plane->axis), static_cast<long long>(plane->number))
                     : "none";
    };
    const char *const cases[][2] = {
        {" a b", "SAMPLE 1"},
        {"dark 2", "SAMPLE 2"},
        {"sample suffix 3", "SAMPLE 3"},
        {"Sample Suffix 2", "SAMPLE 2"},
        {"flat", "LINE 1"},
        {"flat 1", "none"},
        {"DARK 1", "BAND 1"},
        {"BAND SUFFIX 2", "BAND 2"},
        {"BAND SUFFIX 3", "none"},
        {"DARK", "none"},
        {"BAND SUFFIX -1", "none"},
        {"", "none"},
        {"DARK 99999999999999999999", "none"},
    };
    for (const auto &[name, place] : cases)
        EXPECT_EQ(found(name), place) << name;
    Texts names;
    for (int64_t number = 1; number <= suffix_plane_count(qube); ++number)
        names.push_back(suffix_plane_name(qube, suffix_plane(qube, number)));
    EXPECT_EQ(names, (Texts{"A B", "Dark 2", "SAMPLE suffix 3", "FLAT", "DARK 1", "DARK 2"}));

    // More than anything could go through one by one.
    qube.suffixes[B].items = int64_t{1} << 40;
    EXPECT_EQ(found("DARK 1000000000000"), "BAND 1000000000000");
    EXPECT_EQ(describe_qube(qube).back(), "  and 1099511627680 more");
}

TEST(QubeText, TellsOfAllThatTheLabelSays) {
    const SilentReports reports;
    const ScratchFolder folder;
    const OaQubePtr open = open_qube(
        folder, {.order = {B, S, L},
                 .suffix = {1, 0, 0},
                 .type = "IEEE_REAL",
                 .bytes = 4,
                 .more = "CORE_NAME = RADIANCE\nCORE_UNIT = \"W/m**2\"\nCORE_NULL = 16#FF7FFFFB#\n"
                         "CORE_HIGH_REPR_SATURATION = 1.5\nCORE_VALID_MINIMUM = -1\nCORE_BASE = 0.1\n"
                         "SAMPLE_SUFFIX_MULTIPLIER = 2\nGROUP = BAND_BIN\nBAND_BIN_CENTER = (0.12345678901, \"N/A\")\n"
                         "BAND_BIN_UNIT = \"MICRO\x1b[m\"\nEND_GROUP\n"});
    const OaQubeKeywords &qube = OaKeywordsOfQube(open.get());
    EXPECT_EQ(
        describe_qube(qube),
        (Texts{"Axes: BAND, SAMPLE, LINE (the first varies fastest)",
               "Core: 2 x 4 x 3 items, IEEE_REAL, 4 bytes, physical = 0.1 + 1 x stored, unit W/m**2", "  RADIANCE",
               "  NULL: -3.40282266e+38 (native 16#FF7FFFFB#)", "  HIGH_REPR_SATURATION: 1.5 (native 16#3FC00000#)",
               "  valid from -1 (native 16#BF800000#)", "Suffix: 0 x 1 x 0 items of 4 bytes",
               "  SAMPLE suffix 1: side plane (lines x bands), IEEE_REAL, 4 bytes, physical = 0 + 2 x stored"}));
    EXPECT_EQ(qube_band_text(qube, 1), "1: 0.12345678901 MICRO [m");
    EXPECT_EQ(qube_band_text(qube, 2), "2");
    EXPECT_EQ(qube_band_text(qube, 3), "3");
}

}  // namespace
