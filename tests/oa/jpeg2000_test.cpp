#include "oa/jpeg2000.h"

#include "support/corpus.h"
#include "support/image_parts.h"
#include "support/jpeg2000.h"
#include "support/sha256.h"

#include <gtest/gtest.h>

namespace {

class Jpeg2000 : public ProductTest {
  protected:
    std::string write(const std::string &name, const Jpeg2000Picture &picture) {
        return write_jpeg2000(folder_.file(name), picture);
    }
};

int64_t number_of(const ObjDesc *node, const char *name) {
    int64_t value = 0;
    EXPECT_EQ(OaKwdValuetoLong(name, node, &value), 0) << name;
    return value;
}

std::string expected_plane(const Jpeg2000Picture &picture, uint32_t component) {
    const uint32_t at = picture.origin;
    const auto bytes =
        jpeg2000_writing::tile_samples(picture, at, at, at + picture.width, at + picture.height, component, 1);
    return {bytes.begin(), bytes.end()};
}

// --- Bands and blocks -----------------------------------------------------------------------------------------------

TEST_F(Jpeg2000, BlocksAreCutsOfWholeBands) {
    for (const Jpeg2000Picture &picture : {
             Jpeg2000Picture{.width = 300, .height = 200},
             Jpeg2000Picture{.width = 300, .height = 200, .bits = 12, .is_signed = true, .tile = 64, .boxes = false},
             Jpeg2000Picture{.width = 171, .height = 203, .components = 3, .tile = 50, .origin = 17, .joined = true},
             Jpeg2000Picture{.width = 129, .height = 97, .components = 4, .bits = 16, .tile = 40, .origin = 7},
             Jpeg2000Picture{.width = 131, .height = 90, .components = 3, .tile = 32, .origin = 5, .step = 2},
             Jpeg2000Picture{.width = 90, .height = 80, .bits = 24, .tile = 33, .levels = 0},
             Jpeg2000Picture{.width = 90, .height = 80, .bits = 1, .is_signed = true},
         }) {
        const OpenProduct product(write("x.jp2", picture));
        const ObjDesc *node = product.image();
        ASSERT_TRUE(node) << error_string;
        EXPECT_EQ(number_of(node, "LINES"), picture.height);
        EXPECT_EQ(number_of(node, "BANDS"), picture.components);
        Jpeg2000Image image;
        ASSERT_TRUE(OaIsJpeg2000Image(node) && OaOpenJpeg2000(node, &image) == 0) << error_string;
        for (uint32_t c = 0; c < picture.components; ++c) {
            SCOPED_TRACE(c);
            const Jpeg2000Component &own = image.components[c];
            const std::string plane = expected_plane(picture, c);
            const auto read = [&](OaComponentSize size, const Rectangle &at) {
                return bytes_of(
                    OaObjectPtr(OaReadJpeg2000Part(node, image, c + 1, size, at[0], at[1], at[2], at[3])).get());
            };
            ASSERT_EQ(read(OA_OWN_SIZE, {1, own.lines, 1, own.line_samples}), plane) << error_string;
            const std::string whole =
                bytes_of(OaObjectPtr(OaReadJpeg2000Image(node, static_cast<int64_t>(c) + 1)).get());
            for (const Rectangle &at : {Rectangle{1, 1, 1, 1}, {20, 41, 3, 44}, {33, 40, 40, 41}}) {
                EXPECT_EQ(read(OA_OWN_SIZE, at), cut(plane, own.line_samples, own.sample_bytes(), at));
                EXPECT_EQ(read(OA_IMAGE_SIZE, at), cut(whole, picture.width, own.sample_bytes(), at));
            }
            // Each sample of the image shows the component's sample at or before it.
            for (const uint32_t at : {0U, 1U, 2U, 51U, std::min(picture.width, picture.height) - 1}) {
                const uint32_t step = picture.step_of(c);
                const uint32_t first = jpeg2000_writing::steps(picture.origin, step);
                const uint32_t place = std::max((picture.origin + at) / step, first) - first;
                if (own.sample_bytes() == 1) {
                    EXPECT_EQ(whole[at * picture.width + at],
                              plane[place * static_cast<size_t>(own.line_samples) + place])
                        << at;
                }
            }
        }
        EXPECT_EQ(OaReadJpeg2000Part(node, image, picture.components + 1, OA_OWN_SIZE, 1, 1, 1, 1), nullptr);
        EXPECT_EQ(OaReadJpeg2000Part(node, image, 1, OA_OWN_SIZE, 1, picture.height + 1, 1, 1), nullptr);
        EXPECT_EQ(oa_errno, 502);
    }
    EXPECT_TRUE(notices_.texts.empty());
}

// Components that were kept of one reading are not given for another file of the same name.
TEST_F(Jpeg2000, AChangedFileIsReadAnew) {
    Jpeg2000Picture picture{.width = 40, .height = 30, .components = 3, .joined = true};
    for (const bool is_signed : {false, true, false}) {
        picture.is_signed = is_signed;
        picture.width += 8;
        const OpenProduct product(write("x.jp2", picture));
        for (const int64_t band : {1, 3})
            EXPECT_EQ(bytes_of(OaObjectPtr(OaReadJpeg2000Image(product.image(), band)).get()),
                      expected_plane(picture, static_cast<uint32_t>(band) - 1));
    }
}

// --- Labels ---------------------------------------------------------------------------------------------------------

TEST_F(Jpeg2000, LabelsLeadToTheDataInManyForms) {
    const Jpeg2000Picture picture{.width = 40, .height = 30};
    const std::string expected = expected_plane(picture, 0);
    const std::string bytes = read_file(write("X.JP2", picture));
    folder_.write("SHIFTED.DAT", std::string(100, '#') + bytes);
    folder_.write("Y.JP2", "not one");
    folder_.write("PLAIN.IMG", std::string(30 * 40, '\7'));
    const std::string object = ImageProduct{.lines = 30, .samples = 40}.object();
    const auto with_encoding = [&](const std::string &type) {
        return ImageProduct{.lines = 30, .samples = 40, .more = "ENCODING_TYPE = \"" + type + "\"\n"}.object();
    };
    const auto pair = [&](const std::string &compressed, const std::string &uncompressed, const std::string &more) {
        return "OBJECT = COMPRESSED_FILE\nFILE_NAME = \"" + compressed + "\"\n" + more +
               "END_OBJECT\nOBJECT = UNCOMPRESSED_FILE\nFILE_NAME = \"" + uncompressed +
               "\"\nRECORD_TYPE = FIXED_LENGTH\nRECORD_BYTES = 40\n^IMAGE = \"" + uncompressed + "\"\n" + object +
               "END_OBJECT\n";
    };
    const std::string jp2 = "ENCODING_TYPE = \"JP2\"\n";
    struct Case {
        const char *what;
        std::string label;
        bool is_jpeg2000;
        int code;  // of the failure; 0: it is read
    };
    for (const Case &c : {
             Case{"by its content alone", "^IMAGE = \"X.JP2\"\n" + object, true, 0},
             Case{"by its encoding", "^IMAGE = \"X.JP2\"\n" + with_encoding("jpeg-2000"), true, 0},
             Case{"inside a file", "^IMAGE = (\"SHIFTED.DAT\", 101 <BYTES>)\n" + object, true, 0},
             Case{"at a place where it is not", "^IMAGE = (\"X.JP2\", 3 <BYTES>)\n" + object, true, 0},
             Case{"the file object around it", "OBJECT = FILE\nFILE_NAME = \"X.JP2\"\n" + jp2 + object + "END_OBJECT\n",
                  true, 0},
             Case{"beside its uncompressed form", pair("X.JP2", "X.IMG", jp2), true, 0},
             Case{"beside it by content", pair("X.JP2", "X.IMG", ""), true, 0},
             Case{"by the name that it stands for",
                  "OBJECT = COMPRESSED_FILE\nFILE_NAME = \"Y.JP2\"\n" + jp2 + "END_OBJECT\n" +
                      pair("X.JP2", "X.IMG", "UNCOMPRESSED_FILE_NAME = \"X.IMG\"\n" + jp2),
                  true, 0},
             Case{"the uncompressed file is there", pair("X.JP2", "PLAIN.IMG", jp2), false, 0},
             Case{"neither file is there", pair("Z.JP2", "Z.IMG", jp2), false, 700},
             Case{"it is something else", pair("Y.JP2", "X.IMG", jp2), true, 502},
             Case{"no such file", "^IMAGE = \"Z.JP2\"\n" + with_encoding("JPX"), true, 700},
             Case{"another encoding", "^IMAGE = \"PLAIN.IMG\"\n" + with_encoding("JP3"), false, 531},
         }) {
        SCOPED_TRACE(c.what);
        const OpenProduct product(folder_.write("L.LBL", "RECORD_TYPE = UNDEFINED\n" + c.label + "END\n"));
        ASSERT_TRUE(product.image());
        EXPECT_EQ(OaIsJpeg2000Image(product.image()), c.is_jpeg2000);
        const OaObjectPtr image(OaReadObject(product.image()));
        EXPECT_EQ(image != nullptr, c.code == 0) << error_string;
        EXPECT_EQ(bytes_of(image.get()), c.code ? "" : c.is_jpeg2000 ? expected : std::string(30 * 40, '\7'));
        EXPECT_TRUE(c.code == 0 || oa_errno == c.code) << error_string;
    }
    EXPECT_TRUE(notices_.texts.empty());
    const OpenProduct product(folder_.write("L.LBL", "RECORD_TYPE = UNDEFINED\n" + pair("X.JP2", "X.IMG", jp2)));
    EXPECT_EQ(OaReadImage(product.image(), 1), nullptr);
    EXPECT_EQ(oa_errno, 520) << error_string;
}

TEST_F(Jpeg2000, TheCodestreamHoldsWhereTheLabelDiffers) {
    const Jpeg2000Picture picture{.width = 40, .height = 30, .bits = 12};
    write("X.JP2", picture);
    const ImageProduct claims{.lines = 31, .samples = 4000000, .bits = 12, .bands = 7, .more = "MINIMUM = 3\n"};
    const OpenProduct product(folder_.write("L.LBL", "^IMAGE = \"X.JP2\"\n" + claims.object() + "END\n"));
    const OaObjectPtr image(OaReadObject(product.image()));
    ASSERT_TRUE(image) << error_string;
    EXPECT_EQ(bytes_of(image.get()), expected_plane(picture, 0));
    EXPECT_EQ(number_of(image->odl, "LINE_SAMPLES"), 40);
    EXPECT_EQ(number_of(image->odl, "SAMPLE_BITS"), 16);
    EXPECT_EQ(number_of(image->odl, "MINIMUM"), 3);
    ASSERT_EQ(notices_.texts.size(), 1u);
    EXPECT_TRUE(util_contains(notices_.texts[0], "LINES = 31 in the label, 30 in the data")) << notices_.texts[0];
    EXPECT_FALSE(util_contains(notices_.texts[0], "SAMPLE_BITS")) << notices_.texts[0];
}

// --- Damage ---------------------------------------------------------------------------------------------------------

TEST_F(Jpeg2000, WhatIsCutIsShownWithANoticeOrRefused) {
    const Jpeg2000Picture picture{.width = 64, .height = 64, .components = 2, .tile = 32};
    const std::string file = read_file(write("x.jp2", picture));
    const std::string plane = expected_plane(picture, 0);
    int partial = 0;
    for (size_t size = 0; size < file.size() - 2; size += size < 200 ? 1 : 41) {
        notices_.texts.clear();
        error_string.clear();
        const OdlTree root(OaParseLabelFile(folder_.write("x.jp2", file.substr(0, size)).c_str(), nullptr, 0, 1));
        const ObjDesc *node = root ? OdlFindObjDesc(root.get(), "IMAGE", nullptr, nullptr, 1, SCOPE_TO_END) : nullptr;
        const OaObjectPtr image(node ? OaReadJpeg2000Image(node, 1) : nullptr);
        if (size < 12)
            continue;  // any file
        EXPECT_TRUE(image ? !notices_.texts.empty() || bytes_of(image.get()) == plane : !error_string.empty()) << size;
        if (image && !notices_.texts.empty()) {
            ++partial;
            EXPECT_EQ(image->size, 64 * 64);
        }
    }
    EXPECT_GT(partial, 10);
    // A tile that is whole is read as it is, wherever behind it the file ends.
    for (const size_t size : {file.size() * 2 / 5, file.size() * 3 / 5, file.size() - 2}) {
        const OpenProduct product(folder_.write("x.jp2", file.substr(0, size)));
        Jpeg2000Image image;
        ASSERT_EQ(OaOpenJpeg2000(product.image(), &image), 0) << error_string;
        EXPECT_EQ(bytes_of(OaObjectPtr(OaReadJpeg2000Part(product.image(), image, 1, OA_OWN_SIZE, 1, 32, 1, 32)).get()),
                  cut(plane, 64, 1, {1, 32, 1, 32}));
    }
}

TEST_F(Jpeg2000, HeadersThatAskForTooMuchAreRefused) {
    const std::string file =
        read_file(write("x.j2k", {.width = 64, .height = 64, .components = 3, .tile = 32, .boxes = false}));
    struct Case {
        size_t place;
        std::string bytes;
        const char *report;
    };
    using namespace std::string_literals;
    for (const Case &c : {
             Case{8, "\xFF\xFF\xFF\xFF"s, "no size that can be decoded"},
             Case{8, "\x7F\xFF\xFF\xFF\x7F\xFF\xFF\xFF"s, "tiles"},
             Case{8, "\x7F\xFF\xFF\xFF\x7F\xFF\xFF\xFF\0\0\0\0\0\0\0\0\x7F\xFF\xFF\xFF\x7F\xFF\xFF\xFF"s,
                  "more than so few bytes can hold"},
             Case{8, "\x00\x00\x80\x00\x00\x00\x80\x00"s, "tiles"},
             Case{24, "\0\0\0\0"s, "do not cover it"},
             Case{24, "\0\0\0\1\0\0\0\1"s, "4096 tiles are more than the file can hold"},
             Case{32, "\0\0\0\x21"s, "do not cover it"},
             Case{40, "\xFF\xFF"s, "number of components"},
             Case{42, "\x1F"s, "32 bits are not supported"},
             Case{43, "\0"s, "no samples"},
             Case{4, "\0\1"s, "header is damaged"},
         }) {
        std::string bytes = file;
        bytes.replace(c.place, c.bytes.size(), c.bytes);
        EXPECT_EQ(OaParseLabelFile(folder_.write("y.j2k", bytes).c_str(), nullptr, 0, 1), nullptr) << c.report;
        EXPECT_TRUE(util_contains(error_string, c.report)) << c.report << " / " << error_string;
    }
}

// Precincts of one sample in a tile of 4000 x 4000, which would take the decoder gigabytes.
TEST_F(Jpeg2000, CodingStylesThatAskForTooMuchAreRefused) {
    using namespace std::string_literals;
    std::string file = read_file(write("x.j2k", {.width = 64, .height = 64, .boxes = false}));
    for (const size_t place : {8U, 24U})
        file.replace(place, 8, "\0\0\x0F\xA0\0\0\x0F\xA0"s);
    const size_t style = file.find("\xFF\x52\0\x0C"s);
    ASSERT_NE(style, std::string::npos);
    file.replace(style + 3, 2, "\x10\1"s).insert(style + 14, 4, '\0');
    EXPECT_EQ(OaParseLabelFile(folder_.write("y.j2k", file).c_str(), nullptr, 0, 1), nullptr);
    EXPECT_TRUE(util_contains(error_string, "tiles and code-blocks are too many")) << error_string;
}

// --- Real files -----------------------------------------------------------------------------------------------------

TEST_F(Jpeg2000, RealFilesGiveTheirComponents) {
    REQUIRE_CORPUS();
    int decoded = 0;
    int refused = 0;
    for (auto &row : read_corpus_list("jp2/manifest.tsv")) {
        SCOPED_TRACE(row["file"]);
        error_string.clear();
        notices_.texts.clear();
        const OpenProduct product(corpus_path("jp2/" + row["file"]).string());
        Jpeg2000Image image;
        std::string planes;
        bool whole = product.image() && OaOpenJpeg2000(product.image(), &image) == 0;
        for (size_t i = 0; whole && i < image.components.size(); ++i) {
            const OaObjectPtr plane(OaReadJpeg2000Part(product.image(), image, static_cast<int64_t>(i) + 1, OA_OWN_SIZE,
                                                       1, image.components[i].lines, 1,
                                                       image.components[i].line_samples));
            whole = plane != nullptr;
            planes += bytes_of(plane.get());
        }
        if (row["expectation"] == "refuse") {
            ++refused;
            EXPECT_TRUE(whole ? util_contains(row["note"], "truncated") && !notices_.texts.empty()
                              : !error_string.empty());
            continue;
        }
        ASSERT_TRUE(whole) << error_string;
        EXPECT_EQ(std::to_string(image.line_samples()), row["width"]);
        EXPECT_EQ(std::to_string(image.lines()), row["height"]);
        EXPECT_EQ(sha256_of(folder_.write("planes", planes)), row["sha256"]);
        ++decoded;
    }
    EXPECT_EQ(decoded, 88);
    EXPECT_EQ(refused, 31);
}

}  // namespace
