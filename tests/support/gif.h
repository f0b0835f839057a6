// GIF files made for tests and benchmarks.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// Packs codes of growing size, the lowest bit first.
class GifCodeWriter {
  public:
    void put(uint32_t code, int bits) {
        buffer_ |= uint64_t{code} << count_;
        for (count_ += bits; count_ >= 8; count_ -= 8, buffer_ >>= 8)
            bytes_ += static_cast<char>(buffer_);
    }
    std::string take() {
        if (count_ > 0)
            put(0, 8 - count_);
        return std::move(bytes_);
    }

  private:
    std::string bytes_;
    uint64_t buffer_ = 0;
    int count_ = 0;
};

// Code data of the pixels, which are below 2^code_size. When the table is full a clear code follows, or, with
// `deferred`, none before the end.
inline std::string gif_codes(std::string_view pixels, int code_size, bool deferred = false) {
    const uint32_t clear = 1u << code_size;
    GifCodeWriter writer;
    std::unordered_map<uint32_t, uint32_t> strings;  // (code of the string, next pixel) to code
    int bits = code_size + 1;
    uint32_t next = clear + 2;
    writer.put(clear, bits);
    int64_t string = -1;
    const auto emit = [&] {
        writer.put(static_cast<uint32_t>(string), bits);
        if (next == 1u << bits && bits < 12)
            ++bits;
    };
    for (const char c : pixels) {
        const auto pixel = static_cast<uint8_t>(c);
        if (string < 0) {
            string = pixel;
            continue;
        }
        const uint32_t key = static_cast<uint32_t>(string) << 8 | pixel;
        if (const auto found = strings.find(key); found != strings.end()) {
            string = found->second;
            continue;
        }
        emit();
        if (next < 4096) {
            strings[key] = next++;
        } else if (!deferred) {
            writer.put(clear, bits);
            strings.clear();
            bits = code_size + 1;
            next = clear + 2;
        }
        string = pixel;
    }
    if (string >= 0)
        emit();
    writer.put(clear + 1, bits);
    return writer.take();
}

// Data in sub-blocks of at most `size` bytes, with their terminator.
inline std::string gif_blocks(std::string_view data, size_t size = 255) {
    std::string blocks;
    for (; !data.empty(); data.remove_prefix(std::min(size, data.size()))) {
        blocks += static_cast<char>(std::min(size, data.size()));
        blocks += data.substr(0, size);
    }
    return blocks + '\0';
}

inline std::string gif_word(int64_t value) {
    return {static_cast<char>(value), static_cast<char>(value >> 8)};
}

// Signature and screen; `colours` grey entries, a power of two, as global table.
inline std::string gif_header(int64_t width, int64_t height, int colours = 0, std::string_view version = "89a") {
    int flags = colours > 0 ? 0x80 : 0;
    for (int size = 2; size < colours; size *= 2)
        ++flags;
    std::string text = "GIF" + std::string(version) + gif_word(width) + gif_word(height) + static_cast<char>(flags);
    text.append(2, '\0');
    for (int i = 0; i < colours; ++i)
        text.append(3, static_cast<char>(i));
    return text;
}

// A block's descriptor, up to its minimum code size.
inline std::string gif_descriptor(int64_t width, int64_t height, int flags = 0) {
    std::string text(",\0\0\0\0", 5);
    return text + gif_word(width) + gif_word(height) + static_cast<char>(flags);
}

// A block with the pixels in the order in which they are stored.
inline std::string gif_image(int64_t width, int64_t height, std::string_view pixels, int code_size = 8, int flags = 0) {
    return gif_descriptor(width, height, flags) + static_cast<char>(code_size) +
           gif_blocks(gif_codes(pixels, code_size));
}
