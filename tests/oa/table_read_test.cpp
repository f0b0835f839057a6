#include "oa/oa.h"
#include "support/corpus.h"
#include "support/hex.h"
#include "support/product.h"
#include "support/sdt_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <random>
#include <string>
#include <unistd.h>

namespace {

int64_t number(const ObjDesc *node, const char *name, int64_t otherwise = 1) {
    int64_t value = 0;
    return OaKwdValuetoLong(name, node, &value) == 0 ? value : otherwise;
}

std::string column(const char *name, const char *type, int start_byte, int bytes, const std::string &more = "") {
    return ::column(type, start_byte, bytes, util_format("NAME = %s\n", name) + more);
}

std::string items(int count, int bytes, int offset) {
    return util_format("ITEMS = %d\n ITEM_BYTES = %d\n", count, bytes) +
           (offset ? util_format("ITEM_OFFSET = %d\n", offset) : "");
}

// The bytes of a column in a row (both from 0) as the object's own label says where they are.
std::string cell(const OaObject *object, int64_t row, int64_t index) {
    const ObjDesc *at = object->odl->first_child;
    for (; index > 0; --index)
        at = at->right_sibling;
    const int64_t start = row * number(object->odl, "ROW_BYTES") + number(at, "START_BYTE") - 1;
    return bytes_of(object).substr(static_cast<size_t>(start),
                                   static_cast<size_t>(number(at, "BYTES") * number(at, "REPETITIONS")));
}

class Table : public ProductTest {
  protected:
    ~Table() override { Oa_profile = {}; }

    // A table behind three other bytes of its file.
    OpenProduct product(const std::string &object, const std::string &data) {
        folder_.write("T.DAT", "###" + data);
        return OpenProduct(folder_.write("T.LBL", "^TABLE = (\"T.DAT\", 4 <BYTES>)\n" + object + "END\n"));
    }
    void expect_refused(const OaObject *object, int code, const std::string &message, const std::string &what) {
        EXPECT_FALSE(object) << what;
        expect_report(code, message, what);
    }
    // Expects every page of the table to hold what the whole table holds there.
    void expect_pages_agree(const ObjDesc *node, const OaObject *whole, int64_t pages, std::mt19937 *generator);
};

void Table::expect_pages_agree(const ObjDesc *node, const OaObject *whole, int64_t pages, std::mt19937 *generator) {
    const int64_t rows = number(whole->odl, "ROWS");
    const int64_t columns = number(whole->odl, "COLUMNS");
    const auto pick = [&](int64_t least, int64_t most) {
        return std::uniform_int_distribution<int64_t>(least, most)(*generator);
    };
    for (int64_t i = 0; i < pages; ++i) {
        const int64_t row = pick(1, rows);
        const int64_t last_row = pick(row, std::min(rows, row + 99));
        const int64_t first = pick(1, columns);
        const int64_t last = pick(first, columns);
        const OaObjectPtr page(OaReadSubTable(node, row, last_row, first, last));
        ASSERT_TRUE(page) << error_string;
        ASSERT_EQ(page->size, number(page->odl, "ROWS") * number(page->odl, "ROW_BYTES"));
        EXPECT_EQ(number(page->odl, "ROWS"), last_row - row + 1);
        EXPECT_EQ(number(page->odl, "COLUMNS"), last - first + 1);
        EXPECT_EQ(number(page->odl, "FIRST_ROW"), row);
        EXPECT_EQ(number(page->odl, "FIRST_COLUMN"), first);
        for (int64_t r = row; r <= last_row; ++r)
            for (int64_t c = first; c <= last; ++c)
                ASSERT_EQ(cell(page.get(), r - row, c - first), cell(whole, r - 1, c - 1))
                    << "row " << r << ", column " << c;
    }
}

TEST_F(Table, BecomesNativeRows) {
    // Two bytes before and one behind each row; gaps before A, behind A, between the items, before C and behind it.
    const std::string inside =
        " ROW_PREFIX_BYTES = 2\n ROW_SUFFIX_BYTES = 1\n" + column("A", "MSB_INTEGER", 2, 2) +
        "GROUP = REMARK\n X = 1\nEND_GROUP\nOBJECT = ALIAS\n ALIAS_NAME = AA\nEND_OBJECT\n" +
        column("\"T\"", "CHARACTER", 5, 3) + column("I", "MSB_UNSIGNED_INTEGER", 8, 5, items(2, 2, 3)) +
        "OBJECT = CONTAINER\n NAME = C\n START_BYTE = 14\n BYTES = 3\n REPETITIONS = 2\n" +
        column("X", "UNSIGNED_INTEGER", 1, 1) + column("Y", "MSB_INTEGER", 2, 2) + "END_OBJECT\n";
    const OpenProduct rows =
        product(table(2, 20, inside), from_hex("EEEE DD 0102 DD 616263 0003 DD 0004 DD 070008 09000A DD EE"
                                               "EEEE DD FFFE DD 646566 0005 DD 0006 DD 0B000C 0DFFF2 DD EE"));
    const OaObjectPtr whole(OaReadObject(rows.object("TABLE")));
    ASSERT_TRUE(whole) << error_string;
    EXPECT_EQ(to_hex(bytes_of(whole.get())), to_hex(from_hex("0201 616263 0300 0400 07000800 09000A00"
                                                             "FEFF 646566 0500 0600 0B000C00 0D00F2FF")));
    const ObjDesc *label = whole->odl;
    EXPECT_EQ(keyword_of(label, "COLUMNS") + keyword_of(label, "ROWS") + keyword_of(label, "ROW_BYTES"), "4217");
    EXPECT_EQ(keyword_of(label, "*FIX_BYTES"), "(none)");

    const OaObjectPtr page(OaReadSubTable(rows.object("TABLE"), 2, 2, 2, 3));
    EXPECT_EQ(to_hex(bytes_of(page.get())), to_hex(from_hex("646566 0500 0600")));
    const char *const names[] = {"c", "T", "C"};
    const OaObjectPtr part(OaGetSubTable(whole.get(), 2, 2, names, 3));
    ASSERT_TRUE(part) << error_string;
    EXPECT_EQ(to_hex(bytes_of(part.get())), to_hex(from_hex("0B000C00 0D00F2FF 646566 0B000C00 0D00F2FF")));
    EXPECT_EQ(keyword_of(part->odl->last_child, "START_BYTE"), "12");
    EXPECT_EQ(number(part->odl, "ROW_BYTES"), 19);
    const char *const unknown[] = {"X"};
    expect_refused(OaGetSubTable(whole.get(), 1, 1, unknown, 1), 502, "no column of the name X", "a column within C");
    expect_refused(OaGetSubTable(whole.get(), 1, 3, names, 1), 502, "last_row = 3 of 2", "rows");
    EXPECT_TRUE(notices_.texts.empty());
}

TEST_F(Table, PagesAgreeWithTheWhole) {
    std::mt19937 generator(11);
    // Gaps over which reading goes on, over which it seeks, and rows longer than a piece of reading.
    for (const int gap : {1, 9000, 300000}) {
        const std::string container = "\n BYTES = 7\n REPETITIONS = 3\n" + column("X", "IEEE_REAL", 2, 4) +
                                      column("Y", "UNSIGNED_INTEGER", 6, 1) + "END_OBJECT\n";
        const std::string columns = column("A", "MSB_INTEGER", 2, 4) + column("B", "CHARACTER", 6, 3) +
                                    util_format("OBJECT = CONTAINER\n NAME = C\n START_BYTE = %d", gap + 9) +
                                    container + column("D", "MSB_UNSIGNED_INTEGER", gap + 30, 11, items(3, 2, 4)) +
                                    column("E", "IEEE_COMPLEX", gap + 41, 16, items(2, 8, 0)) +
                                    column("F", "MSB_BIT_STRING", gap + gap + 57, 3) +
                                    column("G", "LSB_INTEGER", 2 * gap + 60, 8);
        const int64_t rows = gap == 300000 ? 3 : 250;
        const int64_t row_bytes = 3 * gap + 67;
        for (const uint8_t alignment : std::initializer_list<uint8_t>{0, 1, 2}) {
            Oa_profile.dst_alignment_type = alignment;
            const int64_t around = alignment == 0 ? 0 : 5;
            std::string data(static_cast<size_t>(rows * (around + row_bytes)), '\0');
            std::generate(data.begin(), data.end(), [&] { return static_cast<char>(generator()); });
            const OpenProduct opened = product(
                table(rows, row_bytes, around ? " ROW_PREFIX_BYTES = 2\n ROW_SUFFIX_BYTES = 3\n" + columns : columns),
                data);
            const OaObjectPtr whole(OaReadTable(opened.object("TABLE")));
            ASSERT_TRUE(whole) << error_string;
            expect_pages_agree(opened.object("TABLE"), whole.get(), 20, &generator);
        }
    }
    EXPECT_TRUE(notices_.texts.empty());
}

TEST_F(Table, StoredColumnAfterColumnIsTheSameTable) {
    const std::string columns = column("A", "MSB_INTEGER", 1, 2) + column("T", "CHARACTER", 4, 1) +
                                column("I", "MSB_UNSIGNED_INTEGER", 5, 6, items(3, 2, 0));
    const OpenProduct by_column =
        product(table(3, 10, " TABLE_STORAGE_TYPE = COLUMN_MAJOR\n" + columns),
                from_hex("0001 0002 0003 DDDDDD 616263 000100020003 000400050006 000700080009"));
    const char *const names[] = {"A", "T", "I"};
    const std::string native = from_hex("0100 61 010002000300 0200 62 040005000600 0300 63 070008000900");
    const OaObjectPtr whole(OaReadTable(by_column.object("TABLE")));
    ASSERT_TRUE(whole) << error_string;
    EXPECT_EQ(keyword_of(whole->odl, "ROWS") + keyword_of(whole->odl, "ROW_BYTES"), "39");
    EXPECT_EQ(to_hex(bytes_of(OaObjectPtr(OaGetSubTable(whole.get(), 1, 3, names, 3)).get())), to_hex(native));
    const OaObjectPtr page(OaReadSubTable(by_column.object("TABLE"), 2, 3, 2, 3));
    ASSERT_TRUE(page) << error_string;
    EXPECT_EQ(to_hex(bytes_of(page.get())), to_hex(from_hex("6263 040005000600 070008000900")));
    EXPECT_EQ(to_hex(bytes_of(OaObjectPtr(OaGetSubTable(page.get(), 2, 2, names + 1, 2)).get())),
              to_hex(from_hex("63 070008000900")));

    const OpenProduct with_container = product(table(1, 2,
                                                     " TABLE_STORAGE_TYPE = \"COLUMN_MAJOR\"\nOBJECT = CONTAINER\n "
                                                     "START_BYTE = 1\n BYTES = 1\n REPETITIONS = 2\n" +
                                                         column("X", "CHARACTER", 1, 1) + "END_OBJECT\n"),
                                               "ab");
    expect_refused(OaReadTable(with_container.object("TABLE")), 530, "CONTAINER not allowed", "a container");
}

TEST_F(Table, RowsAreRecordsOfVariableLength) {
    const std::string rows[] = {"abcd", "ef  ", "ghij"};
    const std::tuple<const char *, int, std::string> cases[] = {
        {"rows, the second one's blanks trimmed", 6, from_hex("0400 61626364 0200 6566 0600") + "ghij??"},
        {"two rows and one in a record", 8, from_hex("0800") + "abcdef  " + from_hex("0400") + "ghij"},
        {"rows over records", 3,
         from_hex("0300") + "abc." + from_hex("0300") + "def." + from_hex("0300") + "  g." + from_hex("0300") + "hij."},
    };
    for (const auto &[what, record_bytes, records] : cases) {
        folder_.write("V.DAT", from_hex("0100 2E2E") + records);
        const OpenProduct opened(folder_.write(
            "V.LBL", "RECORD_TYPE = VARIABLE_LENGTH\nRECORD_BYTES = " + std::to_string(record_bytes) +
                         "\n^TABLE = (\"V.DAT\", 2)\n" +
                         table(3, 4, " INTERCHANGE_FORMAT = ASCII\n" + column("T", "CHARACTER", 1, 4)) + "END\n"));
        EXPECT_EQ(bytes_of(OaObjectPtr(OaReadTable(opened.object("TABLE"))).get()), rows[0] + rows[1] + rows[2])
            << what << error_string;
        for (const int64_t row : {3, 2})
            EXPECT_EQ(bytes_of(OaObjectPtr(OaReadSubTable(opened.object("TABLE"), row, row, 1, 1)).get()),
                      rows[row - 1])
                << what;
    }
}

TEST_F(Table, OfAFileThatEndsEarlyIsFilledUp) {
    const std::string columns = column("A", "LSB_INTEGER", 1, 2) + column("T", "CHARACTER", 3, 2);
    const OpenProduct rows = product(table(4, 5, columns), from_hex("0100 6162 DD 0200 6364 DD 03"));
    const OaObjectPtr whole(OaReadTable(rows.object("TABLE")));
    EXPECT_EQ(to_hex(bytes_of(whole.get())), "0100616202006364" + std::string(16, '0'));
    const OaObjectPtr behind(OaReadSubTable(rows.object("TABLE"), 4, 4, 1, 2));
    EXPECT_EQ(to_hex(bytes_of(behind.get())), "00000000");
    const OaObjectPtr before(OaReadSubTable(rows.object("TABLE"), 1, 2, 2, 2));
    EXPECT_EQ(bytes_of(before.get()), "abcd");
    Oa_profile.dst_format_for_binary = OA_ASCII;
    const OaObjectPtr text(OaReadTable(rows.object("TABLE")));
    EXPECT_EQ(bytes_of(text.get()), "      1ab      2cd" + std::string(18, ' '));
    EXPECT_EQ(notices_.texts, (std::vector<std::string>{"Bytes read: 9.\nBytes attempted to be read: 16\nrow = 3",
                                                        "Bytes read: 0.\nBytes attempted to be read: 4\nrow = 4",
                                                        "Bytes read: 9.\nBytes attempted to be read: 16\nrow = 3"}));
}

TEST_F(Table, IsRefusedWhenItsLabelCannotBeMeant) {
    constexpr int64_t huge = int64_t{1} << 62;
    const std::string byte = column("A", "UNSIGNED_INTEGER", 1, 1);
    struct Case {
        const char *what;
        std::string label;
        int code;
        const char *message;
        std::string data = "0123456789";
    };
    const Case cases[] = {
        {"rows of any number", table(huge, 1, byte), 502, "are wanted, which become"},
        {"rows times bytes", table(huge, 8, byte), 502, "are no size"},
        {"no row bytes", table(1, 0, byte), 502, "ROW_BYTES = 0"},
        {"negative row bytes", table(1, -1, byte), 531, "ROW_BYTES keyword missing"},
        {"bytes around rows", table(1, 1, " ROW_PREFIX_BYTES = 9223372036854775807\n" + byte), 502, "are no size"},
        {"no columns", table(1, 4, "OBJECT = ALIAS\nEND_OBJECT\n"), 530, "without any COLUMNs"},
        {"the later first", table(1, 4, column("A", "CHARACTER", 3, 1) + column("B", "CHARACTER", 1, 1)), 534,
         "overlapping"},
        {"items of no bytes", table(1, 4, column("A", "CHARACTER", 1, 0, items(1 << 30, 0, 0))), 0, ""},
        {"numbers of no bytes that grow",
         table(1, 4, " INTERCHANGE_FORMAT = ASCII\n" + column("A", "ASCII_INTEGER", 1, 0, items(1 << 30, 0, 0))), 502,
         "which become"},
        {"at the file's end", table(1, 1, byte), 502, "holds 0", ""},
        {"column-major beyond its row",
         table(2, 4, " TABLE_STORAGE_TYPE = COLUMN_MAJOR\n" + column("A", "CHARACTER", 3, 3)), 534, "ends behind"},
        {"column-major with prefix",
         table(2, 4, " TABLE_STORAGE_TYPE = COLUMN_MAJOR\n ROW_PREFIX_BYTES = 1\n" + column("A", "CHARACTER", 3, 1)),
         520, "column-major"},
    };
    for (const Case &c : cases) {
        const OpenProduct rows = product(c.label, c.data);
        const OaObjectPtr object(OaReadTable(rows.object("TABLE")));
        if (c.code != 0)
            expect_refused(object.get(), c.code, c.message, c.what);
    }
    const OpenProduct rows = product(table(2, 4, byte), "01234567");
    const int64_t bounds[][4] = {{0, 1, 1, 1}, {2, 1, 1, 1}, {1, 3, 1, 1},       {1, 1, 0, 1},
                                 {1, 1, 1, 2}, {1, 1, 1, 0}, {-huge, huge, 1, 1}};
    for (const auto &b : bounds)
        expect_refused(OaReadSubTable(rows.object("TABLE"), b[0], b[1], b[2], b[3]), 502, "invalid inputs",
                       util_format("rows %ld-%ld, columns %ld-%ld", b[0], b[1], b[2], b[3]));
    const OpenProduct none = product(table(0, 4, column("A", "MSB_INTEGER", 3, 2)), "");
    const OaObjectPtr empty(OaReadTable(none.object("TABLE")));
    ASSERT_TRUE(empty) << error_string;
    EXPECT_EQ(empty->size, 0);
    EXPECT_EQ(keyword_of(empty->odl, "ROWS") + keyword_of(empty->odl, "ROW_BYTES"), "02");
    expect_refused(OaReadSubTable(none.object("TABLE"), 1, 1, 1, 1), 502, "last_row = 1 of 0", "no row");
    EXPECT_FALSE(OaReadTable(nullptr));
    EXPECT_FALSE(OaGetSubTable(nullptr, 1, 1, nullptr, 0));
}

TEST_F(Table, PageOfAFileTooLargeToRead) {
    constexpr int64_t rows = 250000000;
    constexpr int64_t row_bytes = 400;
    const std::string path = folder_.write("T.DAT", "");
    const int file = open(path.c_str(), O_WRONLY);
    const bool made =
        ftruncate(file, rows * row_bytes) == 0 && pwrite(file, "\1\2", 2, (rows - 2) * row_bytes + 200) == 2;
    close(file);
    if (!made)
        GTEST_SKIP() << "no sparse file of 100 GB can be made in " << path;
    std::string columns;
    for (int i = 0; i < 100; ++i)
        columns += column(util_format("C%d", i).c_str(), "MSB_INTEGER", 4 * i + 1, 4);
    const OpenProduct opened(
        folder_.write("T.LBL", "^TABLE = \"T.DAT\"\n" + table(rows, row_bytes, columns) + "END\n"));
    const OaObjectPtr page(OaReadSubTable(opened.object("TABLE"), rows - 99, rows, 36, 65));
    ASSERT_TRUE(page) << error_string;
    const std::vector<int32_t> values = samples_of<int32_t>(page.get());
    ASSERT_EQ(values.size(), 3000u);
    for (size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(values[i], i == 98 * 30 + 15 ? 0x01020000 : 0) << i;
}

TEST_F(Table, IsOneOfManyReadableObjects) {
    struct Case {
        const char *class_name;
        std::string inside;
        const char *data;  // null: no reader
    };
    const std::string byte = "DATA_TYPE = MSB_INTEGER\n BYTES = 2\nEND_OBJECT\n";
    const std::string rows = " ROWS = 2\n ROW_BYTES = 3\n" + column("A", "MSB_INTEGER", 2, 2);
    const Case cases[] = {
        {"GLOBAL_COLOR_TABLE", rows, "10005443"},
        {"INDEX", rows, "10005443"},
        {"SERIES", rows, "10005443"},
        {"ARRAY", " AXES = 2\n AXIS_ITEMS = (1,3)\nOBJECT = ELEMENT\n " + byte, "000032105443"},
        {"COLLECTION", " BYTES = 5\nOBJECT = ELEMENT\n START_BYTE = 2\n " + byte, "1000"},
        {"QUBE", " AXES = 3\n", nullptr},
        {"TEXT", "", nullptr},
    };
    for (const Case &c : cases) {
        const std::string name = c.class_name;
        folder_.write("O.DAT", from_hex("00 0010 32 4354"));
        const OpenProduct opened(folder_.write("O.LBL", "^" + name + " = \"O.DAT\"\nOBJECT = " + name + "\n" +
                                                            c.inside + "END_OBJECT = " + name + "\nEND\n"));
        const OaObjectPtr object(OaReadObject(opened.object(c.class_name)));
        if (c.data) {
            EXPECT_EQ(to_hex(bytes_of(object.get())), c.data) << name << error_string;
            EXPECT_EQ(object ? object->odl->class_name : "", name);
        } else {
            expect_refused(object.get(), 530, "no reader", name);
        }
    }
}

TEST_F(Table, OfRealDataComesInPagesToo) {
    REQUIRE_CORPUS();
    std::mt19937 generator(3);
    for (const std::string name : {"ROTATE_Q", "SPECTRA_P", "CATALOG_R"}) {
        const OpenProduct opened(corpus_path("real/" + name + ".LBL").string());
        const OaObjectPtr whole(OaReadTable(opened.object("TABLE")));
        ASSERT_TRUE(whole) << name << error_string;
        expect_pages_agree(opened.object("TABLE"), whole.get(), 40, &generator);
    }
    EXPECT_TRUE(notices_.texts.empty());
}

}  // namespace
