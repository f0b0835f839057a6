#include "viewer/model/fits_label.h"

#include "base/file.h"
#include "support/corpus.h"
#include "support/product.h"
#include "support/sha256.h"
#include "viewer/model/label_template.h"

namespace {

std::string card(std::string text) {
    text.resize(std::max<size_t>(text.size(), 80), ' ');
    return text;
}

// The five cards as a simple header has them; a test exchanges one.
struct Cards {
    std::string simple = "SIMPLE  =                    T / standard file";
    std::string bitpix = "BITPIX  =                    8";
    std::string naxis = "NAXIS   =                    2";
    std::string naxis1 = "NAXIS1  =                    4";
    std::string naxis2 = "NAXIS2  =                    3";

    std::string block(const std::string &more = "END") const {
        std::string bytes = card(simple) + card(bitpix) + card(naxis) + card(naxis1) + card(naxis2) + card(more);
        bytes.resize(std::max<size_t>(bytes.size(), fits_block_bytes), ' ');
        return bytes;
    }
};

std::string answer(const ScratchFolder &scratch, const std::string &bytes) {
    std::vector<std::string> label;
    const std::string reason = make_fits_label(scratch.write("a.fits", bytes), &label);
    EXPECT_EQ(label.size(), reason.empty() ? 12u : 0u);
    return reason;
}

TEST(FitsLabel, TellsWhyAHeaderIsRefused) {
    const ScratchFolder scratch;
    struct Case {
        Cards cards;
        const char *reason;
    };
    const std::string far_value = "BITPIX  =" + std::string(71, ' ');
    for (const auto &[cards, reason] : {
             Case{{}, ""},
             Case{{.simple = "SIMPLE=T", .bitpix = "BITPIX=-32", .naxis = "NAXIS = 2/ axes", .naxis1 = "NAXIS1=00007"},
                  ""},
             Case{{.simple = "SIMPLE  =                    F"}, "SIMPLE is F; T is needed."},
             Case{{.simple = " SIMPLE = T"}, "Card 1 of the header is not SIMPLE with a value."},
             Case{{.bitpix = "BITPIX  = 16"}, "BITPIX is 16; only 8, -32 and -64 are accepted."},
             Case{{.bitpix = "BITPIX  = -8"}, "BITPIX is -8; only 8, -32 and -64 are accepted."},
             Case{{.bitpix = "BITPIX  = 8.5"}, "BITPIX is 8.5; only 8, -32 and -64 are accepted."},
             Case{{.bitpix = "BITPIX  = 0008"}, "BITPIX is 0008; only 8, -32 and -64 are accepted."},
             Case{{.bitpix = "BITPIX  = \x01\xFF"}, "BITPIX is ??; only 8, -32 and -64 are accepted."},
             Case{{.bitpix = far_value}, "Card 2 of the header is not BITPIX with a value."},
             Case{{.naxis = "NAXIS   = 3"}, "NAXIS is 3; only images of 2 axes are accepted."},
             Case{{.naxis = "NAXIS1  = 2"}, "Card 3 of the header is not NAXIS with a value."},
             Case{{.naxis1 = "NAXIS1  = 0"}, "NAXIS1 is 0; a number from 1 to 99999 is needed."},
             Case{{.naxis1 = "NAXIS1  = 123456"}, "NAXIS1 is 123456; a number from 1 to 99999 is needed."},
             Case{{.naxis2 = "NAXIS2  = 'many'"}, "NAXIS2 is 'many'; a number from 1 to 99999 is needed."},
             Case{{.naxis2 = "NAXIS2"}, "Card 5 of the header is not NAXIS2 with a value."},
         })
        EXPECT_EQ(answer(scratch, cards.block()), reason);
    EXPECT_EQ(answer(scratch, ""), "Card 1 of the header is not SIMPLE with a value.");
    EXPECT_EQ(answer(scratch, Cards{}.block().substr(0, 325)), "Card 5 of the header is not NAXIS2 with a value.");
    std::vector<std::string> label;
    EXPECT_EQ(make_fits_label(scratch.file("none.fits"), &label),
              "The file cannot be opened: No such file or directory.");
    EXPECT_EQ(make_fits_label(scratch.path().string(), &label), "The file cannot be opened: Is a directory.");
    EXPECT_NE(make_fits_label(scratch.write("a\"b.fits", Cards{}.block()), &label).find("quotation mark"),
              std::string::npos);
}

TEST(FitsLabel, TheHeaderEndsWithTheBlockOfTheEndCard) {
    const ScratchFolder scratch;
    const std::string open = Cards{}.block("COMMENT");
    const std::string blank(fits_block_bytes, ' ');
    const std::string end_last = std::string(fits_block_bytes - 80, ' ') + card("END");
    std::string shifted = blank;  // looks like END, but is the end of one card and the start of another
    shifted.replace(157, 3, "END");
    struct Case {
        std::string bytes;
        int64_t byte_offset;
        int64_t file_records;
    };
    for (const auto &[bytes, byte_offset, file_records] : {
             Case{Cards{}.block(), 2881, 1},
             Case{Cards{}.block() + std::string(2879, 'x'), 2881, 1},
             Case{Cards{}.block() + std::string(2880, 'x'), 2881, 2},
             Case{open + blank + end_last + blank, 8641, 2},
             Case{open + shifted + end_last, 8641, 1},
             Case{open + card("ENDING") + blank, 5761, 1},  // the file ends within its second block
             Case{open, 2881, 1},
             Case{Cards{}.block().substr(0, 480), 2881, 1},
             Case{open + blank + blank + blank + blank + blank + blank + blank + blank + blank + end_last, 28801, 2},
         }) {
        const FilePtr file = util_open_regular(scratch.write("a.fits", bytes).c_str());
        FitsHeader header;
        EXPECT_EQ(read_fits_header(file.get(), &header), "");
        EXPECT_EQ(header.byte_offset, byte_offset);
        EXPECT_EQ(header.file_records, file_records);
    }
}

TEST(FitsLabel, RealFilesOpenByTheirLabels) {
    REQUIRE_CORPUS();
    const SilentReports reports;
    const ScratchFolder scratch;
    int images = 0;
    for (auto &row : read_corpus_list("fits/manifest.tsv")) {
        SCOPED_TRACE(row["file"]);
        const std::string copy = scratch.write(row["file"], read_file(corpus_path("fits/" + row["file"])));
        std::vector<std::string> label;
        const std::string reason = make_fits_label(copy, &label);
        if (row["label"] != "unclear") {
            ASSERT_EQ(reason.empty(), row["label"] == "yes") << reason;
        }
        if (!reason.empty())
            continue;
        std::string text;
        for (const std::string &line : label) {
            EXPECT_GE(line.size(), 79u);
            text += line + "\n";
        }
        const OpenProduct product(scratch.write("saved.lbl", text));
        OaFileKeywords place;
        ASSERT_TRUE(product.image() && OaGetFileKeywords(product.image(), &place) == 0);
        EXPECT_EQ(std::to_string(place.start + 1), row["data_byte"]);
        EXPECT_EQ(keyword_of(product.root.get(), "FILE_RECORDS"), row["file_records"]);
        if (row["expectation"] != "decode" || row["header_blocks"] == "11")
            continue;
        const OaObjectPtr read(OaReadImage(product.image(), 1));
        ASSERT_TRUE(read) << error_string;
        EXPECT_EQ(keyword_of(read->odl, "SAMPLE_BITS"), util_without(row["bits"], '-'));
        EXPECT_EQ(sha256_of(scratch.write("plane", bytes_of(read.get()))), row["sha256"]);
        ++images;
    }
    EXPECT_EQ(images, 17);
}

TEST(LabelTemplate, OpensAnImageOnceItIsCompleted) {
    std::vector<std::string> lines = label_template();
    ASSERT_EQ(lines.size(), 45u);
    lines.resize(12);  // the notes go
    std::string text;
    for (std::string &line : lines) {
        ASSERT_EQ(line.size(), 79u);
        ASSERT_EQ(line.back(), '*');
        line.back() = ' ';
        text += line + "\n";
    }
    const ScratchFolder scratch;
    scratch.write("XXXXX.IMG", std::string(6000, '\0') + std::string(800 * 1000, 'p'));
    const OpenProduct product(scratch.write("new.lbl", text));
    const OaObjectPtr read(OaReadImage(product.image(), 1));
    EXPECT_EQ(bytes_of(read.get()), std::string(800 * 800, 'p'));
}

}  // namespace
