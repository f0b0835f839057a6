// Bits and bytes, one behind the other, from a file or from memory.
#pragma once

#include "base/file.h"

#include <cstddef>
#include <cstdint>

struct cByteStream {
    enum Direction { Read = 0, Write = 1 };

    // Opens a regular file for reading, or a new one for writing. Without a file, and with "ByteStream constructor
    // error." on standard error, when it does not open.
    cByteStream(const char *file_name, Direction opened_for);
    cByteStream() = default;  // of no file: ends at once

    Direction direction = Read;
    bool end_of_data = false;
    FilePtr file;
};

struct cBitStream {
    cByteStream bytes;
    uint8_t current_byte = 0;
    uint8_t bit_mask = 0;             // of the next bit; 0: a byte has to be fetched first
    const uint8_t *buffer = nullptr;  // when set, bytes come from here; not owned
    size_t buffer_length = 0;
    size_t read_index = 0;
};

constexpr int most_bits_a_read = 16;

// The next byte; 0 with end_of_data set at the end, and for a stream that is written.
uint8_t ByteStream_read(cByteStream *stream);

// The next 0 to 16 bits, the first one highest; behind the end they are 0 and bytes.end_of_data is set. 0 after
// reporting another number of bits (502).
int16_t BitStream_read(cBitStream *stream, int bits);
