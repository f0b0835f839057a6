#include "viewer/model/fits_label.h"

#include "base/file.h"
#include "base/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <optional>

namespace {

constexpr size_t card_columns = 80;
constexpr size_t label_columns = 79;
constexpr std::string_view digits = "0123456789";

enum class CardPlace : size_t { Simple, Bitpix, Naxis, Naxis1, Naxis2 };

// What follows keyword, "=" and blanks, up to column 80; empty when there is no value. The value of SIMPLE may stand
// anywhere behind its keyword.
std::string_view card_value(std::string_view block, CardPlace place, std::string_view keyword) {
    const size_t start = static_cast<size_t>(place) * card_columns;
    if (start >= block.size())
        return {};
    std::string_view card = block.substr(start, place == CardPlace::Simple ? fits_block_bytes : card_columns);
    if (!card.starts_with(keyword))
        return {};
    card.remove_prefix(keyword.size());
    const size_t equals = card.find_first_not_of(' ');
    if (equals >= card_columns || card[equals] != '=')
        return {};
    card.remove_prefix(equals + 1);
    const size_t value = card.find_first_not_of(' ');
    return value < card_columns ? card.substr(value) : std::string_view{};
}

// The characters of `allowed` that the value begins with, as a number, when they end with a blank, a remark or the
// card.
std::optional<int> number_of(std::string_view value, std::string_view allowed, size_t most_characters) {
    const std::string_view text = value.substr(0, value.find_first_not_of(allowed));
    const std::string_view rest = value.substr(text.size());
    if (text.size() > most_characters || !(rest.empty() || rest.front() == ' ' || rest.front() == '/'))
        return std::nullopt;
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

int axis_number(std::string_view block, CardPlace place, std::string_view keyword) {
    constexpr size_t most_digits = 5;
    return number_of(card_value(block, place, keyword), digits, most_digits).value_or(0);
}

// A value for messages: without its remark, short, and nothing that is no plain text.
std::string shown_value(std::string_view value) {
    constexpr size_t most_shown = 30;
    std::string shown(util_trim(value.substr(0, std::min(value.find('/'), most_shown))));
    for (char &c : shown) {
        if (c < ' ' || c > '~')
            c = '?';
    }
    return shown;
}

std::string refuse_value(std::string_view block, CardPlace place, const char *keyword, const char *rule) {
    const std::string_view value = card_value(block, place, keyword);
    if (value.empty())
        return util_format("Card %d of the header is not %s with a value.", static_cast<int>(place) + 1, keyword);
    return util_format("%s is %s; %s", keyword, shown_value(value).c_str(), rule);
}

// The first block of a header. Returns an empty text, or why it is refused.
std::string read_first_block(std::string_view block, FitsHeader *header) {
    constexpr const char *axis_rule = "a number from 1 to 99999 is needed.";
    if (!check_simple_fits(block))
        return refuse_value(block, CardPlace::Simple, "SIMPLE", "T is needed.");
    header->bitpix = get_bitpix(block, &header->sample_type);
    if (header->bitpix == 0)
        return refuse_value(block, CardPlace::Bitpix, "BITPIX", "only 8, -32 and -64 are accepted.");
    if (get_naxis(block) != 2)
        return refuse_value(block, CardPlace::Naxis, "NAXIS", "only images of 2 axes are accepted.");
    header->samples = get_naxis1(block);
    if (header->samples == 0)
        return refuse_value(block, CardPlace::Naxis1, "NAXIS1", axis_rule);
    header->lines = get_naxis2(block);
    if (header->lines == 0)
        return refuse_value(block, CardPlace::Naxis2, "NAXIS2", axis_rule);
    return "";
}

}  // namespace

int check_simple_fits(std::string_view block) {
    return card_value(block, CardPlace::Simple, "SIMPLE").starts_with('T') ? 1 : 0;
}

int get_bitpix(std::string_view block, std::string *sample_type) {
    struct Accepted {
        int bitpix;
        const char *sample_type;
    };
    // 64-bit reals are called complex; readers of labels know them by their size.
    constexpr std::array accepted = {Accepted{8, "INTEGER"}, Accepted{-32, "IEEE_REAL"}, Accepted{-64, "IEEE_COMPLEX"}};
    constexpr size_t most_characters = 3;
    const auto bitpix = number_of(card_value(block, CardPlace::Bitpix, "BITPIX"), "-0123456789", most_characters);
    for (const Accepted &row : accepted) {
        if (bitpix == row.bitpix) {
            *sample_type = row.sample_type;
            return row.bitpix;
        }
    }
    return 0;
}

int get_naxis(std::string_view block) {
    return axis_number(block, CardPlace::Naxis, "NAXIS");
}

int get_naxis1(std::string_view block) {
    return axis_number(block, CardPlace::Naxis1, "NAXIS1");
}

int get_naxis2(std::string_view block) {
    return axis_number(block, CardPlace::Naxis2, "NAXIS2");
}

int check_end(std::string_view block) {
    for (; block.size() >= card_columns; block.remove_prefix(card_columns)) {
        const std::string_view card = block.substr(0, card_columns);
        if (card.starts_with("END") && card.find_first_not_of(' ', strlen("END")) == std::string_view::npos)
            return 1;
    }
    return 0;
}

std::string read_fits_header(FILE *file, FitsHeader *header) {
    std::array<char, fits_block_bytes> bytes;
    for (int i = 0; i < most_header_blocks; ++i) {
        const std::string_view block(bytes.data(), fread(bytes.data(), 1, bytes.size(), file));
        if (ferror(file))
            return util_format("The header cannot be read: %s.", strerror(errno));
        if (i == 0) {
            std::string reason = read_first_block(block, header);
            if (!reason.empty())
                return reason;
        }
        const bool ends = check_end(block) != 0;
        if (!ends && i > 0 && block.size() < fits_block_bytes)
            break;  // the file ends: what is left may be data
        header->byte_offset += static_cast<int64_t>(fits_block_bytes);
        if (ends)
            break;
    }
    const int64_t data_bytes = std::max<int64_t>(util_file_size(file) - (header->byte_offset - 1), 0);
    header->file_records = data_bytes / static_cast<int64_t>(fits_block_bytes) + 1;  // the read that meets the end too
    return "";
}

std::vector<std::string> build_krv_label(const FitsHeader &header, const std::string &file_name) {
    std::vector<std::string> lines = {
        "KRV_VERSION_ID                = KRV3",
        "FILE_RECORDS                  = " + std::to_string(header.file_records),
        "RECORD_TYPE                   = FIXED",
        "RECORD_BYTES                  = " + std::to_string(fits_block_bytes),
        "^IMAGE                        = \"" + file_name + "\"," + std::to_string(header.byte_offset) + "     <BYTES>",
        "OBJECT                        = IMAGE",
        "   LINE_SAMPLES               = " + std::to_string(header.samples),
        "   LINES                      = " + std::to_string(header.lines),
        "   SAMPLE_BITS                = " + std::to_string(std::abs(header.bitpix)),
        "   SAMPLE_TYPE                = " + header.sample_type,
        "END_OBJECT                    = IMAGE",
        "END",
    };
    for (std::string &line : lines)
        line.resize(std::max(line.size(), label_columns), ' ');
    return lines;
}

std::string make_fits_label(const std::string &path, std::vector<std::string> *label) {
    label->clear();
    const std::string name = path.substr(path.find_last_of('/') + 1);
    if (std::any_of(name.begin(), name.end(), [](char c) { return c == '"' || static_cast<unsigned char>(c) < ' '; }))
        return "No label can name a file whose name holds a quotation mark or control character.";
    const FilePtr file = util_open_regular(path.c_str());
    if (!file)
        return util_format("The file cannot be opened: %s.", errno == EINVAL ? "Not a regular file" : strerror(errno));
    FitsHeader header;
    std::string reason = read_fits_header(file.get(), &header);
    if (reason.empty())
        *label = build_krv_label(header, name);
    return reason;
}
