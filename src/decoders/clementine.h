// The seam to decoders of Clementine JPEG images.
#pragma once

#include <cstdint>
#include <cstdio>

// Fills `out`, zeroed before, with lines x samples bytes from the data at the file's position. Ordinary JPEG streams
// are decoded here. Any other form goes to the program that LUMACART_CLEMENTINE_DECODER names by its full path, with
// these arguments: the file, the byte offset of the image, lines, samples, and the file to make, which must then hold
// lines x samples bytes. 0, or 1 after reporting: 520 no decoder, 700 what it made is no such image.
int OalDecodeClementine(FILE *file, const char *file_name, int64_t lines, int64_t samples, uint8_t *out);
