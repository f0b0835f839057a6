// Any bytes as a file of any record format. Reading must end, deliver the file's bytes, and find the same unit again
// when it is sought.
// Input: record type, flags, record length (2 bytes, signed), 4 bytes that choose positions, then the file.
#include "oa/stream.h"

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr size_t header_bytes = 8;

struct Unit {
    int64_t position;
    std::string bytes;
};

void require(bool holds) {
    if (!holds)
        abort();
}

// Reads one unit into the stream's own buffer; false at the end or an error.
bool read_unit(OaStream *stream, int64_t start, std::string *unit) {
    char *buffer = nullptr;
    int64_t length = 0;
    const int result = OalReadStream(stream, 0, &buffer, start, &length);
    require(result == 0 || result == 1 || result == -1);
    require(length >= 0 && length <= stream->buffer_size);
    unit->assign(buffer ? buffer : "", static_cast<size_t>(length));
    return result == 0;
}

std::vector<Unit> read_all(OaStream *stream, size_t file_size) {
    std::vector<Unit> units;
    Unit unit;
    for (unit.position = 0; read_unit(stream, -1, &unit.bytes); unit.position = stream->current_position) {
        units.push_back(unit);
        require(units.size() <= file_size);
    }
    return units;
}

void check_bytes(const std::vector<Unit> &units, std::string_view file) {
    size_t at = 0;
    for (const Unit &unit : units) {
        require(static_cast<size_t>(unit.position) == at);
        require(file.substr(at, unit.bytes.size()) == unit.bytes);
        at += unit.bytes.size();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static FILE *const nowhere = fopen("/dev/null", "w");
    static const int descriptor = memfd_create("stream_fuzz", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    Oa_message_fptr = nowhere;
    if (size < header_bytes)
        return 0;
    const std::string_view file(reinterpret_cast<const char *>(data) + header_bytes, size - header_bytes);
    if (ftruncate(descriptor, 0) != 0 || pwrite(descriptor, file.data(), file.size(), 0) < 0)
        return 0;

    const auto record_bytes = static_cast<int16_t>(data[2] | data[3] << 8);
    const OaStreamPtr stream(OalOpenStream(path.c_str(), data[0] % 5, record_bytes, 0, "r"));
    if (!stream || stream->record_type == OA_GIF)
        return 0;
    stream->flags = data[1] & (OA_IS_SEEKABLE | OA_LINE_FEED_AT_END);
    const std::vector<Unit> units = read_all(stream.get(), file.size());
    if (stream->record_type != OA_VARIABLE_LENGTH && !(stream->flags & OA_LINE_FEED_AT_END))
        check_bytes(units, file);
    if (units.empty() || !(stream->flags & OA_IS_SEEKABLE))
        return 0;
    for (const size_t choice : {data[4], data[5], data[6], data[7]}) {
        const Unit &wanted = units[choice * units.size() / 256];
        std::string found;
        require(read_unit(stream.get(), wanted.position, &found));
        require(found == wanted.bytes);
    }
    OalSeek(stream.get(), int64_t{data[4]} << 32);
    std::string beyond;
    read_unit(stream.get(), -1, &beyond);
    return 0;
}
