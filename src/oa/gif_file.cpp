#include "oa/gif.h"

void OalGifError(const char *routine, const char *text) {
    OaReportFailure(700, "%s: %s", routine, text);
}

void OalGifMsg(const char *routine, const char *text) {
    OaReportFailure(950, "%s: %s", routine, text);
}

bool GifFile::read(uint8_t *bytes, size_t count) {
    const size_t got = fread_unlocked(bytes, 1, count, file_);
    position_ += static_cast<int64_t>(got);
    return got == count;
}

int GifFile::read_block(uint8_t *bytes) {
    constexpr const char *routine = "OalGifGetDataBlock";
    const int count = getc_unlocked(file_);
    if (count == EOF) {
        OalGifError(routine, "error in getting DataBlock size");
        return -1;
    }
    ++position_;
    if (!read(bytes, static_cast<size_t>(count))) {
        OalGifMsg(routine, "error in reading DataBlock");
        return -1;
    }
    return count;
}

bool GifFile::skip_blocks(int64_t *blocks) {
    uint8_t block[255];
    int64_t skipped = 0;
    int count = read_block(block);
    for (; count > 0; count = read_block(block))
        ++skipped;
    if (blocks)
        *blocks = skipped;
    return count == 0;
}
