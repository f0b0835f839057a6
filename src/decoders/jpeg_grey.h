// Ordinary JPEG streams of one grey component.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

// Name and version of the library that decodes them.
const char *jpeg_library_version();

// Whether a JPEG stream begins at the file's position, which stays.
bool is_jpeg_stream(FILE *file);

// Decodes the stream at the file's position into lines x samples bytes; it must have that very size. Empty when done,
// else what is wrong with it. `damage` gets what the decoder repaired, empty for a sound stream.
std::string decode_grey_jpeg(FILE *file, int64_t lines, int64_t samples, uint8_t *out, std::string *damage);
