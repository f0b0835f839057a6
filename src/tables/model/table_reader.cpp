// Rows of fixed length, wherever the file's blocks put them.
#include "tables/model/table_reader.h"

#include "base/notice.h"
#include "base/text.h"
#include "oa/sdt_build.h"
#include "tables/model/byte_window.h"
#include "tables/model/keyword_text.h"
#include "tables/model/out_of_memory.h"
#include "tables/model/spreadsheet_reader.h"

#include <algorithm>
#include <cinttypes>

namespace {

class FixedReader : public TableReader {
  public:
    FixedReader(const TableFileInfo &file, const TableInfo &table, FilePtr data)
        : table_(table), window_(std::move(data)) {
        has_rows_ = table.row_bytes > 0 &&
                    !__builtin_add_overflow(table.row_prefix_bytes, table.row_bytes, &row_length_) &&
                    !__builtin_add_overflow(row_length_, table.row_suffix_bytes, &row_length_);
        column_major_ = OalIsColumnMajor(table.object);
        int64_t block = 0;
        if (file.blocking_type == "UNSPANNED" && file.block_bytes > 0 && file.block_records > 0 &&
            file.record_bytes > 0 && !__builtin_mul_overflow(file.record_bytes, file.block_records, &block)) {
            block_ = block;
            pad_ = file.block_bytes - block;
        }
    }

    int64_t rows_present() override {
        if (!has_rows_)
            return 0;
        if (column_major_)  // what is missing are the last columns; each row has a byte of the first at least
            return std::clamp<int64_t>(window_.file_size() - std::max<int64_t>(table_.start_byte, 1) + 1, 0,
                                       table_.rows);
        int64_t present = 0;
        int64_t beyond = table_.rows;
        while (present < beyond) {
            const int64_t row = present + (beyond - present) / 2;
            const int64_t offset = offset_of(row, table_.start_byte - 1);
            if (offset >= 0 && offset < window_.file_size())
                present = row + 1;
            else
                beyond = row;
        }
        return present;
    }

    bool gives_text() const override { return false; }

    bool read(int64_t row, const ColumnInfo &column, int64_t item, FieldBytes *field) override {
        *field = {{}, 0, offset_of_field(row, column, item)};
        if (field->offset < 0 || column.bytes < 1)
            return false;
        const int64_t width = std::min(column.bytes, tb_widest_field);
        const auto bytes = window_.from(field->offset, width, offset_of(row, table_.start_byte - 1));
        if (bytes.empty())
            return false;
        const auto size = static_cast<size_t>(width);
        field->held = static_cast<int64_t>(std::min(bytes.size(), size));
        if (bytes.size() >= size) {
            field->bytes = bytes.first(size);
        } else {
            filled_.assign(size, 0);
            std::ranges::copy(bytes, filled_.begin());
            field->bytes = filled_;
        }
        return true;
    }

  private:
    // Byte of the file, from 0, `distance` bytes into the row as it would be without blocks; -1 for none.
    int64_t offset_of(int64_t row, int64_t distance) const {
        int64_t offset = 0;
        int64_t pads = 0;
        if (__builtin_mul_overflow(row, row_length_, &offset) || __builtin_add_overflow(offset, distance, &offset) ||
            offset < 0)
            return -1;
        if (block_ > 0 && (__builtin_mul_overflow(offset / block_, pad_, &pads) ||
                           __builtin_add_overflow(offset, pads, &offset) || offset < 0))
            return -1;
        return offset;
    }

    int64_t offset_of_field(int64_t row, const ColumnInfo &column, int64_t item) const {
        if (!has_rows_ || row < 0 || row >= table_.rows || item < 1 || column.start_byte == -1)
            return -1;
        int64_t distance = 0;
        int64_t start = 0;
        if (__builtin_mul_overflow(item - 1, column.item_offset, &distance) ||
            __builtin_add_overflow(table_.start_byte, table_.row_prefix_bytes, &start) ||
            __builtin_add_overflow(distance, start, &distance) || __builtin_sub_overflow(distance, 2, &distance))
            return -1;
        if (column_major_)
            return place_in_columns(row, column, &start) && !__builtin_add_overflow(distance, start, &distance)
                       ? offset_of(0, distance)
                       : -1;
        return __builtin_add_overflow(distance, column.start_byte, &distance) ? -1 : offset_of(row, distance);
    }

    // Where each column's fields lie together: what START_BYTE would be if all of the table were one row.
    bool place_in_columns(int64_t row, const ColumnInfo &column, int64_t *place) const {
        int64_t before = 0;
        int64_t within = 0;
        return !__builtin_sub_overflow(column.start_byte, 1, &before) &&
               !__builtin_mul_overflow(before, table_.rows, &before) &&
               !__builtin_mul_overflow(row, tb_number_of({"BYTES"}, column.object, column.bytes), &within) &&
               !__builtin_add_overflow(before, within, place) && !__builtin_add_overflow(*place, 1, place);
    }

    const TableInfo &table_;
    ByteWindow window_;
    int64_t row_length_ = 0;
    bool has_rows_ = false;
    bool column_major_ = false;
    int64_t block_ = 0;  // bytes of records in a block of the file; 0: records follow one another
    int64_t pad_ = 0;    // bytes behind them
    std::vector<uint8_t> filled_;
};

}  // namespace

std::unique_ptr<TableReader> tb_open_reader(const TableFileInfo &file, const TableInfo &table) {
    FilePtr data = util_open_regular(table.file_name.c_str());
    if (!data) {
        OaReportFailure(700, "%s: can't open the data file %s.", __func__, table.file_name.c_str());
        return nullptr;
    }
    if (table.is_spreadsheet())
        return open_spreadsheet(table, std::move(data));
    return std::make_unique<FixedReader>(file, table, std::move(data));
}

std::string tb_missing_text(const FieldBytes &field) {
    return util_format("0 bytes read. Current byte location in data file is %" PRId64, field.offset);
}

std::string tb_read_column_2(TableReader *reader, const ColumnInfo &column, int64_t row, int64_t item) {
    return tb_or_out_of_memory("Lumacart tb_read_column ran out of memory", [&]() -> std::string {
        FieldBytes field;
        if (reader->read(row, column, item, &field))
            return {field.bytes.begin(), field.bytes.end()};
        util_notice(NoticeKind::Error, tb_missing_text(field));
        return "";
    });
}

bool read_field(TableReader *reader, const ColumnInfo &column, int64_t row, int64_t item, std::string *text) {
    FieldBytes field;
    if (!reader->read(row, column, item, &field))
        return false;
    text->assign(field.bytes.begin(), field.bytes.end());
    return true;
}
