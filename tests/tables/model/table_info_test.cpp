#include "support/product.h"
#include "tables/tables.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string column(const std::string &more) {
    return "OBJECT = COLUMN\n " + more + "\nEND_OBJECT = COLUMN\n";
}

std::string object(const std::string &class_name, const std::string &inside) {
    return "OBJECT = " + class_name + "\n" + inside + "END_OBJECT = " + class_name + "\n";
}

class TableInfoTest : public ProductTest {
  protected:
    const TableProduct &read(const std::string &label) {
        root_.reset(OaParseLabelFile(folder_.write("T.LBL", label + "END\n").c_str(), nullptr, 0, 1));
        product_ = tb_read_product(root_.get());
        return product_;
    }

    OdlTree root_;
    TableProduct product_;
};

TEST_F(TableInfoTest, TablesAndTheirKeywords) {
    folder_.write("a.dat", "0123456789");
    read(
        "RECORD_TYPE = \"FIXED_LENGTH\"\nRECORD_BYTES = 10\nBLOCKING_TYPE = WILD\nFILE_RECORDS = UNK\n"
        "^TABLE = (\"A.DAT\", 2)\n^TABLE = (\"A.DAT\", 7 <BYTES>)\n^INDEX = (\"none/B.DAT\", 3)\n" +
        object("FILE", "") + object("IMAGE", "") + object("TABLE", "NAME = \"THE \"\nFORMAT = ascii\nROWS = 5\n") +
        object("TABLE", "RECORDS = -3\nBYTES = 7\nROW_PREFIX_BYTES = 2\nINTERCHANGE_FORMAT = EBCDIC\n") +
        object("INDEX", "ROWS = 9223372036854775807\n") + object("COLOR_PALLETTE", ""));
    EXPECT_EQ(product_.file.record_type, "FIXED LENGTH");
    EXPECT_EQ(product_.file.blocking_type, "Unknown");
    EXPECT_EQ(product_.file.file_records, -1);
    const struct {
        const char *name, *type, *file, *format;
        int64_t rows, row_bytes, start;
    } wanted[] = {
        {"THE ", "TABLE", "a.dat", "ASCII", 5, 10, 11},
        {"TABLE", "TABLE", "a.dat", "Unknown", 0, 7, 7},
        {"INDEX", "TABLE", "none/b.dat", "Unknown", tb_most_rows, 10, 21},
        {"COLOR_PALLETTE", "COLOR_PALLETTE", "Unknown", "Unknown", 1, 10, 1},
    };
    ASSERT_EQ(product_.tables.size(), std::size(wanted));
    for (size_t i = 0; i < std::size(wanted); ++i) {
        const TableInfo &table = product_.tables[i];
        EXPECT_EQ(table.name, wanted[i].name);
        EXPECT_EQ(table.type, wanted[i].type);
        EXPECT_TRUE(table.file_name.ends_with(wanted[i].file)) << table.file_name;
        EXPECT_EQ(table.interchange_format, wanted[i].format);
        EXPECT_EQ(table.rows, wanted[i].rows);
        EXPECT_EQ(table.row_bytes, wanted[i].row_bytes);
        EXPECT_EQ(table.start_byte, wanted[i].start);
    }
    EXPECT_TRUE(read("A = 1\n").tables.empty());
    EXPECT_TRUE(reports_.nothing_written());
}

TEST_F(TableInfoTest, TablesInLinesOfTextBeginAtLines) {
    folder_.write("T.TXT", "a\r\nbb\rccc\n\nlast");
    for (const auto &[record, start] : {std::pair{1, 1}, {2, 4}, {3, 7}, {4, 11}, {5, 12}, {6, -1}, {0, -1}})
        EXPECT_EQ(
            read("RECORD_TYPE = STREAM\n^TABLE = (\"T.TXT\", " + std::to_string(record) + ")\n" + object("TABLE", ""))
                .tables[0]
                .start_byte,
            start)
            << record;
}

TEST_F(TableInfoTest, ColumnsContainersAndBits) {
    const std::string bits = object("BIT_COLUMN",
                                    "NAME = B\nBIT_DATA_TYPE = BOOLEAN\nSTART_BIT = 3\nBITS = 2\n"
                                    "ITEMS = 2\nITEM_OFFSET = 9\nUNIT = \"m\"\n");
    read(object("TABLE",
                column("NAME = \"50% %n%s\"\nDATA_TYPE = PC_REAL\nSTART_BYTE = 1\nBYTES = 8\nITEMS = 0") +
                    object("BIT_COLUMN", "") +
                    object("CONTAINER", "START_BYTE = 9\nREPETITIONS = 2\nBYTES = 10\nNAME = OUT\n" +
                                            column("NAME = P\nSTART_BYTE = 1\nBYTES = 4\nITEM_BYTES = 2\nITEMS = 2\n"
                                                   "DATA_TYPE = NOVEL\nITEM_TYPE = MSB_INTEGER") +
                                            object("CONTAINER", "START_BYTE = 5\nREPETITIONS = 3\nBYTES = 2\n" +
                                                                    column("NAME = Q\nSTART_BYTE = 2\nBYTES = 1"))) +
                    object("FIELD", "NAME = F\nBYTES = 1\n" + bits)));
    const TableInfo &table = product_.tables.at(0);
    ASSERT_EQ(table.containers.size(), 2U);
    EXPECT_EQ(table.containers[0].name, "OUT");
    std::string text;
    for (const ColumnInfo &at : table.columns)
        text += util_format("%s %s %lld+%lld @%lld x%lld #%lld\n", (at.name + at.repetition).c_str(),
                            at.data_type.c_str(), static_cast<long long>(at.start_byte),
                            static_cast<long long>(at.bytes), static_cast<long long>(at.item_offset),
                            static_cast<long long>(at.items), static_cast<long long>(at.container_number));
    EXPECT_EQ(text,
              "50% %n%s PC REAL 1+8 @8 x0 #0\n"
              "P_1 MSB INTEGER 9+2 @2 x2 #1\nQ_1_1 Unknown 14+1 @1 x1 #2\nQ_1_2 Unknown 16+1 @1 x1 #2\n"
              "Q_1_3 Unknown 18+1 @1 x1 #2\n"
              "P_2 MSB INTEGER 19+2 @2 x2 #1\nQ_2_1 Unknown 24+1 @1 x1 #2\nQ_2_2 Unknown 26+1 @1 x1 #2\n"
              "Q_2_3 Unknown 28+1 @1 x1 #2\n"
              "F Unknown -1+1 @1 x1 #0\n");
    const ColumnInfo &last = table.columns.back();
    EXPECT_EQ(last.items_before, 11);
    ASSERT_EQ(last.bit_columns.size(), 1U);
    EXPECT_EQ(last.bit_columns[0].data_type, "BOOLEAN");
    EXPECT_EQ(last.bit_columns[0].start_byte, 3);
    EXPECT_EQ(last.bit_columns[0].item_offset, 2);  // ITEM_OFFSET is not what bit columns go by

    const ColumnView view(table);
    std::string names;
    for (int64_t i = 0; i < view.size(); ++i)
        names += view.name(i) + (view.unit(i).empty() ? " " : "[" + view.unit(i) + "] ");
    EXPECT_EQ(names, "50% %n%s P_1_1 P_1_2 Q_1_1 Q_1_2 Q_1_3 P_2_1 P_2_2 Q_2_1 Q_2_2 Q_2_3 B_1[m] B_2[m] ");
    EXPECT_EQ(ColumnView(table, {false, false}).size(), 10);
    EXPECT_EQ(view.remark(), "");
}

TEST_F(TableInfoTest, HugeClaimsAreCut) {
    std::string nested = column("NAME = " + std::string(5000, 'n') + "\nSTART_BYTE = 9223372036854775807\nBYTES = 4");
    for (int depth = 0; depth < 70; ++depth)
        nested = object("CONTAINER", "START_BYTE = 1\nREPETITIONS = 1000000000\nBYTES = 4\n" + nested);
    const std::string most = object(
        "CONTAINER", "REPETITIONS = 1000000000\nBYTES = 4\n" + column("START_BYTE = 1\nBYTES = 4\nITEMS = 1000000000"));
    std::string many;
    for (int i = 0; i < 60000; ++i)
        many += column("NAME = C");
    read(object("TABLE", nested) + object("TABLE", most) + object("TABLE", many) +
         object("TABLE", object("CONTAINER", "REPETITIONS = 1000000000\n")) +
         object("TABLE", column("BYTES = 4\nITEMS = 1000000000")) +
         object("SERIES", object("CONTAINER", "START_BYTE = -9223372036854775808\nBYTES = 4\n" +
                                                  column("START_BYTE = 1\nBYTES = 4"))) +
         "^SERIES = (\"a.dat\", -9223372036854775808 <BYTES>)\n");
    EXPECT_EQ(product_.tables.back().start_byte, -1);
    EXPECT_EQ(product_.tables.back().columns.at(0).start_byte, -1);
    const int64_t columns[] = {0, tb_most_columns, tb_most_columns, 0, 1};
    const bool is_cut[] = {true, true, true, false, true};
    for (size_t i = 0; i < std::size(columns); ++i) {
        EXPECT_EQ(product_.tables[i].column_count(), columns[i]) << i;
        const ColumnView view(product_.tables[i]);
        EXPECT_EQ(!view.remark().empty(), is_cut[i]) << i;
        EXPECT_LE(view.size(), tb_most_columns);
    }
}

// --- Flattening ---------------------------------------------------------------------------------------------------

std::string columns_of(const ObjDesc *table) {
    std::string text;
    for (const ObjDesc *child = table->first_child; child; child = child->right_sibling)
        text += std::string(child->class_name) + " " + keyword_of(child, "NAME") + " " +
                keyword_of(child, "START_BYTE") + "+" + keyword_of(child, "BYTES") + "\n";
    return text;
}

TEST_F(TableInfoTest, FlattenedTables) {
    read(object("TABLE", column("NAME = A\nSTART_BYTE = 1\nBYTES = 4\n" + object("BIT_COLUMN", "NAME = B\n")) +
                             object("CONTAINER", "START_BYTE = 5\nREPETITIONS = 2\nBYTES = 6\n" +
                                                     column("NAME = P\nSTART_BYTE = 1\nBYTES = 2") +
                                                     object("CONTAINER",
                                                            "NAME = I\nSTART_BYTE = 3\nREPETITIONS = 2\n"
                                                            "BYTES = 2\n" +
                                                                column("NAME = Q\nSTART_BYTE = 1\n"
                                                                       "BYTES = 2"))) +
                             object("ARRAY", "NAME = R\nAXES = 2\nAXIS_ITEMS = (3, 2)\nOFFSET = 17\n" +
                                                 object("ELEMENT", "DATA_TYPE = PC_REAL\nBYTES = 4\n")) +
                             column("NAME = Z\nSTART_BYTE = 42\nBYTES = 1")));
    ObjDesc *const table = const_cast<ObjDesc *>(product_.tables[0].object);
    const std::string before = columns_of(table);
    FlatTable flat;
    EXPECT_EQ(flatten_table(table, &flat), 0) << error_string;
    // START_BYTE + r x BYTES + start of the container - the smallest START_BYTE - 1
    EXPECT_EQ(columns_of(flat.table),
              "COLUMN A 1+4\nCOLUMN P 4+2\nCOLUMN Q 5+2\nCOLUMN Q 7+2\nCOLUMN P 10+2\nCOLUMN Q 11+2\nCOLUMN Q 13+2\n"
              "COLUMN R 18+24\nCOLUMN Z 42+1\n");
    EXPECT_EQ(flat.columns, 9);
    EXPECT_EQ(keyword_of(flat.table, "COLUMNS"), "9");
    EXPECT_FALSE(flat.table->first_child->first_child);  // the bit column
    EXPECT_EQ(OaCheckODLTree(flat.root.get()), 0);
    EXPECT_EQ(columns_of(table), before);
    EXPECT_TRUE(flat.has_containers);
}

TEST_F(TableInfoTest, WhatCannotBeFlattenedIsTold) {
    const std::string inside = column("START_BYTE = 1\nBYTES = 2");
    const std::string element = object("ELEMENT", "DATA_TYPE = PC_REAL\nBYTES = 4\n");
    const std::pair<std::string, const char *> cases[] = {
        {object("CONTAINER", "BYTES = 2\nSTART_BYTE = 1\n" + inside), "Container handling failure"},
        {object("CONTAINER", "REPETITIONS = 1\nBYTES = 2\nSTART_BYTE = 1\n" + inside) + object("CONTAINER", inside),
         "Couldn't process CONTAINER object"},
        {object("ARRAY", "AXIS_ITEMS = 2\nOFFSET = 1\n" + element), "Array handling:  AXES read failed"},
        {object("ARRAY", "AXES = 2\nAXIS_ITEMS = 2\nOFFSET = 1\n" + element),
         "Array handling:  AXIS_ITEMS read failed"},
        {object("ARRAY", "AXES = 1\nAXIS_ITEMS = 2\nOFFSET = 1\n"), "Array handling:  Element not found"},
        {object("ARRAY", "AXES = 1\nAXIS_ITEMS = 2\n" + element), "Array handling:  OFFSET read failed"},
        {object("ARRAY", "AXES = 2\nAXIS_ITEMS = (4294967296, 4294967296)\nOFFSET = 1\n" + element),
         "Array handling:  copying array data failed"},
    };
    for (const auto &[label, message] : cases) {
        read(object("TABLE", label));
        FlatTable flat;
        EXPECT_EQ(flatten_table(const_cast<ObjDesc *>(product_.tables[0].object), &flat), 1) << message;
        EXPECT_NE(error_string.find(message), std::string::npos) << error_string;
    }
    FlatTable flat;
    read(object("TABLE", object("CONTAINER", "REPETITIONS = 1000000000\nBYTES = 2\nSTART_BYTE = 1\n" + inside)));
    EXPECT_EQ(flatten_table(const_cast<ObjDesc *>(product_.tables[0].object), &flat), 0);
    EXPECT_TRUE(flat.columns_left_out);
    EXPECT_EQ(flat.columns, tb_most_columns);
}

}  // namespace
