// The seam to decoders of compressed MOC products.
#pragma once

// Decompresses a MOC product into a new file with a label of its own, by the program that LUMACART_MOC_DECODER names by
// its full path; its arguments are the product and the file to make. `output_name` must not be there, not even as a
// symbolic link; it is removed again on failure. 0, or 1 after reporting: 520 no decoder, 700 anything else.
int OalDecompressMoc(const char *input_name, const char *output_name);
