// GIF files as products: a label tree made from the file, and the reader of its images. The colour tables are rows of
// three bytes, which the table reader reads.
#pragma once

#include "base/file.h"
#include "oa/oa.h"

#include <cstdio>
#include <vector>

// Describes every colour table as a TABLE and every image as an IMAGE, each with a pointer to its bytes in `file_name`.
// Scans `file` from its position, the first byte. Null after reporting, also of a file that ends without its trailer.
ObjDesc *OalCreateODLTreeFromGif(FILE *file, const char *file_name);

// Decodes the image whose minimum code size is at `byte_offset` (from 0) into lines x line_samples colour indices. The
// label of the result is the node's without INTERLACE and ENCODING_TYPE. Data that end early leave zeros, a report and
// one notice. Null after reporting, also when there is no pixel at all.
OaObject *OalReadImageFromGif(const char *file_name, int64_t byte_offset, int64_t lines, int64_t line_samples,
                              const ObjDesc *image_node);

// --- Inside the GIF reader ----------------------------------------------------------------------------------------

void OalGifError(const char *routine, const char *text);  // reports with code 700
void OalGifMsg(const char *routine, const char *text);    // the same with 950: a silent note

// The bytes of a file, counted, and the data sub-blocks that they form.
class GifFile {
  public:
    explicit GifFile(FILE *file) : file_(file) {}

    // OalGifReadOK: all bytes or failure.
    bool read(uint8_t *bytes, size_t count);
    // Bytes read so far.
    int64_t position() const { return position_; }
    // OalGifGetDataBlock: reads a sub-block into room for 255 bytes. Its size; 0 for the terminator, -1 after
    // reporting.
    int read_block(uint8_t *bytes);
    // Reads on behind the next terminator; false after reporting the end of the file. Tells how many sub-blocks with
    // bytes there were.
    bool skip_blocks(int64_t *blocks = nullptr);

  private:
    FILE *file_;
    int64_t position_ = 0;
};
