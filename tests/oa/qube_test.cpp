// Qubes: labels, layout, planes, spectra and values.
#include "oa/qube_layout.h"
#include "support/hex.h"
#include "support/product.h"
#include "support/qube_product.h"
#include "support/words.h"

#include <cfloat>
#include <cmath>
#include <random>

namespace {

using Order = std::array<OaQubeAxis, oa_qube_axes>;
constexpr OaQubeAxis S = OA_SAMPLE_AXIS, L = OA_LINE_AXIS, B = OA_BAND_AXIS;
constexpr Order orders[] = {{S, L, B}, {S, B, L}, {B, S, L}, {B, L, S}, {L, S, B}, {L, B, S}};

// All values of an object, by its own label.
std::vector<double> values_of(const OaObject *object) {
    if (!object)
        return {-1};
    OaQubeItem item;
    const char *type = "";
    int64_t bits = 0;
    OaKwdValuetoStr("SAMPLE_TYPE", object->odl, &type);
    OaKwdValuetoLong("SAMPLE_BITS", object->odl, &bits);
    item.type = util_without(type, '"');
    item.bytes = bits / 8;
    EXPECT_TRUE(item.type.starts_with("LSB") || item.type.starts_with("PC")) << item.type;
    std::vector<double> values;
    for (int64_t at = 0; at < object->size; at += item.bytes)
        values.push_back(OaQubeValueOf(item, static_cast<const char *>(object->data) + at).physical);
    return values;
}

std::string extent_of(const OaObject *object) {
    return object ? keyword_of(object->odl, "LINES") + " x " + keyword_of(object->odl, "LINE_SAMPLES") : error_string;
}

std::string scattered_bytes(size_t count) {
    std::minstd_rand random(1);
    std::string bytes(count, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(random() >> 8);
    return bytes;
}

class Qube : public ProductTest {
  protected:
    OaQubePtr open(const std::string &label) {
        const OdlTree root(OaParseLabelFile(label.c_str(), nullptr, 0, 1));
        return OaQubePtr(OaOpenQube(OdlFindObjDesc(root.get(), "*QUBE", nullptr, nullptr, 1, SCOPE_TO_END)));
    }
    OaQubePtr open(const QubeProduct &product, int64_t skipped = 0) {
        return open(write_qube(folder_, "Q", product, skipped));
    }
};

// Plane `number` across `axis`, of value_at(u, v): u and v along the other axes in the order SAMPLE, LINE, BAND.
template <typename ValueAt>
void expect_plane(OaQube *qube, const OaQubePlane &plane, const QubeProduct &product, ValueAt value_at) {
    const int64_t width = product.core[plane.axis == S ? L : S];
    const int64_t height = product.core[plane.axis == B ? L : B];
    std::vector<double> expected;
    for (int64_t v = 1; v <= height; ++v)
        for (int64_t u = 1; u <= width; ++u)
            expected.push_back(static_cast<double>(value_at(u, v)));
    const OaObjectPtr object(OaReadQubePlane(qube, plane));
    ASSERT_EQ(extent_of(object.get()), util_format("%d x %d", static_cast<int>(height), static_cast<int>(width)));
    EXPECT_EQ(values_of(object.get()), expected) << plane.axis << " " << plane.number << " " << plane.is_suffix;
}

void expect_qube(OaQube *qube, const QubeProduct &product) {
    ASSERT_TRUE(qube) << error_string;
    for (int64_t n = 1; n <= product.core[B]; ++n)
        expect_plane(qube, {B, n}, product, [n](int64_t u, int64_t v) { return core_value(u, v, n); });
    for (int64_t n = 1; n <= product.core[L]; ++n)
        expect_plane(qube, {L, n}, product, [n](int64_t u, int64_t v) { return core_value(u, n, v); });
    for (int64_t n = 1; n <= product.core[S]; ++n)
        expect_plane(qube, {S, n}, product, [n](int64_t u, int64_t v) { return core_value(n, u, v); });
    for (const OaQubeAxis axis : {S, L, B})
        for (int64_t n = 1; n <= product.suffix[axis]; ++n)
            expect_plane(qube, {axis, n, true}, product,
                         [=](int64_t u, int64_t v) { return suffix_value(axis, n, u, v); });
    for (int64_t line = 1; line <= product.core[L]; ++line)
        for (int64_t sample = 1; sample <= product.core[S]; ++sample) {
            const OaObjectPtr spectrum(OaReadQubeSpectrum(qube, line, sample));
            std::vector<double> expected;
            for (int64_t band = 1; band <= product.core[B]; ++band)
                expected.push_back(static_cast<double>(core_value(sample, line, band)));
            EXPECT_EQ(values_of(spectrum.get()), expected) << sample << ", " << line;
        }
    const OaObjectPtr part(OaReadQubePart(qube, {B, 2}, 2, 3, 2, 4));
    EXPECT_EQ(values_of(part.get()), (std::vector<double>{82, 83, 84, 90, 91, 92}));
    EXPECT_EQ(keyword_of(part->odl, "FIRST_SAMPLE"), "2");
}

// --- Where the items are --------------------------------------------------------------------------------------------

TEST_F(Qube, FindsEachItemInEveryOrderOfAxes) {
    for (const Order &order : orders) {
        for (const QubeProduct::Sizes &suffix : {QubeProduct::Sizes{}, {2, 0, 0}, {0, 1, 0}, {0, 0, 3}, {2, 1, 3}}) {
            for (const bool corners : {true, false}) {
                QubeProduct product = {.order = order, .suffix = suffix, .corners = corners};
                SCOPED_TRACE(product.object() + (corners ? "corners" : ""));
                expect_qube(open(product, 7).get(), product);
                product.suffix_bytes = 8;
                product.suffix_item_bytes = 2;
                product.suffix_type = "LSB_INTEGER";
                expect_qube(open(product).get(), product);
            }
        }
    }
    EXPECT_TRUE(reports_.nothing_written());
}

TEST_F(Qube, ReadsEveryTypeOfCoreItems) {
    const std::pair<const char *, std::vector<int64_t>> cases[] = {
        {"MSB_INTEGER \"UNSIGNED_INTEGER\" LSB_INTEGER PC_INTEGER PC_UNSIGNED_INTEGER LSB_UNSIGNED_INTEGER IBM_INTEGER "
         "IBM_UNSIGNED_INTEGER VAX_INTEGER INTEGER VAX_UNSIGNED_INTEGER MAC_UNSIGNED_INTEGER SUN_INTEGER "
         "MSB_UNSIGNED_INTEGER",
         {1, 2, 4, 8}},
        {"BOOLEAN", {1}},
        {"IEEE_REAL FLOAT SUN_REAL REAL MAC_REAL PC_REAL VAX_REAL", {4, 8}},
        {"VAX_DOUBLE VAXG_REAL", {8}},
    };
    for (const auto &[types, sizes] : cases)
        for (const std::string &type : words(types))
            for (const int64_t size : sizes)
                for (const Order &order : {orders[0], orders[4]}) {
                    const QubeProduct product = {
                        .order = order, .core = {4, 3, 3}, .suffix = {1, 0, 0}, .type = type, .bytes = size};
                    SCOPED_TRACE(type + " " + std::to_string(size));
                    expect_qube(open(product).get(), product);
                }
    for (const char *type :
         {"CHARACTER", "IBM_REAL", "MSB_BIT_STRING", "COMPLEX", "BCD", "ASCII_REAL", "msb_integer", "N/A"}) {
        EXPECT_FALSE(open(QubeProduct{.type = type, .bytes = 4}));
        expect_report(520, "CORE_ITEM_TYPE = ");
    }
}

// Bands within each other are read several at a time once they are asked for in turn: they and parts of them must be as
// their lines, which are read by themselves. Gaps, lines and bands are more than what is read or turned at once.
TEST_F(Qube, GivesTheSameBandsInAnyTurn) {
    const QubeProduct::Sizes core = {70, 1000, 19};
    folder_.write("Q.QUB", scattered_bytes(72 * 1000 * 20 * 8));
    for (const Order &order : orders) {
        for (const int64_t bytes : {1, 2, 4, 8}) {
            const QubeProduct product = {.order = order,
                                         .core = core,
                                         .suffix = bytes > 2 ? QubeProduct::Sizes{2, 0, 1} : QubeProduct::Sizes{},
                                         .bytes = bytes};
            SCOPED_TRACE(product.object());
            const std::string label = folder_.write("Q.LBL", "^QUBE = \"Q.QUB\"\n" + product.object() + "END\n");
            const OaQubePtr stepping = open(label), plain = open(label);
            for (const int64_t band : {1, 2, 3, 19, 18, 17, 5, 6}) {
                const OaObjectPtr whole(OaReadQubePlane(stepping.get(), {B, band}));
                const OaObjectPtr part(OaReadQubePart(stepping.get(), {B, band}, 11, 990, 3, 69));
                ASSERT_TRUE(whole && part) << error_string;
                for (const int64_t line : {11, 108, 511, 763, 990}) {
                    const OaObjectPtr alone(OaReadQubePart(plain.get(), {B, band}, line, line, 1, core[S]));
                    const auto bytes_at = [&](const OaObjectPtr &object, int64_t sample, int64_t count) {
                        return std::string(static_cast<const char *>(object->data) + sample * bytes,
                                           static_cast<size_t>(count * bytes));
                    };
                    ASSERT_EQ(bytes_at(whole, (line - 1) * core[S], core[S]), bytes_at(alone, 0, core[S])) << line;
                    ASSERT_EQ(bytes_at(part, (line - 11) * 67, 67), bytes_at(alone, 2, 67)) << line;
                }
            }
        }
    }
}

// A qube of 2^40 bytes, none of which the file has but the last: only arithmetic in 64 bits finds it.
TEST_F(Qube, ReachesItemsBehindFourGigabytes) {
    const std::string label = folder_.write(
        "Q.LBL",
        "^SPECTRAL_QUBE = (\"Q.QUB\", 1)\nOBJECT = SPECTRAL_QUBE\n AXES = 3\n CORE_ITEMS = (32768, 16384, 1024)\n"
        " CORE_ITEM_BYTES = 2\n CORE_ITEM_TYPE = LSB_INTEGER\nEND_OBJECT\nEND\n");
    folder_.write("Q.QUB", "");
    std::filesystem::resize_file(folder_.file("Q.QUB"), uint64_t{1} << 40);
    std::fstream file(folder_.file("Q.QUB"), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(-2, std::ios::end);
    file.write("\x39\x05", 2).flush();
    const OaQubePtr qube = open(label);
    ASSERT_TRUE(qube) << error_string;
    EXPECT_EQ(values_of(OaObjectPtr(OaReadQubeSpectrum(qube.get(), 16384, 32768)).get()).back(), 1337);
    EXPECT_EQ(values_of(OaObjectPtr(OaReadQubePart(qube.get(), {B, 1024}, 16384, 16384, 32767, 32768)).get()),
              (std::vector<double>{0, 1337}));
}

// --- Files that end early -------------------------------------------------------------------------------------------

TEST_F(Qube, RefusesWhatTheFileDoesNotHold) {
    for (const Order &order : orders) {
        const QubeProduct product = {.order = order, .suffix = {1, 2, 1}};
        const std::string label = write_qube(folder_, "Q", product);
        const std::string data = product.data();
        const OaQubePtr whole = open(label);
        for (size_t size = 0; size < data.size(); size += 7) {
            folder_.write("Q.QUB", std::string_view(data).substr(0, size));
            const OaQubePtr cut = open(label);
            ASSERT_TRUE(cut);
            for (const OaQubePlane plane : {OaQubePlane{B, 1}, {B, 2}, {L, 1}, {S, 4}, {B, 1, true}, {L, 2, true}}) {
                const OaObjectPtr object(OaReadQubePlane(cut.get(), plane));
                if (object)
                    EXPECT_EQ(object->size, int64_t(values_of(object.get()).size()) * (plane.is_suffix ? 4 : 2));
                else
                    EXPECT_NE(error_string.find(util_format("holds %d from", static_cast<int>(size))),
                              std::string::npos)
                        << error_string;
            }
        }
    }
    const QubeProduct product;
    const std::string label = write_qube(folder_, "Q", product);
    folder_.write("Q.QUB", product.data().substr(0, 24 + 23));
    const OaQubePtr cut = open(label);
    expect_plane(cut.get(), {B, 1}, product, [](int64_t u, int64_t v) { return core_value(u, v, 1); });
    EXPECT_FALSE(OaReadQubePlane(cut.get(), {B, 2}));
    EXPECT_EQ(oa_errno, 502);
    EXPECT_EQ(values_of(OaObjectPtr(OaReadQubePart(cut.get(), {B, 2}, 1, 3, 1, 3)).get()).back(), core_value(3, 3, 2));
    EXPECT_FALSE(OaReadQubeSpectrum(cut.get(), 3, 4));
}

// --- Labels ---------------------------------------------------------------------------------------------------------

// The label's lines of a small qube with some replaced ("KEY = VALUE") or left out ("KEY").
int read_keywords(const std::vector<std::string> &changes, OaQubeKeywords *out, const char *group = "",
                  const char *beside = "") {
    std::vector<std::string> lines = {"AXES = 3",
                                      "AXIS_NAME = (SAMPLE, BAND, LINE)",
                                      "CORE_ITEMS = (4, 2, 3)",
                                      "CORE_ITEM_BYTES = 2",
                                      "CORE_ITEM_TYPE = MSB_INTEGER",
                                      "SUFFIX_ITEMS = (2, 1, 0)"};
    for (const std::string &change : changes) {
        const std::string name = change.substr(0, change.find(' '));
        std::erase_if(lines, [&](const std::string &line) { return line.starts_with(name + " "); });
        if (name != change)
            lines.push_back(change);
    }
    std::string text = "OBJECT = QUBE\n";
    for (const std::string &line : lines)
        text += line + "\n";
    text += group + std::string("END_OBJECT = QUBE\n") + beside;
    const OdlTree root = parse_label(text);
    return OaGetQubeKeywords(OdlFindObjDesc(root.get(), "QUBE", nullptr, nullptr, 1, SCOPE_TO_END), out);
}

TEST_F(Qube, RefusesLabelsThatDescribeNoQube) {
    const std::tuple<std::vector<std::string>, int, const char *> cases[] = {
        {{"AXES = 0"}, 502, "AXES = 0 is not a size"},
        {{"AXES = 7"}, 520, "AXES = 7: qubes have 1 to 3 axes"},
        {{"AXES = three"}, 502, "AXES = three"},
        {{"AXES", "CORE_ITEMS = (4, 2, 3, 1)"}, 520, "AXES = 4"},
        {{"AXIS_NAME = (SAMPLE, BAND, SAMPLE)"}, 502, "AXIS_NAME has SAMPLE twice"},
        {{"AXIS_NAME = (SAMPLE, BAND, TIME)"}, 520, "AXIS_NAME has TIME"},
        {{"AXIS_NAME = (SAMPLE, BAND)"}, 502, "AXIS_NAME has 2 values, AXES = 3"},
        {{"CORE_ITEMS"}, 531, "CORE_ITEMS keyword missing"},
        {{"CORE_ITEMS = (4, 2)"}, 502, "CORE_ITEMS has 2 values, AXES = 3"},
        {{"CORE_ITEMS = (4, 0, 3)"}, 502, "CORE_ITEMS = 0 is not a size"},
        {{"CORE_ITEMS = (4, -1, 3)"}, 502, "CORE_ITEMS = -1"},
        {{"CORE_ITEMS = (1099511627776, 1099511627776, 3)"}, 502, "larger than any file"},
        {{"SUFFIX_ITEMS = (0, 0, 9223372036854775807)"}, 502, "larger than any file"},
        {{"SUFFIX_ITEMS = (2, 1)"}, 502, "SUFFIX_ITEMS has 2 values, AXES = 3"},
        {{"SUFFIX_ITEMS = (2, 1, -1)"}, 502, "SUFFIX_ITEMS = -1 is not a size"},
        {{"SUFFIX_BYTES = 0"}, 502, "SUFFIX_BYTES = 0"},
        {{"CORE_ITEM_BYTES"}, 531, "CORE_ITEM_BYTES keyword missing"},
        {{"CORE_ITEM_BYTES = 3"}, 520, "CORE_ITEM_BYTES = 3"},
        {{"CORE_ITEM_BYTES = (2, 2)"}, 502, "CORE_ITEM_BYTES"},
        {{"CORE_ITEM_TYPE"}, 531, "CORE_ITEM_TYPE keyword missing"},
        {{"CORE_ITEM_TYPE = IEEE_REAL"}, 520, "CORE_ITEM_TYPE = IEEE_REAL with CORE_ITEM_BYTES = 2"},
        {{"CORE_MULTIPLIER = many"}, 502, "CORE_MULTIPLIER = many is not a number"},
        {{"CORE_BASE = 1E999"}, 502, "CORE_BASE = 1E999"},
    };
    for (const auto &[changes, code, message] : cases) {
        OaQubeKeywords qube;
        EXPECT_EQ(read_keywords(changes, &qube), 1) << message;
        expect_report(code, message);
    }
}

TEST_F(Qube, TakesWhatTheLabelSaysAndDefaults) {
    OaQubeKeywords plain;
    ASSERT_EQ(read_keywords({"AXES", "AXIS_NAME", "SUFFIX_ITEMS = 'N/A'", "SUFFIX_BYTES = 0"}, &plain), 0);
    EXPECT_EQ(plain.order, (Order{S, L, B}));
    EXPECT_EQ(plain.core_items, (QubeProduct::Sizes{4, 2, 3}));
    EXPECT_FALSE(plain.core.is_scaled());
    EXPECT_EQ(plain.suffix_bytes, 4);
    OaQubeKeywords flat;
    ASSERT_EQ(
        read_keywords({"AXES = 2", "AXIS_NAME = ('band', \"Line\")", "CORE_ITEMS = (5, 6)", "SUFFIX_ITEMS"}, &flat), 0);
    EXPECT_EQ(flat.order, (Order{B, L, S}));
    OaQubeKeywords beside;
    ASSERT_EQ(read_keywords({}, &beside, "GROUP = A\n BAND_BIN_UNIT = NM\nEND_GROUP\n",
                            "GROUP = BAND_BIN\n BAND_BIN_CENTER = (1, 2)\n BAND_BIN_UNIT = UM\nEND_GROUP\n"
                            "BAND_BIN_WIDTH = (3, 4)\nOBJECT = B\n BAND_BIN_CENTER = 9\nEND_OBJECT\n"),
              0);
    EXPECT_EQ(beside.band_bins.centers, (std::vector<double>{1, 2}));
    EXPECT_EQ(beside.band_bins.widths, (std::vector<double>{3, 4}));
    EXPECT_EQ(beside.band_bins.unit, "NM");
    EXPECT_EQ(flat.core_items, (QubeProduct::Sizes{1, 6, 5}));

    OaQubeKeywords qube;
    ASSERT_EQ(read_keywords(
                  {"CORE_NAME = \"RADIANCE\"", "CORE_UNIT = 'W*M**-2'", "CORE_BASE = 1.5", "CORE_MULTIPLIER = 0.25",
                   "SAMPLE_SUFFIX_NAME = (BACKGROUND, \"DARK\")", "SAMPLE_SUFFIX_ITEM_TYPE = (IEEE_REAL, LSB_INTEGER)",
                   "SAMPLE_SUFFIX_ITEM_BYTES = (4, 2)", "SAMPLE_SUFFIX_BASE = 7", "SAMPLE_SUFFIX_MULTIPLIER = (2, 3)",
                   "SAMPLE_SUFFIX_NULL = (16#FF7FFFFB#, -9)", "SAMPLE_SUFFIX_UNIT = KELVIN",
                   "BAND_SUFFIX_NAME = LATITUDE", "BAND_BIN_UNIT = MICROMETER"},
                  &qube,
                  "GROUP = BAND_BIN\n BAND_BIN_CENTER = (0.5 <um>, 1.25)\n BAND_BIN_WIDTH = (0.1, N/A)\n"
                  "END_GROUP = BAND_BIN\n"),
              0);
    EXPECT_TRUE(qube.remarks.empty()) << qube.remarks[0];
    EXPECT_EQ(qube.core.name + qube.core.unit, "RADIANCEW*M**-2");
    EXPECT_EQ(qube.core.base, 1.5);
    EXPECT_EQ(qube.core.multiplier, 0.25);
    const OaQubeItem &dark = OaQubeSuffixItem(qube, S, 1);
    EXPECT_EQ(dark.name + " " + dark.type + " " + dark.unit, "DARK LSB_INTEGER KELVIN");
    EXPECT_EQ(dark.bytes, 2);
    EXPECT_EQ(dark.base + dark.multiplier, 10);
    EXPECT_EQ(dark.specials[OA_QUBE_NULL], 0xFFF7u);
    EXPECT_EQ(OaQubeSuffixItem(qube, S, 0).specials[OA_QUBE_NULL], 0xFF7FFFFBu);
    const OaQubeItem &latitude = OaQubeSuffixItem(qube, B, 0);
    EXPECT_EQ(latitude.name + " " + latitude.type, "LATITUDE MSB_INTEGER");
    EXPECT_EQ(latitude.bytes, 4);
    EXPECT_EQ(qube.band_bins.centers, (std::vector<double>{0.5, 1.25}));
    EXPECT_TRUE(std::isnan(qube.band_bins.widths.at(1)));
    EXPECT_EQ(qube.band_bins.unit, "MICROMETER");
}

TEST_F(Qube, TellsWhatItDidNotTakeOver) {
    const std::pair<const char *, const char *> cases[] = {
        {"CORE_NULL = nothing", "CORE_NULL = nothing is no value"},
        {"CORE_NULL = 16#12345#", "CORE_NULL = 16#12345# is no value"},
        {"CORE_NULL = -32769", "CORE_NULL"},
        {"CORE_HIGH_REPR_SATURATION = 0.5", "CORE_HIGH_REPR_SATURATION"},
        {"CORE_VALID_MINIMUM = 1E40", "CORE_VALID_MINIMUM"},
        {"SAMPLE_SUFFIX_NAME = (A, B, C)", "SAMPLE_SUFFIX_NAME has 3 values for 2 items"},
        {"SAMPLE_SUFFIX_BASE = (1)", "SAMPLE_SUFFIX_BASE has 1 values for 2 items"},
        {"SAMPLE_SUFFIX_MULTIPLIER = (x, 2)", "SAMPLE_SUFFIX_MULTIPLIER = x does not count"},
        {"BAND_SUFFIX_ITEM_BYTES = -4", "BAND_SUFFIX_ITEM_BYTES = -4 does not count"},
        {"BAND_BIN_CENTER = (1, 2, 3)", "BAND_BIN_CENTER has 3 values for 2 bands"},
    };
    for (const auto &[line, remark] : cases) {
        OaQubeKeywords qube;
        ASSERT_EQ(read_keywords({line}, &qube), 0) << error_string;
        ASSERT_FALSE(qube.remarks.empty()) << line;
        EXPECT_EQ(qube.remarks[0].find(remark), 0u) << qube.remarks[0];
        EXPECT_EQ(OaQubeSuffixItem(qube, B, 0).bytes, 4);
    }
    OaQubeKeywords silent;
    ASSERT_EQ(read_keywords({"CORE_NULL = \"N/A\"", "CORE_VALID_MINIMUM = UNK", "CORE_UNIT = \"N/A\"",
                             "CORE_NAME = \"BRIGHT\r\n  NESS " + std::string(500, 'X') + "\""},
                            &silent),
              0);
    EXPECT_EQ(silent.core.unit, "");
    EXPECT_EQ(silent.core.name.find_first_of("\r\n"), std::string::npos) << silent.core.name;
    EXPECT_LE(silent.core.name.size(), 120u);
    EXPECT_TRUE(silent.remarks.empty());
    EXPECT_FALSE(silent.core.specials[OA_QUBE_NULL] || silent.core.valid_minimum);
}

// --- Values ---------------------------------------------------------------------------------------------------------

TEST_F(Qube, KnowsSpecialValuesByTheirStoredBits) {
    struct {
        const char *type;
        int bytes;
        const char *lines;  // of the label
        const char *stored;
        const char *state;  // or, empty, the physical value
        double physical;
    } const cases[] = {
        {"IEEE_REAL", 4, "CORE_NULL = 16#FF7FFFFB#", "FF7FFFFB", "NULL", 0},
        {"PC_REAL", 4, "CORE_NULL = 16#FF7FFFFB#", "FBFF7FFF", "NULL", 0},
        {"PC_REAL", 4, "CORE_NULL = 16#FF7FFFFB#", "FCFF7FFF", "", -3.4028228579130005e38},
        {"IEEE_REAL", 4, "CORE_NULL = -1.5E2", "C3160000", "NULL", 0},
        {"IEEE_REAL", 4, "CORE_LOW_INSTR_SATURATION = 16#7FC00001#", "7FC00001", "LOW_INSTR_SATURATION", 0},
        {"IEEE_REAL", 4, "CORE_LOW_INSTR_SATURATION = 16#7FC00001#", "7FC00002", "NOT_FINITE", 0},
        {"IEEE_REAL", 8, "CORE_NULL = 16#FFEFFFFFFFFFFFFB#", "FFEFFFFFFFFFFFFB", "NULL", 0},
        {"IEEE_REAL", 4, "CORE_NULL = 0", "80000000", "NULL", 0},
        {"IEEE_REAL", 4, "CORE_VALID_MINIMUM = 16#FF7FFFFA#", "FF7FFFFB", "BELOW_MINIMUM", 0},
        {"IEEE_REAL", 4, "CORE_VALID_MINIMUM = 16#3F800000#\nCORE_BASE = 10", "3F800000", "", 11},
        {"VAX_REAL", 4, "CORE_NULL = 16#FFFFFFFF#", "FFFFFFFF", "NULL", 0},
        {"VAX_REAL", 4, "CORE_NULL = 16#40C02000#", "C0400020", "NULL", 0},
        {"VAXG_REAL", 8, "CORE_NULL = 16#4018000000000001#", "1840000000000100", "NULL", 0},
        {"MSB_INTEGER", 2, "CORE_NULL = 16#8000#", "8000", "NULL", 0},
        {"LSB_INTEGER", 2, "CORE_NULL = -32768\nCORE_HIGH_REPR_SATURATION = 16#7FFF#", "FF7F", "HIGH_REPR_SATURATION",
         0},
        {"MSB_INTEGER", 2, "CORE_NULL = -32768.0\nCORE_VALID_MINIMUM = -32752", "8001", "BELOW_MINIMUM", 0},
        {"MSB_INTEGER", 2, "CORE_VALID_MINIMUM = -32752", "8010", "", -32752},
        {"MSB_UNSIGNED_INTEGER", 8, "CORE_NULL = 18446744073709551615", "FFFFFFFFFFFFFFFF", "NULL", 0},
        {"UNSIGNED_INTEGER", 1, "CORE_NULL = 0\nCORE_MULTIPLIER = 0.5\nCORE_BASE = -1", "FF", "", 126.5},
        {"UNSIGNED_INTEGER", 1, "CORE_LOW_REPR_SATURATION = 2#101#", "05", "LOW_REPR_SATURATION", 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.type) + " " + c.lines + " " + c.stored);
        QubeProduct product = {.core = {1, 1, 1}, .type = c.type, .bytes = c.bytes};
        product.more = c.lines + std::string("\n");
        const std::string label = write_qube(folder_, "Q", product);
        std::string bytes = from_hex(c.stored);
        folder_.write("Q.QUB", bytes);
        const OaQubePtr qube = open(label);
        ASSERT_TRUE(qube) << error_string;
        const OaObjectPtr band(OaReadQubePlane(qube.get(), {B, 1}));
        const OaQubeItem &core = OaKeywordsOfQube(qube.get()).core;
        EXPECT_TRUE(OaKeywordsOfQube(qube.get()).remarks.empty());
        const OaQubeValue value = OaQubeValueOf(core, band->data);
        EXPECT_EQ(std::string(OaQubeStateName(value.state)), c.state);
        EXPECT_EQ(value.physical, c.physical);
        float shown = 0;
        OaQubePhysicalValues(core, band->data, 1, &shown);
        EXPECT_TRUE(*c.state ? std::isnan(shown) : shown == static_cast<float>(c.physical)) << shown;
    }
}

TEST_F(Qube, GivesManyValuesAsOneByOne) {
    const struct {
        const char *type;
        int64_t bytes;
        uint64_t null, minimum;
    } cases[] = {{"UNSIGNED_INTEGER", 1, 7, 3},
                 {"LSB_INTEGER", 2, 0x8000, 0xC000},
                 {"LSB_INTEGER", 8, 5, 1},
                 {"PC_REAL", 4, 0x7FC00001, 0xFF000000},
                 {"PC_REAL", 8, 0, 0xFFE0000000000000}};
    std::mt19937_64 random(8);
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.type) + " " + std::to_string(c.bytes));
        OaQubeItem item;
        item.type = c.type;
        item.bytes = c.bytes;
        item.base = 0.5;
        item.multiplier = 3;
        item.specials[OA_QUBE_NULL] = c.null;
        item.valid_minimum = c.minimum;
        constexpr int64_t count = 3001;
        std::vector<uint8_t> samples(static_cast<size_t>(count * c.bytes));
        for (uint8_t &byte : samples)
            byte = static_cast<uint8_t>(random());
        memcpy(samples.data(), &c.null, static_cast<size_t>(c.bytes));
        std::vector<float> values(static_cast<size_t>(count));
        OaQubePhysicalValues(item, samples.data(), count, values.data());
        double minimum = 1e300, maximum = -1e300, least = 1e300, greatest = -1e300;
        OaQubeWidenRange(item, samples.data(), count, &minimum, &maximum);
        for (int64_t i = 0; i < count; ++i) {
            const OaQubeValue value = OaQubeValueOf(item, samples.data() + i * c.bytes);
            const float shown = values[static_cast<size_t>(i)];
            if (value.state != OA_QUBE_VALID) {
                ASSERT_TRUE(std::isnan(shown)) << i;
                continue;
            }
            if (std::fabs(value.physical) <= FLT_MAX)
                ASSERT_EQ(shown, static_cast<float>(value.physical)) << i;
            else
                ASSERT_TRUE(std::isinf(shown) && std::signbit(shown) == (value.physical < 0)) << i;
            least = std::min(least, value.physical);
            greatest = std::max(greatest, value.physical);
        }
        EXPECT_EQ(minimum, least);
        EXPECT_EQ(maximum, greatest);
    }
}

}  // namespace
