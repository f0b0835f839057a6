// Random tables: whatever the nesting, every cut of the source gives what a plain reading of the label gives.
#include "oa/sdt.h"
#include "support/sdt_tree.h"
#include "support/silent_reports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

struct Type {
    const char *name;
    int bytes;      // of an item; 0: any
    int turned;     // bytes that are turned round together; 0: a number in text
    int dst_bytes;  // of an item; 0: as in the source
    int alignment;  // natural
};
constexpr Type binary_types[] = {
    {"CHARACTER", 0, 1, 0, 1},
    {"MSB_INTEGER", 2, 2, 0, 2},
    {"MSB_UNSIGNED_INTEGER", 4, 4, 0, 4},
    {"LSB_INTEGER", 4, 1, 0, 4},
    {"MSB_UNSIGNED_INTEGER", 1, 1, 0, 1},
    {"MSB_INTEGER", 4, 4, 0, 4},
    {"IEEE_REAL", 8, 8, 0, 8},
    {"IEEE_REAL", 4, 4, 0, 4},
    {"MSB_INTEGER", 3, 1, 0, 1},
    {"IEEE_COMPLEX", 8, 4, 0, 4},
    {"IEEE_COMPLEX", 16, 8, 0, 8},
};
constexpr Type ascii_types[] = {{"CHARACTER", 0, 1, 0, 1}, {"ASCII_INTEGER", 0, 0, 4, 4}, {"ASCII_REAL", 0, 0, 8, 8}};

// A column or, with parts, a container.
struct Part {
    const Type *type = nullptr;
    int64_t bytes = 0;  // of one item or repetition
    int64_t items = 1;  // or repetitions
    int64_t apart = 0;  // bytes from item to item
    int64_t start = 0;
    int64_t dst_bytes = 0;
    int64_t dst_start = 0;
    std::vector<Part> parts = {};

    int64_t end() const { return items > 0 ? start + (items - 1) * apart + bytes : start; }
    int64_t dst_end() const { return dst_start + items * dst_bytes; }
    bool has_gaps() const { return type && items > 1 && apart > bytes; }
};

class AnyTable {
  public:
    AnyTable(unsigned seed, OaInterchangeFormat format) : format_(format), random_(seed) {
        parts_ = make_parts(0, &row_bytes_);
        row_bytes_ += below(3);
        prefix_ = below(2) * below(6);
        suffix_ = below(2) * below(6);
        rows_ = 1 + below(300) / row_bytes_;
        dst_row_bytes_ = place(&parts_);
    }
    std::string label() const {
        return table(rows_, row_bytes_, label_of(parts_),
                     util_format("ROW_PREFIX_BYTES = %ld\nROW_SUFFIX_BYTES = %ld\n", prefix_, suffix_));
    }
    std::string make_source() {
        std::string bytes(static_cast<size_t>(rows_ * (prefix_ + row_bytes_ + suffix_)), '\0');
        for (char &byte : bytes)
            byte = format_ == OA_ASCII ? " 0123456789.-"[below(13)] : static_cast<char>(random_());
        return bytes;
    }
    std::string expected(const std::string &source) const {
        std::string out(static_cast<size_t>(rows_ * dst_row_bytes_), '\0');
        for (int64_t row = 0; row < rows_; ++row)
            convert(parts_, source.data() + row * (prefix_ + row_bytes_ + suffix_) + prefix_,
                    out.data() + row * dst_row_bytes_);
        return out;
    }

  private:
    int64_t below(int64_t limit) { return static_cast<int64_t>(random_()) % limit; }

    Part make_column() {
        Part part;
        part.type = format_ == OA_ASCII ? &ascii_types[below(std::size(ascii_types))]
                                        : &binary_types[below(std::size(binary_types))];
        part.bytes = part.type->bytes ? part.type->bytes : 1 + below(9);
        part.items = 1 + below(3) * below(3);
        part.apart = part.bytes + below(2) * below(4);
        part.dst_bytes = part.type->dst_bytes ? part.type->dst_bytes : part.bytes;
        return part;
    }
    Part make_container(int depth) {
        Part part;
        part.parts = make_parts(depth + 1, &part.bytes);
        part.bytes += below(2) * below(3);
        part.apart = part.bytes;
        part.items = below(4);
        return part;
    }
    std::vector<Part> make_parts(int depth, int64_t *bytes) {
        std::vector<Part> parts;
        int64_t end = 0;
        for (int64_t count = 1 + below(5); count > 0; --count) {
            Part part = depth < 4 && below(4) == 0 ? make_container(depth) : make_column();
            part.start = end + below(2) * below(4);
            end = part.end();
            parts.push_back(part);
        }
        *bytes = end;
        return parts;
    }
    // Settles where each part goes, and returns the bytes of all: only columns without gaps are aligned.
    int64_t place(std::vector<Part> *parts) const {
        constexpr int64_t largest[] = {1, 2, 8};
        int64_t end = 0;
        for (Part &part : *parts) {
            if (!part.type)
                part.dst_bytes = place(&part.parts);
            const int64_t alignment =
                part.type && !part.has_gaps()
                    ? std::min<int64_t>(part.type->alignment, largest[Oa_profile.dst_alignment_type])
                    : 1;
            part.dst_start = (end + alignment - 1) / alignment * alignment;
            end = part.dst_end();
        }
        return end;
    }
    std::string label_of(const std::vector<Part> &parts) const {
        std::string text;
        for (const Part &part : parts) {
            std::string items = util_format("ITEMS = %ld\nITEM_BYTES = %ld\n", part.items, part.bytes);
            if (part.apart > part.bytes)
                items += util_format("ITEM_OFFSET = %ld\n", part.apart);
            text += part.type ? column(part.type->name, part.start + 1, part.items * part.bytes, items)
                              : object("CONTAINER",
                                       util_format("START_BYTE = %ld\nBYTES = %ld\nREPETITIONS = %ld", part.start + 1,
                                                   part.bytes, part.items),
                                       label_of(part.parts));
        }
        return text;
    }
    void convert(const std::vector<Part> &parts, const char *src, char *dst) const {
        for (const Part &part : parts)
            for (int64_t item = 0; item < part.items; ++item)
                convert_item(part, src + part.start + item * part.apart, dst + part.dst_start + item * part.dst_bytes);
    }
    void convert_item(const Part &part, const char *src, char *dst) const {
        if (!part.type) {
            convert(part.parts, src, dst);
        } else if (part.type->turned == 0) {
            const std::string text(src, static_cast<size_t>(part.bytes));
            const auto integer =
                static_cast<int32_t>(std::clamp(strtol(text.c_str(), nullptr, 10), -2147483648L, 2147483647L));
            const double real = strtod(text.c_str(), nullptr);
            memcpy(dst, part.dst_bytes == 4 ? static_cast<const void *>(&integer) : &real,
                   static_cast<size_t>(part.dst_bytes));
        } else {
            for (int64_t at = 0; at < part.bytes; at += part.type->turned)
                std::reverse_copy(src + at, src + at + part.type->turned, dst + at);
        }
    }

    OaInterchangeFormat format_;
    std::mt19937 random_;
    int64_t rows_ = 0, row_bytes_ = 0, prefix_ = 0, suffix_ = 0, dst_row_bytes_ = 0;
    std::vector<Part> parts_;
};

TEST(SdtAnyTable, GivesWhatAPlainReadingOfTheLabelGives) {
    const SilentReports reports;
    std::mt19937 random(11);
    for (unsigned seed = 0; seed < 600; ++seed) {
        Oa_profile.dst_alignment_type = static_cast<uint8_t>(seed % 3);
        const OaInterchangeFormat format = seed % 4 ? OA_BINARY : OA_ASCII;
        AnyTable any(seed, format);
        SCOPED_TRACE(any.label());
        const OaSdt plan = plan_object(any.label(), format);
        ASSERT_TRUE(plan) << error_string;
        const OaSdt compressed(OalCompressSDT(plan.get()));
        const std::string source = any.make_source();
        const std::string expected = any.expected(source);
        const auto size = static_cast<int64_t>(expected.size());
        ASSERT_EQ(OalDestinationSize(plan.get()), size);
        ASSERT_EQ(OalSourceSize(plan.get()), static_cast<int64_t>(source.size()));
        std::vector<size_t> cuts(16);
        std::generate(cuts.begin(), cuts.end(), [&] { return 1 + random() % source.size(); });
        if (OalInitializeSDT(plan.get(), cuts.data(), 0)) {  // not where every item is repeated never
            for (const std::vector<size_t> &way : {std::vector<size_t>{source.size()}, {1}, cuts}) {
                ASSERT_EQ(process(plan.get(), source, way, size), expected);
                ASSERT_EQ(process(compressed.get(), source, way, size), expected);
            }
            const auto room = static_cast<int64_t>(random()) % (size + 1);
            process(compressed.get(), source, cuts, room);
        }
    }
    Oa_profile = {};
}

}  // namespace
