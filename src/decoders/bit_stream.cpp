#include "decoders/bit_stream.h"

#include "base/error.h"

cByteStream::cByteStream(const char *file_name, Direction opened_for)
    : direction(opened_for), file(opened_for == Read ? util_open_regular(file_name) : FilePtr(fopen(file_name, "wb"))) {
    if (!file)
        fputs("ByteStream constructor error.\n", stderr);
}

uint8_t ByteStream_read(cByteStream *stream) {
    const int byte = stream->direction == cByteStream::Read && stream->file ? getc(stream->file.get()) : EOF;
    if (byte != EOF)
        return static_cast<uint8_t>(byte);
    stream->end_of_data = true;
    return 0;
}

namespace {

uint8_t next_byte(cBitStream *stream) {
    if (!stream->buffer)
        return ByteStream_read(&stream->bytes);
    if (stream->read_index < stream->buffer_length)
        return stream->buffer[stream->read_index++];
    stream->bytes.end_of_data = true;
    return 0;
}

}  // namespace

int16_t BitStream_read(cBitStream *stream, int bits) {
    if (bits < 0 || bits > most_bits_a_read) {
        OaReportFailure(502, "%s: can't read %d bits at a time.", __func__, bits);
        return 0;
    }
    unsigned result = 0;
    for (int i = 0; i < bits; ++i) {
        if (stream->bit_mask == 0) {
            stream->current_byte = next_byte(stream);
            stream->bit_mask = 128;
        }
        result = result << 1 | (stream->current_byte & stream->bit_mask ? 1u : 0u);
        stream->bit_mask = static_cast<uint8_t>(stream->bit_mask >> 1);
    }
    return static_cast<int16_t>(result);
}
