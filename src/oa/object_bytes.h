// The bytes of a described object, addressed from its start, whatever the records of its file.
#pragma once

#include "oa/oa.h"
#include "oa/stream.h"

#include <cstdint>

class ObjectBytes {
  public:
    // False after reporting in the name of `routine`.
    bool open(const char *routine, const OaFileKeywords &file);

    // In a file of variable-length records a row of a table is a record: one that is shorter is filled up, with blanks
    // in a table of text. Unless rows are longer than the label's records or shorter than the first one: then the
    // records only carry a sequence of bytes. Does nothing for other files. False after reporting.
    bool take_records_as_rows(int64_t row_bytes);

    // The most that the file can hold of the object; 0 when the object begins at its end or behind it.
    int64_t held() const { return held_; }

    // Number of bytes read from `offset` on, fewer than `count` where the file ends; -1 after reporting. Forward reads
    // of a sequence of variable-length records take one pass.
    int64_t read(int64_t offset, int64_t count, uint8_t *into);

  private:
    bool fetch_record(int64_t record);
    int64_t read_plain(int64_t offset, int64_t count, uint8_t *into);
    int64_t read_rows(int64_t offset, int64_t count, uint8_t *into);
    int64_t read_sequence(int64_t offset, int64_t count, uint8_t *into);

    const char *routine_ = nullptr;
    OaFileKeywords file_;
    OaStreamPtr stream_;
    int64_t held_ = 0;
    int64_t row_bytes_ = 0;  // > 0: each record is a row of so many bytes
    // Variable-length: the record at hand, from 0 at the object's start. A null text behind the last one.
    int64_t record_ = -1;
    const char *text_ = nullptr;  // in the stream's own buffer
    int64_t length_ = 0;
    int64_t record_offset_ = 0;  // of its first byte in the sequence
};
