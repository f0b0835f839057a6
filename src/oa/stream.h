// One open data or label file, read in the units of its record format. Positions are 64-bit.
#pragma once

#include "base/file.h"
#include "oa/oa.h"

#include <cstdint>
#include <string>
#include <vector>

enum OaStreamFlags {
    OA_IS_SEEKABLE = 1,       // may be positioned directly
    OA_LINE_FEED_AT_END = 2,  // a whole fixed-length record asked for by a negative count ends with a line feed
};

struct OaStream {
    std::string file_name;  // as opened: a fallback name when the first did not open
    int record_type = OA_UNDEFINED;
    int64_t record_bytes = 0;
    OaPtr<char> file_buffer;  // what the file is read through: declared first, as it outlives the file
    FilePtr file;
    OaPtr<char> buffer;  // buffer_size bytes and 20 more
    int64_t buffer_size = 0;
    int64_t current_position = 0;  // bytes consumed; records for variable-length files
    int flags = OA_IS_SEEKABLE;
    std::vector<int64_t> record_offsets;  // variable-length: byte offset of every 64th record met so far
};

// Opens `file_name` ("r" or "w"), trying its base name, ";1" and lower case in turn when reading. Record type 0 is
// decided from the first bytes. Fixed-length records without a length are read as undefined, variable-length ones as up
// to 32767 bytes. `option` is reserved: 0. Null after reporting.
OaStream *OalOpenStream(const char *file_name, int record_type, int64_t record_bytes, int option, const char *mode);

// Reads one unit (`bytes_to_read` < 1) or that many bytes into `*buf_ptr`; when that is null, into the stream's own
// buffer, whose address is stored there. `start_position` >= 0 seeks first. Returns 0 with the count in `bytes_read`,
// 1 at end of file (a record cut short there is delivered, too), -1 after reporting. A caller's buffer holds
// max(bytes_to_read, record_bytes) bytes. Lines end with a NUL that is not counted.
int OalReadStream(OaStream *stream, int64_t bytes_to_read, char **buf_ptr, int64_t start_position, int64_t *bytes_read);

// Positions by bytes, or by records for variable-length files. 0, or 501, 502, 520 (backwards in a file that is not
// seekable), 700.
int OalSeek(OaStream *stream, int64_t position);

void OalCloseStream(OaStream *stream);  // null is allowed

struct OaStreamCloser {
    void operator()(OaStream *stream) const { OalCloseStream(stream); }
};
using OaStreamPtr = std::unique_ptr<OaStream, OaStreamCloser>;
