#include "support/product.h"
#include "tables/model/line_index.h"
#include "tables/tables.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <random>
#include <string>
#include <unistd.h>

namespace {

std::string text_of(const FieldBytes &field) {
    return {field.bytes.begin(), field.bytes.end()};
}

class TableReaderTest : public ProductTest {
  protected:
    TableInfo table(const std::string &name, const std::string &data) {
        TableInfo made;
        made.file_name = folder_.write(name, data);
        return made;
    }
    ColumnInfo column(int64_t start_byte, int64_t bytes, int64_t item_offset = 0) {
        ColumnInfo made;
        made.start_byte = start_byte;
        made.bytes = bytes;
        made.item_offset = item_offset;
        return made;
    }
    // A spreadsheet of that class, of `rows` rows.
    TableInfo sheet(const std::string &data, const std::string &delimiter, int64_t rows) {
        root_ = parse_label("OBJECT = SPREADSHEET\n" + delimiter + "\nEND_OBJECT = SPREADSHEET");
        TableInfo made = table("S.CSV", data);
        made.object = root_->first_child;
        made.rows = rows;
        return made;
    }

    std::mt19937 random_{20260101};
    int64_t number(int64_t low, int64_t high) { return std::uniform_int_distribution<int64_t>(low, high)(random_); }

    OdlTree root_;
};

// Fields of tables of any shape, row by row, at random, column by column, are the bytes at the place that the label
// tells, zeros behind the end of the file.
TEST_F(TableReaderTest, EveryWayOfReadingGivesTheBytesAtTheirPlace) {
    std::string data(300000, '\0');
    for (char &byte : data)
        byte = static_cast<char>(number(0, 255));
    for (int turn = 0; turn < 60; ++turn) {
        TableInfo info = table("T.DAT", data);
        info.start_byte = number(1, 50);
        info.row_bytes = turn % 10 ? number(1, 300) : number(5000, 20000);
        info.row_prefix_bytes = number(0, 9);
        info.row_suffix_bytes = number(0, 9);
        const int64_t length = info.row_bytes + info.row_prefix_bytes + info.row_suffix_bytes;
        const auto size = static_cast<int64_t>(data.size());
        info.rows = size / length + 5;
        TableFileInfo file;
        int64_t block = 0;
        if (turn % 2) {
            file.blocking_type = "UNSPANNED";
            file.record_bytes = number(1, 400);
            file.block_records = number(1, 20);
            block = file.record_bytes * file.block_records;
            file.block_bytes = block + number(0, 300);
        }
        const ColumnInfo columns[] = {column(1, number(1, 20), 3), column(number(1, length), number(1, 8), 0),
                                      column(number(1, length), number(1, 40), -2)};
        const auto reader = tb_open_reader(file, info);
        ASSERT_TRUE(reader);
        const auto check = [&](int64_t row, const ColumnInfo &at, int64_t item) {
            int64_t offset = row * length + info.start_byte + at.start_byte + (item - 1) * at.item_offset +
                             info.row_prefix_bytes - 2;
            if (block && offset > 0)
                offset += offset / block * (file.block_bytes - block);
            std::string wanted;
            if (offset >= 0 && offset < size)
                wanted = data.substr(static_cast<size_t>(offset), static_cast<size_t>(at.bytes));
            const auto held = static_cast<int64_t>(wanted.size());
            if (held)
                wanted.resize(static_cast<size_t>(at.bytes), '\0');
            FieldBytes field;
            ASSERT_EQ(reader->read(row, at, item, &field), held > 0) << row;
            ASSERT_EQ(field.held, held);
            ASSERT_EQ(field.offset, offset < 0 ? -1 : offset);
            ASSERT_EQ(text_of(field), wanted);
        };
        for (int64_t row = 0; row < std::min<int64_t>(info.rows, 2000); ++row)
            for (const ColumnInfo &at : columns)
                check(row, at, 1);
        for (int i = 0; i < 300; ++i)
            check(number(0, info.rows - 1), columns[number(0, 2)], number(1, 4));
        const int64_t present = reader->rows_present();
        const auto starts_at = [&](int64_t row) {
            const int64_t offset = row * length + info.start_byte - 1;
            return block ? offset + offset / block * (file.block_bytes - block) : offset;
        };
        EXPECT_LT(starts_at(present - 1), size);
        EXPECT_GE(starts_at(present), size);
    }
}

TEST_F(TableReaderTest, HostileShapes) {
    TableInfo info = table("T.DAT", "0123456789");
    info.rows = INT64_MAX;
    info.row_bytes = 4;
    const ColumnInfo whole = column(1, 4);
    FieldBytes field;
    auto reader = tb_open_reader({}, info);
    EXPECT_EQ(reader->rows_present(), 3);
    EXPECT_TRUE(reader->read(2, whole, 1, &field));
    EXPECT_EQ(text_of(field), std::string("89\0\0", 4));
    for (const auto &at : {column(-1, 4), column(0, 4), column(1, 0), column(INT64_MAX, 4), column(1, 4, INT64_MIN)})
        EXPECT_FALSE(reader->read(0, at, INT64_MAX, &field));
    EXPECT_FALSE(reader->read(INT64_MAX - 1, whole, 1, &field));
    EXPECT_FALSE(reader->read(-1, whole, 1, &field));
    EXPECT_TRUE(reader->read(0, column(1, INT64_MAX), 1, &field));
    EXPECT_EQ(static_cast<int64_t>(field.bytes.size()), tb_widest_field);

    EXPECT_EQ(tb_read_column_2(reader.get(), whole, 1, 1), "4567");
    EXPECT_EQ(tb_read_column_2(reader.get(), whole, 3, 1), "");
    EXPECT_EQ(Notices::texts, std::vector<std::string>{"0 bytes read. Current byte location in data file is 12"});
    for (const int64_t row_bytes : {int64_t{0}, int64_t{-1}, INT64_MAX}) {
        info.row_bytes = row_bytes;
        info.row_prefix_bytes = 1;
        reader = tb_open_reader({}, info);
        EXPECT_EQ(reader->rows_present(), 0);
        EXPECT_FALSE(reader->read(0, whole, 1, &field));
    }
    info.file_name = folder_.path();
    EXPECT_FALSE(tb_open_reader({}, info));
    expect_report(700, "can't open the data file");

    // A hundred gigabytes without contents.
    constexpr int64_t rows = 1000000000;
    TableInfo sparse = table("SPARSE.DAT", "");
    sparse.rows = rows + 1;
    sparse.row_bytes = 100;
    ASSERT_EQ(truncate(sparse.file_name.c_str(), rows * 100), 0);
    reader = tb_open_reader({}, sparse);
    EXPECT_EQ(reader->rows_present(), rows);
    EXPECT_TRUE(reader->read(rows - 1, column(97, 4), 1, &field));
    EXPECT_EQ(field.offset, rows * 100 - 4);
}

// Where fields of a column lie together, each is found as the table reader finds it.
TEST_F(TableReaderTest, TablesStoredColumnByColumn) {
    folder_.write("C.DAT", "#AbcdEFGH1122334");
    const OpenProduct opened(
        folder_.write("C.LBL",
                      "^TABLE = (\"C.DAT\", 2 <BYTES>)\nOBJECT = TABLE\nTABLE_STORAGE_TYPE = COLUMN_MAJOR\nROWS = 4\n"
                      "ROW_BYTES = 4\nOBJECT = COLUMN\nDATA_TYPE = CHARACTER\nSTART_BYTE = 1\nBYTES = 2\nITEMS = 2\n"
                      "ITEM_BYTES = 1\nEND_OBJECT = COLUMN\nOBJECT = COLUMN\nDATA_TYPE = CHARACTER\nSTART_BYTE = 3\n"
                      "BYTES = 2\nEND_OBJECT = COLUMN\nEND_OBJECT = TABLE\nEND\n"));
    const TableProduct product = tb_read_product(opened.root.get());
    const ColumnView view(product.tables.at(0));
    const auto reader = tb_open_reader(product.file, product.tables[0]);
    std::string text;
    for (int64_t row = 0; row < reader->rows_present(); ++row)
        for (int64_t i = 0; i < view.size(); ++i) {
            text += ' ';
            EXPECT_TRUE(view.append(reader.get(), row, i, &text));
        }
    EXPECT_EQ(text, " A b 11 c d 22 E F 33 G H 4.");
}

TEST_F(TableReaderTest, FieldsOfSpreadsheets) {
    const std::tuple<const char *, const char *, std::vector<const char *>> cases[] = {
        {"COMMA", "a,\"b,c\",,d ", {"a", "b,c", "", "d "}},
        {"\"SEMICOLON\"", "a;'b;c';O'Brien;x'", {"a", "'b;c'", "O'Brien", "x'"}},
        {"VERTICAL_BAR", "'tis|'|\"'|'\"|'a'b|c'|", {"'tis|'", "'|'", "'a'b|c'", ""}},
        {"TAB", "\"a\tb\t", {"a\tb\t"}},
        {"COMMA", "\"\",\"a\"\"b\"", {"", "a\"\"b"}},
        {"COMMA", "'open,\"x\"", {"'open", "x"}},
    };
    for (const auto &[delimiter, line, fields] : cases) {
        const TableInfo info = sheet(std::string(line) + "\nnext", "FIELD_DELIMITER = " + std::string(delimiter), 2);
        const auto reader = tb_open_reader({}, info);
        ASSERT_TRUE(reader);
        ColumnInfo any;
        std::string text;
        for (size_t i = 0; i < fields.size(); ++i) {
            any.items_before = static_cast<int64_t>(i);
            EXPECT_TRUE(read_field(reader.get(), any, 0, 1, &text)) << line;
            EXPECT_EQ(text, fields[i]) << line << " " << i;
        }
        EXPECT_FALSE(read_field(reader.get(), any, 0, 2, &text)) << line;
        EXPECT_FALSE(read_field(reader.get(), any, 0, INT64_MAX, &text)) << line;
    }
    for (const auto &[keyword, message] : {std::pair{"A = B", "Cannot find FIELD_DELIMITER keyword in the label"},
                                           {"FIELD_DELIMITER = COLON", "Unknown FIELD_DELIMITER value in the label"}}) {
        EXPECT_FALSE(tb_open_reader({}, sheet("a", keyword, 1)));
        EXPECT_EQ(Notices::texts.back(), message);
    }
}

// Rows of any length, ended in any way, in order and at random, are the lines of the text.
TEST_F(TableReaderTest, RowsOfSpreadsheetsAreLines) {
    for (const std::vector<std::string> &ends :
         {std::vector<std::string>{"\n"}, {"\r\n"}, {"\r"}, {"\n", "\r\n", "\r"}}) {
        std::vector<std::string> lines;
        std::string data;
        for (int i = 0; i < 5000; ++i) {
            lines.push_back(std::to_string(i) + "," + std::string(static_cast<size_t>(number(0, 70)), 'x'));
            if (i % 997 == 5)
                lines.back().append(300000, 'y');
            data += lines.back() + (i == 4999 ? "" : ends[static_cast<size_t>(number(0, 100)) % ends.size()]);
        }
        const TableInfo info = sheet(data, "FIELD_DELIMITER = COMMA", 6000);
        const auto reader = tb_open_reader({}, info);
        ColumnInfo first;
        std::string a;
        std::string b;
        const auto check = [&](int64_t row) {
            ASSERT_TRUE(read_field(reader.get(), first, row, 1, &a) && read_field(reader.get(), first, row, 2, &b));
            ASSERT_EQ(a + "," + b, lines[static_cast<size_t>(row)]);
        };
        for (int i = 0; i < 200; ++i)
            check(number(0, 4999));
        for (int64_t row = 0; row < 5000; ++row)
            check(row);
        EXPECT_EQ(reader->rows_present(), 5000);
        EXPECT_FALSE(read_field(reader.get(), first, 5000, 1, &a));
    }
    const int file = open(folder_.write("E", "a\r\n\r\n").c_str(), O_RDONLY);
    EXPECT_EQ(LineIndex(file, 0).count(9), 2);
    EXPECT_EQ(LineIndex(file, 5).count(9), 0);
    close(file);
}

// More lines than marks are kept of.
TEST_F(TableReaderTest, TheIndexOfLinesStaysSmall) {
    const int64_t count = (int64_t{1} << 22) + 1000;
    const int file = open(folder_.write("L", std::string(static_cast<size_t>(count), '\n')).c_str(), O_RDONLY);
    LineIndex index(file, 0);
    EXPECT_EQ(index.count(INT64_MAX), count);
    for (const int64_t line : {int64_t{0}, int64_t{127}, count / 2 + 1, count - 1})
        EXPECT_EQ(index.offset_of(line), line);
    EXPECT_EQ(index.offset_of(count), -1);
    close(file);
}

}  // namespace
