// The label that a simple FITS file lacks: what the fixed cards at the start of its primary header say, as an IMAGE.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

inline constexpr size_t fits_block_bytes = 2880;
inline constexpr int most_header_blocks = 10;  // a longer header is taken to end there

// Readers of cards 1 to 5 in a file's first block. Each returns 0 when its card is not where and as expected.
int check_simple_fits(std::string_view block);                     // 1 for a value that begins with T
int get_bitpix(std::string_view block, std::string *sample_type);  // 8, -32 or -64, and the label's SAMPLE_TYPE
int get_naxis(std::string_view block);                             // at most 99999, as the next two
int get_naxis1(std::string_view block);                            // samples a line
int get_naxis2(std::string_view block);                            // lines
int check_end(std::string_view block);                             // 1 when one of the block's cards is END

struct FitsHeader {
    int bitpix = 0;
    std::string sample_type;
    int samples = 0;
    int lines = 0;
    int64_t byte_offset = 1;   // of the data, from 1
    int64_t file_records = 0;  // reads of a block behind the header until the end of the file is met
};

// Reads the header at the start of an open file. Returns an empty text, or in one sentence why it is refused.
std::string read_fits_header(FILE *file, FitsHeader *header);

// The label's twelve lines, padded with blanks to 79 characters, without line ends. `file_name` has no folder.
std::vector<std::string> build_krv_label(const FitsHeader &header, const std::string &file_name);

// Opens the file, reads its header and fills `label`. Returns as read_fits_header does; `label` is then empty.
std::string make_fits_label(const std::string &path, std::vector<std::string> *label);
