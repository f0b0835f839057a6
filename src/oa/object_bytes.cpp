#include "oa/object_bytes.h"

#include <algorithm>
#include <cstring>

bool ObjectBytes::open(const char *routine, const OaFileKeywords &file) {
    routine_ = routine;
    file_ = file;
    // Data are bytes whatever the lines and fixed records of the file: a stream of lines would be cut at every line
    // feed. Only variable-length records have bytes between them that are no data.
    const bool variable = file.record_type == OA_VARIABLE_LENGTH;
    stream_.reset(OalOpenStream(file.file_name.c_str(), variable ? OA_VARIABLE_LENGTH : OA_UNDEFINED,
                                variable ? file.record_bytes : 0, 0, "r"));
    if (!stream_) {
        OaReportFailure(700, "%s: OalOpenStream returned error.", routine);
        return false;
    }
    const int64_t file_bytes = util_file_size(stream_->file.get());
    held_ = std::max<int64_t>(0, variable ? file_bytes : file_bytes - file.start);
    // Every read is for the bytes wanted; a buffer would fetch a page more at each seek.
    if (!variable)
        setvbuf(stream_->file.get(), nullptr, _IONBF, 0);
    return true;
}

bool ObjectBytes::take_records_as_rows(int64_t row_bytes) {
    if (stream_->record_type != OA_VARIABLE_LENGTH)
        return true;
    if (!fetch_record(0))
        return false;
    const bool fits = file_.record_bytes < 1 || row_bytes <= file_.record_bytes;
    row_bytes_ = fits && length_ <= row_bytes ? row_bytes : 0;
    return true;
}

int64_t ObjectBytes::read(int64_t offset, int64_t count, uint8_t *into) {
    if (stream_->record_type != OA_VARIABLE_LENGTH)
        return read_plain(offset, count, into);
    return row_bytes_ > 0 ? read_rows(offset, count, into) : read_sequence(offset, count, into);
}

int64_t ObjectBytes::read_plain(int64_t offset, int64_t count, uint8_t *into) {
    if (offset >= held_)
        return 0;
    int64_t bytes_read = 0;
    while (bytes_read < count) {
        char *target = reinterpret_cast<char *>(into) + bytes_read;
        int64_t got = 0;
        const int status =
            OalReadStream(stream_.get(), count - bytes_read, &target, file_.start + offset + bytes_read, &got);
        if (status < 0) {
            OaReportFailure(700, "%s: OalReadStream returned error, aborting.", routine_);
            return -1;
        }
        bytes_read += got;
        if (status != 0 || got == 0)
            break;
    }
    return bytes_read;
}

// False after reporting; behind the last record the text is null. Records ahead are read rather than sought, which
// would report the end of the file.
bool ObjectBytes::fetch_record(int64_t record) {
    if (record == record_)
        return true;
    int64_t position = -1;
    if (record < record_ || record_ < 0) {
        record_ = text_ && record_ >= 0 ? record : 0;
        position = file_.start + record_;
    } else {
        ++record_;
    }
    for (;; ++record_, position = -1) {
        char *own_buffer = nullptr;
        const int status = OalReadStream(stream_.get(), 0, &own_buffer, position, &length_);
        if (status < 0) {
            record_ = -1;
            OaReportFailure(700, "%s: OalReadStream returned error, aborting.", routine_);
            return false;
        }
        text_ = status != 0 && length_ == 0 ? nullptr : own_buffer;
        if (!text_)
            record_ = record;
        if (record_ == record)
            return true;
    }
}

int64_t ObjectBytes::read_rows(int64_t offset, int64_t count, uint8_t *into) {
    const int filler = file_.interchange_format == OA_ASCII ? ' ' : 0;
    int64_t bytes_read = 0;
    while (bytes_read < count) {
        const int64_t at = offset + bytes_read;
        if (!fetch_record(at / row_bytes_))
            return -1;
        if (!text_)
            break;
        const int64_t from = at % row_bytes_;
        const int64_t wanted = std::min(count - bytes_read, row_bytes_ - from);
        const int64_t present = std::clamp<int64_t>(length_ - from, 0, wanted);
        memcpy(into + bytes_read, text_ + from, static_cast<size_t>(present));
        memset(into + bytes_read + present, filler, static_cast<size_t>(wanted - present));
        bytes_read += wanted;
    }
    return bytes_read;
}

int64_t ObjectBytes::read_sequence(int64_t offset, int64_t count, uint8_t *into) {
    if (record_ < 0 || offset < record_offset_) {
        if (!fetch_record(0))
            return -1;
        record_offset_ = 0;
    }
    int64_t bytes_read = 0;
    while (text_ && bytes_read < count) {
        const int64_t from = offset + bytes_read - record_offset_;
        if (from >= length_) {
            record_offset_ += length_;
            if (!fetch_record(record_ + 1))
                return -1;
            continue;
        }
        const int64_t present = std::min(count - bytes_read, length_ - from);
        memcpy(into + bytes_read, text_ + from, static_cast<size_t>(present));
        bytes_read += present;
    }
    return bytes_read;
}
