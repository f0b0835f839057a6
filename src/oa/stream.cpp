#include "oa/stream.h"

#include "base/text.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

constexpr int64_t text_buffer_bytes = 1024;
constexpr int64_t detected_record_bytes = 1022;  // of a file found to hold variable-length records
constexpr int64_t longest_record = 32767;        // what a variable-length record's 2-byte length can say
constexpr int64_t spare_bytes = 20;
constexpr size_t file_buffer_bytes = 64 * 1024;
constexpr int64_t cached_record_step = 64;

// --- Opening ------------------------------------------------------------------------------------------------------

FilePtr open_file(const std::string &name, bool reading) {
    return reading ? util_open_regular(name.c_str()) : FilePtr(fopen(name.c_str(), "wb"));
}

// Under the given name or one of its stand-ins; `name` becomes the one that opened.
FilePtr open_with_fallbacks(std::string *name) {
    const size_t slash = name->rfind('/');
    const std::string folder = slash == std::string::npos ? "" : name->substr(0, slash + 1);
    const std::string base = name->substr(folder.size());
    std::vector<std::string> candidates = {*name, base};
    if (!util_contains(*name, ";"))
        candidates.push_back(*name + ";1");
    candidates.push_back(util_lower(base));
    candidates.push_back(folder + util_lower(base));
    for (const std::string &candidate : candidates) {
        FilePtr file = open_file(candidate, true);
        if (file) {
            *name = candidate;
            return file;
        }
    }
    return nullptr;
}

bool detect_record_type(OaStream *stream) {
    char start[6];
    if (fread(start, 1, sizeof(start), stream->file.get()) != sizeof(start)) {
        OaReportFailure(700, "%s: FREAD() failed to read 6 bytes to determine actual record type.", "OalOpenStream");
        return false;
    }
    const std::string_view signature(start, sizeof(start));
    if (signature == "GIF87a" || signature == "GIF89a")
        stream->record_type = OA_GIF;
    else
        stream->record_type = start[1] == '\0' ? OA_VARIABLE_LENGTH : OA_STREAM;
    stream->record_bytes = stream->record_type == OA_VARIABLE_LENGTH ? detected_record_bytes : text_buffer_bytes;
    if (fseeko(stream->file.get(), 0, SEEK_SET) != 0) {
        OaReportFailure(700, "%s: couldn't freopen() %s.", "OalOpenStream", stream->file_name.c_str());
        return false;
    }
    return true;
}

// Record type and length that can be read with, and the buffer's size.
void settle_record_format(OaStream *stream) {
    if (stream->record_type == OA_FIXED_LENGTH && stream->record_bytes < 1)
        stream->record_type = OA_UNDEFINED;
    switch (stream->record_type) {
        case OA_FIXED_LENGTH: {
            // A record longer than the file can only be read short, which one byte more than the file shows.
            const int64_t file_bytes = util_file_size(stream->file.get());
            stream->buffer_size = std::min(stream->record_bytes, std::max<int64_t>(file_bytes, 0) + 1);
            break;
        }
        case OA_VARIABLE_LENGTH:
            if (stream->record_bytes < 1)
                stream->record_bytes = longest_record;
            stream->buffer_size = std::min(stream->record_bytes, longest_record) + 2;
            break;
        default:
            stream->record_bytes = text_buffer_bytes;
            stream->buffer_size = text_buffer_bytes;
            break;
    }
}

// --- Reading ------------------------------------------------------------------------------------------------------

// Where a read goes: the caller's buffer, or the stream's own and no more than that holds.
struct Target {
    char *bytes;
    bool is_own;
};

int64_t read_bytes(OaStream *stream, char *bytes, int64_t count) {
    return static_cast<int64_t>(fread(bytes, 1, static_cast<size_t>(count), stream->file.get()));
}

int64_t rest_of_record(const OaStream *stream) {
    const int64_t line_feed = stream->flags & OA_LINE_FEED_AT_END ? 1 : 0;
    const int64_t step = stream->record_bytes > line_feed ? stream->record_bytes - line_feed : stream->record_bytes;
    return stream->record_bytes - stream->current_position % step;
}

int read_fixed(OaStream *stream, int64_t wanted, Target target, int64_t *bytes_read) {
    int64_t count = wanted < 1 ? rest_of_record(stream) : wanted;
    if (target.is_own)
        count = std::min(count, stream->buffer_size);
    *bytes_read = read_bytes(stream, target.bytes, count);
    const int64_t position = stream->current_position;
    stream->current_position += *bytes_read;
    if (*bytes_read == count) {
        if (wanted < 0 && (stream->flags & OA_LINE_FEED_AT_END) && stream->record_bytes <= count)
            target.bytes[stream->record_bytes - 1] = '\n';
        return 0;
    }
    if (feof(stream->file.get()))
        return 1;
    OaReportFailure(700,
                    "%s: FREAD returned error\nfile_bytes_to_read = %ld, bytes_read = %ld\n"
                    "stream_id->current_position = %ld\n",
                    "OalReadStream", static_cast<long>(count), static_cast<long>(*bytes_read),
                    static_cast<long>(position));
    return -1;
}

bool is_line_end(int c) {
    return c == '\n' || c == '\r';
}

// A line ends with a line feed, a carriage return or a pair of both, which is delivered.
int read_line(OaStream *stream, Target target, int64_t *bytes_read) {
    FILE *file = stream->file.get();
    int64_t length = 0;
    int c = 0;
    while (length < stream->buffer_size - 1 && !is_line_end(c)) {
        c = getc_unlocked(file);
        if (c == EOF)
            break;
        target.bytes[length++] = static_cast<char>(c);
    }
    if (length == 0) {
        if (feof(file))
            return 1;
        oa_errno = 902;
        return -1;
    }
    if (is_line_end(c) && length < stream->buffer_size - 2) {
        const int next = getc_unlocked(file);
        if (is_line_end(next) && next != c)
            target.bytes[length++] = static_cast<char>(next);
        else
            ungetc(next, file);
    }
    target.bytes[length] = '\0';
    stream->current_position += length;
    *bytes_read = length;
    return 0;
}

int read_undefined(OaStream *stream, int64_t wanted, Target target, int64_t *bytes_read) {
    int64_t count = wanted < 1 ? stream->buffer_size : wanted;
    if (target.is_own)
        count = std::min(count, stream->buffer_size);
    *bytes_read = read_bytes(stream, target.bytes, count);
    stream->current_position += *bytes_read;
    if (*bytes_read > 0)
        return 0;
    if (feof(stream->file.get()))
        return 1;
    OaReportFailure(902, "%s: FREAD returned 0 bytes\nfile_bytes_to_read = %ld\nstream_id->current_position = %ld\n",
                    "OalReadStream", static_cast<long>(count), static_cast<long>(stream->current_position));
    return -1;
}

// --- Variable-length records ----------------------------------------------------------------------------------------

// The 2-byte length of the next record, or its size as read when that is short. A length that no record has leaves the
// file before it, so that reading on fails the same way.
struct RecordLength {
    int64_t bytes_read = 0;
    int value = 0;
    bool is_valid = false;
};

RecordLength read_record_length(OaStream *stream) {
    FILE *file = stream->file.get();
    RecordLength length;
    uint8_t bytes[2];
    length.bytes_read = static_cast<int64_t>(fread(bytes, 1, sizeof(bytes), file));
    if (length.bytes_read < 2)
        return length;
    length.value = static_cast<int16_t>(bytes[0] | bytes[1] << 8);
    length.is_valid = length.value >= 0 && length.value <= stream->record_bytes;
    if (!length.is_valid)
        fseeko(file, -2, SEEK_CUR);
    return length;
}

void report_record_length(const OaStream *stream, const char *routine, int length) {
    OaReportFailure(700,
                    "%s: invalid current variable-length record size: %d\n stream_id->record_bytes = %ld, "
                    " stream_id->current_position = %ld.",
                    routine, length, static_cast<long>(stream->record_bytes),
                    static_cast<long>(stream->current_position));
}

// Passes the pad byte behind a record of odd length, which the last record of a file may lack, and counts the record.
void finish_record(OaStream *stream, int length) {
    if (length % 2 != 0)
        getc_unlocked(stream->file.get());
    ++stream->current_position;
    const auto cached = static_cast<int64_t>(stream->record_offsets.size());
    if (stream->current_position == cached * cached_record_step)
        stream->record_offsets.push_back(ftello(stream->file.get()));
}

int read_variable(OaStream *stream, Target target, int64_t *bytes_read) {
    constexpr const char *routine = "OalReadStream";
    const RecordLength length = read_record_length(stream);
    if (length.bytes_read < 2) {
        if (feof(stream->file.get()))
            return 1;
        OaReportFailure(900,
                        "%s: FREAD() error; didn't read 2 record length bytes.\n"
                        "stream_id->current_position = %ld.",
                        routine, static_cast<long>(stream->current_position));
        return -1;
    }
    if (!length.is_valid) {
        report_record_length(stream, routine, length.value);
        return -1;
    }
    *bytes_read = read_bytes(stream, target.bytes, length.value);
    if (*bytes_read < length.value) {
        if (feof(stream->file.get()))
            return 1;
        OaReportFailure(700, "%s: FREAD error(); didn't read %d bytes.\n", routine, length.value);
        return -1;
    }
    finish_record(stream, length.value);
    return 0;
}

bool skip_record(OaStream *stream) {
    constexpr const char *routine = "OalSeek";
    const RecordLength length = read_record_length(stream);
    if (length.bytes_read < 2) {
        OaReportFailure(700, "%s: FREAD error; didn't read 2 bytes.", routine);
        return false;
    }
    if (!length.is_valid) {
        report_record_length(stream, routine, length.value);
        return false;
    }
    const int64_t bytes_read = read_bytes(stream, stream->buffer.get(), length.value);
    if (bytes_read < length.value) {
        OaReportFailure(
            700, "%s: FREAD error; didn't read %d bytes. stream_id->current_position = %ld, bytes_read = %ld", routine,
            length.value, static_cast<long>(stream->current_position), static_cast<long>(bytes_read));
        return false;
    }
    finish_record(stream, length.value);
    return true;
}

// --- Positioning --------------------------------------------------------------------------------------------------

int seek_record(OaStream *stream, int64_t record) {
    const auto last_cached = static_cast<int64_t>(stream->record_offsets.size()) - 1;
    const int64_t nearest = std::min(record / cached_record_step, last_cached);
    const int64_t nearest_record = nearest * cached_record_step;
    if (record < stream->current_position || stream->current_position < nearest_record) {
        fseeko(stream->file.get(), stream->record_offsets[static_cast<size_t>(nearest)], SEEK_SET);
        stream->current_position = nearest_record;
    }
    while (stream->current_position < record)
        if (!skip_record(stream))
            return oa_errno;
    return 0;
}

int skip_bytes(OaStream *stream, int64_t count) {
    while (count > 0) {
        const int64_t wanted = std::min(count, stream->buffer_size);
        const int64_t bytes_read = read_bytes(stream, stream->buffer.get(), wanted);
        stream->current_position += bytes_read;
        count -= bytes_read;
        if (bytes_read < wanted) {
            OaReportFailure(700, "%s: FREAD error; didn't read %ld bytes.", "OalSeek", static_cast<long>(count));
            return oa_errno;
        }
    }
    return 0;
}

int seek_byte(OaStream *stream, int64_t position) {
    if (!(stream->flags & OA_IS_SEEKABLE)) {
        if (position > stream->current_position)
            return skip_bytes(stream, position - stream->current_position);
        OaReportFailure(520, "%s: can't seek backwards because OA_IS_SEEKABLE bit in stream_id->flags isn't set",
                        "OalSeek");
        return oa_errno;
    }
    if (fseeko(stream->file.get(), position, SEEK_SET) != 0) {
        OaReportFailure(700, "%s: couldn't seek to byte %ld of %s.", "OalSeek", static_cast<long>(position),
                        stream->file_name.c_str());
        return oa_errno;
    }
    stream->current_position = position;
    return 0;
}

}  // namespace

OaStream *OalOpenStream(const char *file_name, int record_type, int64_t record_bytes, int, const char *mode) {
    if (!file_name) {
        OaReportFailure(501, "%s: filename is NULL", __func__);
        return nullptr;
    }
    if (record_type < OA_UNKNOWN_RECORD_TYPE || record_type >= OA_GIF) {
        OaReportFailure(502, "%s: invalid record_type: %d.", __func__, record_type);
        return nullptr;
    }
    if (!mode || (*mode != 'r' && *mode != 'w')) {
        OaReportFailure(502, "%s: read_write_mode must be \"r\" or \"w\".", __func__);
        return nullptr;
    }
    const bool reading = *mode == 'r';
    if (!reading && record_type == OA_UNKNOWN_RECORD_TYPE) {
        OaReportFailure(520, "%s: can't create a file for write when record_type\nis OA_UNKNOWN_RECORD_TYPE ",
                        __func__);
        return nullptr;
    }

    OaStreamPtr stream(new OaStream);
    stream->file_name = file_name;
    stream->file = reading ? open_with_fallbacks(&stream->file_name) : open_file(file_name, false);
    if (!stream->file) {
        OaReportFailure(700, "%s: couldn't open %s ", __func__, file_name);
        return nullptr;
    }
    if (stream->file_name != file_name)
        OaReportFailure(950, "%s: couldn't open %s, but opened %s", __func__, file_name, stream->file_name.c_str());
    // One system call for many records.
    stream->file_buffer.reset(static_cast<char *>(OaMalloc(file_buffer_bytes)));
    if (stream->file_buffer)
        setvbuf(stream->file.get(), stream->file_buffer.get(), _IOFBF, file_buffer_bytes);
    stream->record_type = record_type;
    stream->record_bytes = record_bytes;
    stream->record_offsets = {0};
    if (record_type == OA_UNKNOWN_RECORD_TYPE && !detect_record_type(stream.get()))
        return nullptr;
    settle_record_format(stream.get());
    stream->buffer.reset(static_cast<char *>(OaMalloc(static_cast<size_t>(stream->buffer_size + spare_bytes))));
    if (!stream->buffer) {
        OaReportFailure(720, "%s: OaMalloc failed! Out of memory!", __func__);
        return nullptr;
    }
    return stream.release();
}

int OalReadStream(OaStream *stream, int64_t bytes_to_read, char **buf_ptr, int64_t start_position,
                  int64_t *bytes_read) {
    const char *missing = !stream ? "stream_id" : !buf_ptr ? "buf_ptr" : !bytes_read ? "bytes_read" : nullptr;
    if (missing) {
        OaReportFailure(501, "%s: %s is NULL.", __func__, missing);
        return -1;
    }
    *bytes_read = 0;
    if (start_position >= 0) {
        const int code = OalSeek(stream, start_position);
        if (code != 0) {
            OaReportFailure(700, "%s: OalSeek returned error: %d.", __func__, code);
            return -1;
        }
    }
    const Target target = {*buf_ptr ? *buf_ptr : stream->buffer.get(), *buf_ptr == nullptr};
    *buf_ptr = target.bytes;
    switch (stream->record_type) {
        case OA_FIXED_LENGTH:
            return read_fixed(stream, bytes_to_read, target, bytes_read);
        case OA_STREAM:
            return read_line(stream, target, bytes_read);
        case OA_VARIABLE_LENGTH:
            return read_variable(stream, target, bytes_read);
        case OA_UNDEFINED:
            return read_undefined(stream, bytes_to_read, target, bytes_read);
        default:
            return 0;
    }
}

int OalSeek(OaStream *stream, int64_t position) {
    if (!stream) {
        OaReportFailure(501, "%s: stream_id is NULL.", __func__);
        return oa_errno;
    }
    if (position < 0) {
        OaReportFailure(502, "%s: invalid position: %ld.", __func__, static_cast<long>(position));
        return oa_errno;
    }
    if (position == stream->current_position)
        return 0;
    switch (stream->record_type) {
        case OA_FIXED_LENGTH:
        case OA_STREAM:
        case OA_UNDEFINED:
            return seek_byte(stream, position);
        case OA_VARIABLE_LENGTH:
            return seek_record(stream, position);
        default:
            OaReportFailure(502, "%s: unknown record_type: %d.", __func__, stream->record_type);
            return oa_errno;
    }
}

void OalCloseStream(OaStream *stream) {
    delete stream;
}
