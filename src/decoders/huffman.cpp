#include "decoders/huffman.h"

#include "base/error.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <new>

namespace {

constexpr int leaf_count = 512;
constexpr uint16_t inner_value = 65535;
constexpr int window_bits = 11;
constexpr int longest_run = 6;  // samples: what leaves a run 8 bytes
constexpr int runs_a_word = 5;  // windows in the 57 bits that a word holds at any bit position
constexpr int64_t word_bytes = 8;

}  // namespace

// What the codes in a window of bits decode to. A window that begins with a code longer than itself has no samples; its
// first two bytes are the number of the node where the rest of that code is found.
struct HFDRun {
    uint8_t sums[longest_run] = {};  // of each sample, to be added to the sample before the run
    uint8_t samples = 0;
    uint8_t bits = 0;

    uint16_t node() const { return static_cast<uint16_t>(sums[0] | sums[1] << 8); }
};
static_assert(sizeof(HFDRun) == word_bytes);

struct HFDRunTable {
    std::array<HFDRun, 1 << window_bits> runs;
};

HFDTree::HFDTree() = default;
HFDTree::~HFDTree() = default;

namespace {

// --- The tree -----------------------------------------------------------------------------------------------------

struct Entry {
    uint64_t frequency = 0;
    const HFDNode *node = nullptr;
};

const HFDNode *join(std::vector<HFDNode> *nodes, std::vector<Entry> *entries) {
    auto first = entries->begin();
    while (entries->end() - first > 1) {
        const Entry left = first[0];
        const Entry right = first[1];
        nodes->push_back({left.node, inner_value, right.node});
        const uint64_t sum = left.frequency + right.frequency;
        // The new node stands before those of its own frequency: this fixes the codes.
        const auto place = std::lower_bound(first + 2, entries->end(), sum,
                                            [](const Entry &entry, uint64_t value) { return entry.frequency < value; });
        std::move(first + 2, place, first + 1);
        *(place - 1) = {sum, &nodes->back()};
        ++first;
    }
    return first->node;
}

// --- The table ----------------------------------------------------------------------------------------------------

HFDRun run_of_window(const HFDTree &tree, unsigned window) {
    HFDRun run;
    const HFDNode *node = tree.root;
    uint8_t sum = 0;
    for (int bit = 1; bit <= window_bits && run.samples < longest_run; ++bit) {
        node = window >> (window_bits - bit) & 1 ? node->right : node->left;
        if (!node->is_leaf())
            continue;
        sum = static_cast<uint8_t>(sum - node->value);
        run.sums[run.samples++] = sum;
        run.bits = static_cast<uint8_t>(bit);
        node = tree.root;
    }
    if (run.samples == 0) {
        const auto number = static_cast<uint16_t>(node - tree.nodes.data());
        run.sums[0] = static_cast<uint8_t>(number);
        run.sums[1] = static_cast<uint8_t>(number >> 8);
        run.bits = window_bits;
    }
    return run;
}

const HFDRunTable &table_of(HFDTree *tree) {
    if (!tree->table) {
        tree->table.reset(new (std::nothrow) HFDRunTable);
        if (!tree->table)
            OaFatal(720, "%s: out of memory!", "OalHFDDecompress");
        for (unsigned window = 0; window < tree->table->runs.size(); ++window)
            tree->table->runs[window] = run_of_window(*tree, window);
    }
    return *tree->table;
}

// --- Decoding -----------------------------------------------------------------------------------------------------

struct CodedBits {
    const uint8_t *bytes = nullptr;
    int64_t byte_count = 0;
    int64_t position = 0;  // bits

    int64_t left() const { return byte_count * 8 - position; }
    bool holds_word() const { return position / 8 + word_bytes <= byte_count; }

    // The bits from the position on, first bit highest; 57 of them are valid.
    uint64_t word() const {
        uint64_t bits = 0;
        memcpy(&bits, bytes + position / 8, word_bytes);
        if constexpr (std::endian::native == std::endian::little)
            bits = __builtin_bswap64(bits);
        return bits << position % 8;
    }
    // The same where the input may end before.
    uint64_t last_word() const {
        uint64_t bits = 0;
        for (int64_t i = 0; i < word_bytes; ++i) {
            const int64_t at = position / 8 + i;
            bits = bits << 8 | (at < byte_count ? bytes[at] : 0u);
        }
        return bits << position % 8;
    }
    bool next() {
        const bool bit = bytes[position / 8] >> (7 - position % 8) & 1;
        ++position;
        return bit;
    }
};

size_t window_of(uint64_t word) {
    return static_cast<size_t>(word >> (64 - window_bits));
}

using Samples = uint8_t __attribute__((vector_size(word_bytes)));

// Decodes whole words of codes until fewer than `longest_run` x `runs_a_word` samples have room, the input's last word
// begins, or a code is longer than a window. May write 2 samples more than have room. Returns the number of samples.
int64_t decode_words(const HFDRunTable &table, CodedBits *in, uint8_t *previous, uint8_t *out, int64_t room) {
    CodedBits at = *in;
    uint8_t last = *previous;
    uint8_t *next = out;
    bool in_table = true;
    while (in_table && room - (next - out) >= longest_run * runs_a_word && at.holds_word()) {
        uint64_t word = at.word();
#pragma GCC unroll 5
        for (int i = 0; i < runs_a_word; ++i) {
            const HFDRun &run = table.runs[window_of(word)];
            if (run.samples == 0) [[unlikely]] {
                in_table = false;
                break;
            }
            Samples sums;
            memcpy(&sums, &run, sizeof sums);
            sums += last;
            memcpy(next, &sums, sizeof sums);
            next += run.samples;
            last = static_cast<uint8_t>(last + run.sums[run.samples - 1]);
            word <<= run.bits;
            at.position += run.bits;
        }
    }
    *in = at;
    *previous = last;
    return next - out;
}

// One code, bit by bit, from the given node on. False when the input ends within it.
bool decode_code(const HFDNode *node, CodedBits *in, uint8_t *previous) {
    while (!node->is_leaf()) {
        if (in->left() == 0)
            return false;
        node = in->next() ? node->right : node->left;
    }
    *previous = static_cast<uint8_t>(*previous - node->value);
    return true;
}

// The codes of the next window, each checked against what is left of input and room. Returns the number of samples; 0
// when the input ends first.
int64_t decode_window(const HFDTree &tree, const HFDRunTable &table, CodedBits *in, uint8_t *previous, uint8_t *out,
                      int64_t room) {
    const HFDRun &run = table.runs[window_of(in->last_word())];
    const bool holds_run = run.bits <= in->left();
    if (holds_run && run.samples > 0 && run.samples <= room) {
        for (int i = 0; i < run.samples; ++i)
            out[i] = static_cast<uint8_t>(*previous + run.sums[i]);
        *previous = out[run.samples - 1];
        in->position += run.bits;
        return run.samples;
    }
    const HFDNode *node = tree.root;
    if (holds_run && run.samples == 0) {
        node = &tree.nodes[run.node()];
        in->position += run.bits;
    }
    if (!decode_code(node, in, previous))
        return 0;
    *out = *previous;
    return 1;
}

int64_t decode_codes(const HFDTree &tree, const HFDRunTable &table, CodedBits in, uint8_t previous, uint8_t *out,
                     int64_t room) {
    // Words of codes write past their last sample, where the caller's bytes may have to stay.
    uint8_t piece[1024 + word_bytes];
    constexpr int64_t piece_samples = sizeof piece - word_bytes;
    int64_t done = 0;
    while (done < room) {
        int64_t samples = decode_words(table, &in, &previous, piece, std::min(piece_samples, room - done));
        memcpy(out + done, piece, static_cast<size_t>(samples));
        if (samples == 0)
            samples = decode_window(tree, table, &in, &previous, out + done, room - done);
        if (samples == 0)
            break;
        done += samples;
    }
    return done;
}

// Each bit is the code of the tree's only leaf.
int64_t decode_one_leaf(uint16_t value, int64_t bits, uint8_t previous, uint8_t *out, int64_t room) {
    const int64_t samples = std::min(room, bits);
    for (int64_t i = 0; i < samples; ++i)
        out[i] = previous = static_cast<uint8_t>(previous - value);
    return samples;
}

}  // namespace

HFDTree *OalCreateHFDTree(const uint32_t *frequencies) {
    if (!frequencies)
        return nullptr;
    HFDTreePtr tree(new (std::nothrow) HFDTree);
    if (!tree)
        OaFatal(720, "%s: out of memory!", __func__);
    std::vector<Entry> entries;
    tree->nodes.reserve(2 * leaf_count);
    entries.reserve(leaf_count);
    for (int i = 0; i < hfd_frequencies; ++i) {
        if (frequencies[i] == 0)
            continue;
        tree->nodes.push_back({nullptr, static_cast<uint16_t>(i + 1), nullptr});
        entries.push_back({frequencies[i], &tree->nodes.back()});
    }
    if (entries.empty())
        return nullptr;
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry &a, const Entry &b) { return a.frequency < b.frequency; });
    tree->root = join(&tree->nodes, &entries);
    return tree.release();
}

int64_t OalHFDDecodeLine(const uint8_t *input, uint8_t *output, int64_t input_length, int64_t output_length,
                         HFDTree *tree) {
    if (!input || !output || input_length <= 0 || output_length <= 0 || !tree || !tree->root) {
        OaReportFailure(502, "%s: invalid inputs!", "OalHFDDecompress");
        return 0;
    }
    output[0] = input[0];
    const CodedBits codes = {input + 1, input_length - 1, 0};
    if (tree->root->is_leaf())
        return 1 + decode_one_leaf(tree->root->value, codes.left(), input[0], output + 1, output_length - 1);
    return 1 + decode_codes(*tree, table_of(tree), codes, input[0], output + 1, output_length - 1);
}

int OalHFDDecompress(const uint8_t *input, uint8_t *output, int64_t input_length, int64_t output_length,
                     HFDTree *tree) {
    return OalHFDDecodeLine(input, output, input_length, output_length, tree) > 0 ? 1 : 0;
}

void OalFreeHFDTree(HFDTree *tree) {
    delete tree;
}
