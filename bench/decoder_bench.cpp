// Decoding compressed lines beside plainer decoders of the same lines, turn by turn in the same run: each row tells
// million samples a second of each and how many times as fast ours is.
#include "decoders/huffman.h"
#include "decoders/previous_pixel.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr size_t line_count = 256;

struct Contender {
    const char *name;
    std::function<void()> decode_all;
};

// The first contender is ours.
void race(benchmark::State &state, double samples, const std::vector<Contender> &contenders) {
    using clock = std::chrono::steady_clock;
    std::vector<double> seconds(contenders.size(), 0.0);
    for (auto _ : state) {
        for (size_t i = 0; i < contenders.size(); ++i) {
            const auto start = clock::now();
            contenders[i].decode_all();
            seconds[i] += std::chrono::duration<double>(clock::now() - start).count();
        }
    }
    const double all = samples * static_cast<double>(state.iterations());
    for (size_t i = 0; i < contenders.size(); ++i) {
        const std::string name = contenders[i].name;
        state.counters[name + "_Ms"] = all / seconds[i] / 1e6;
        if (i > 0)
            state.counters["x_" + name] = seconds[i] / seconds[0];
    }
}

// --- Huffman --------------------------------------------------------------------------------------------------------

struct Code {
    uint64_t bits = 0;
    int length = 0;
};

std::vector<Code> codes_of(const HFDTree &tree) {
    struct Open {
        const HFDNode *node;
        Code code;
    };
    std::vector<Code> codes(513);
    std::vector<Open> open = {{tree.root, {}}};
    while (!open.empty()) {
        const auto [node, code] = open.back();
        open.pop_back();
        if (node->is_leaf()) {
            codes[node->value] = code;
            continue;
        }
        open.push_back({node->left, {code.bits << 1, code.length + 1}});
        open.push_back({node->right, {code.bits << 1 | 1, code.length + 1}});
    }
    return codes;
}

// Lines of samples whose differences fall off by the same factor, and their codes.
struct HuffmanLines {
    HuffmanLines(size_t samples, double spread) : line_samples(samples) {
        std::vector<uint32_t> frequencies(hfd_frequencies);
        for (int i = 0; i < hfd_frequencies; ++i)
            frequencies[static_cast<size_t>(i)] = static_cast<uint32_t>(1e6 * std::exp(-std::abs(i - 255) / spread));
        std::discrete_distribution<int> value(frequencies.begin(), frequencies.end());
        tree.reset(OalCreateHFDTree(frequencies.data()));
        const std::vector<Code> codes = codes_of(*tree);
        std::mt19937 random(1);
        size_t bits = 0;
        for (size_t line = 0; line < line_count; ++line) {
            std::vector<uint8_t> bytes(1, 100);
            int free_bits = 0;
            for (size_t i = 1; i < samples; ++i) {
                const Code code = codes[static_cast<size_t>(value(random)) + 1];
                for (int bit = code.length - 1; bit >= 0; --bit) {
                    if (free_bits == 0) {
                        bytes.push_back(0);
                        free_bits = 8;
                    }
                    --free_bits;
                    bytes.back() = static_cast<uint8_t>(bytes.back() | (code.bits >> bit & 1) << free_bits);
                }
                bits += static_cast<size_t>(code.length);
            }
            lines.push_back(bytes);
        }
        bits_a_sample = static_cast<double>(bits) / static_cast<double>(line_count * (samples - 1));
    }

    size_t line_samples;
    HFDTreePtr tree;
    std::vector<std::vector<uint8_t>> lines;
    double bits_a_sample = 0;
};

// One sample a look-up in a table of 12 bits, from a word that is filled whenever it runs low.
class OneSampleTable {
  public:
    explicit OneSampleTable(const HFDTree &tree) : root_(tree.root), entries_(1 << window) {
        const std::vector<Code> codes = codes_of(tree);
        for (size_t value = 1; value < codes.size(); ++value) {
            const Code &code = codes[value];
            if (code.length == 0 || code.length > window)
                continue;
            const size_t first = static_cast<size_t>(code.bits) << (window - code.length);
            for (size_t i = 0; i < size_t{1} << (window - code.length); ++i)
                entries_[first + i] = {static_cast<uint8_t>(value), static_cast<uint8_t>(code.length)};
        }
    }

    void decode(const uint8_t *in, size_t in_size, uint8_t *out, size_t out_size) const {
        uint8_t previous = out[0] = in[0];
        uint64_t word = 0;
        int held = 0;
        size_t at = 1;
        for (size_t done = 1; done < out_size; ++done) {
            if (held < 32) {
                if (at + 8 <= in_size) {
                    uint64_t next = 0;
                    memcpy(&next, in + at, 8);
                    word |= __builtin_bswap64(next) >> held;
                    at += static_cast<size_t>(63 - held) >> 3;
                    held |= 56;
                } else {
                    for (; held <= 56 && at < in_size; held += 8)
                        word |= static_cast<uint64_t>(in[at++]) << (56 - held);
                }
            }
            const Entry entry = entries_[word >> (64 - window)];
            uint8_t value = entry.value;
            int length = entry.length;
            if (length == 0) {
                const HFDNode *node = root_;
                for (; !node->is_leaf() && length < 32; ++length)
                    node = word >> (63 - length) & 1 ? node->right : node->left;
                value = static_cast<uint8_t>(node->value);
            }
            if (length > held)
                return;
            word <<= length;
            held -= length;
            out[done] = previous = static_cast<uint8_t>(previous - value);
        }
    }

  private:
    static constexpr int window = 12;
    struct Entry {
        uint8_t value = 0;
        uint8_t length = 0;
    };
    const HFDNode *root_;
    std::vector<Entry> entries_;
};

void walk_bits(const HFDNode *root, const uint8_t *in, size_t in_size, uint8_t *out, size_t out_size) {
    out[0] = in[0];
    size_t done = 1;
    const HFDNode *node = root;
    for (size_t at = 1; at < in_size; ++at) {
        for (int mask = 128; mask > 0; mask >>= 1) {
            node = in[at] & mask ? node->right : node->left;
            if (!node->is_leaf())
                continue;
            if (done == out_size)
                return;
            out[done] = static_cast<uint8_t>(out[done - 1] - node->value);
            ++done;
            node = root;
        }
    }
}

void huffman(benchmark::State &state, double spread) {
    const HuffmanLines made(static_cast<size_t>(state.range(0)), spread);
    const OneSampleTable table(*made.tree);
    std::vector<uint8_t> out(made.line_samples), walked(made.line_samples), by_table(made.line_samples);
    const auto room = static_cast<int64_t>(made.line_samples);
    race(state, static_cast<double>(line_count * made.line_samples),
         {{"ours",
           [&] {
               for (const auto &line : made.lines)
                   OalHFDDecompress(line.data(), out.data(), std::ssize(line), room, made.tree.get());
           }},
          {"one_a_step",
           [&] {
               for (const auto &line : made.lines)
                   table.decode(line.data(), line.size(), by_table.data(), by_table.size());
           }},
          {"bit_walk", [&] {
               for (const auto &line : made.lines)
                   walk_bits(made.tree->root, line.data(), line.size(), walked.data(), walked.size());
           }}});
    if (out != walked || out != by_table)
        state.SkipWithError("the decoders differ");
    state.counters["bits"] = made.bits_a_sample;
}
BENCHMARK_CAPTURE(huffman, three_bits, 1.42)->Arg(800)->Arg(1204)->Arg(4000);
BENCHMARK_CAPTURE(huffman, less, 0.4)->Arg(800);
BENCHMARK_CAPTURE(huffman, more, 8)->Arg(800);

// --- Previous Pixel
// ---------------------------------------------------------------------------------------------------

int64_t decode_bytes(const uint8_t *bytes, int64_t count, uint16_t *out, PreviousPixelState *state) {
    int64_t samples = 0;
    for (int64_t i = 0; i < count; ++i) {
        const uint8_t byte = bytes[i];
        if (!state->in_escape) {
            if (byte == 255) {
                state->in_escape = true;
                continue;
            }
            state->previous = static_cast<uint16_t>(state->previous + byte - 127);
            out[samples++] = state->previous;
        } else if (!state->holds_high_byte) {
            state->high_byte = byte;
            state->holds_high_byte = true;
        } else {
            state->previous = static_cast<uint16_t>(state->high_byte << 8 | byte);
            out[samples++] = state->previous;
            state->in_escape = state->holds_high_byte = false;
        }
    }
    return samples;
}

void previous_pixel(benchmark::State &state) {
    const auto record_bytes = static_cast<size_t>(state.range(0));
    const auto escape_every = static_cast<unsigned>(state.range(1));
    std::mt19937 random(1);
    std::vector<uint8_t> bytes(record_bytes * line_count);
    for (uint8_t &byte : bytes)
        byte = static_cast<uint8_t>(random() % escape_every == 0 ? 255 : 120 + random() % 15);
    std::vector<uint16_t> out(bytes.size()), walked(bytes.size());
    int64_t samples = 0;
    const auto decode_records = [&](auto decode, std::vector<uint16_t> *into) {
        PreviousPixelState at;
        samples = 0;
        for (size_t record = 0; record < line_count; ++record)
            samples += decode(bytes.data() + record * record_bytes, static_cast<int64_t>(record_bytes),
                              into->data() + samples, &at);
    };
    decode_records(decode_bytes, &walked);
    race(state, static_cast<double>(samples),
         {{"ours", [&] { decode_records(OalDecodePreviousPixel, &out); }},
          {"by_byte", [&] { decode_records(decode_bytes, &walked); }}});
    if (!std::equal(out.begin(), out.begin() + samples, walked.begin()))
        state.SkipWithError("the decoders differ");
}
BENCHMARK(previous_pixel)
    ->ArgNames({"record", "escape_every"})
    ->Args({1024, 800})
    ->Args({32768, 800})
    ->Args({1024, 20});

}  // namespace

BENCHMARK_MAIN();
