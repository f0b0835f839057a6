// Lines of 8-bit samples stored as Huffman codes of the differences between neighbours.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

constexpr int hfd_frequencies = 511;  // of an encoding histogram: of the values 1 to 511

struct HFDNode {
    const HFDNode *left = nullptr;   // bit 0
    uint16_t value = 0;              // of a leaf 1 to 512
    const HFDNode *right = nullptr;  // bit 1

    bool is_leaf() const { return !left; }
};

struct HFDRunTable;  // what several codes at once decode to

struct HFDTree {
    HFDTree();
    ~HFDTree();

    std::vector<HFDNode> nodes;  // never moved once the root is set
    const HFDNode *root = nullptr;
    std::unique_ptr<HFDRunTable> table;  // made by the first line that is decoded
};

// The tree of a histogram of `hfd_frequencies` frequencies; codes of equal frequency are ordered as the encoder ordered
// them. Null, without a report, when all are 0. Out of memory ends the process.
HFDTree *OalCreateHFDTree(const uint32_t *frequencies);

// Decodes a line of `input_length` bytes into at most `output_length` samples, exactly as far as its codes reach; what
// lies behind keeps its contents. Both lengths must be positive and the tree must be one: else 0 after reporting (502).
// A tree that is one leaf yields a sample for every bit. 1 when done.
int OalHFDDecompress(const uint8_t *input, uint8_t *output, int64_t input_length, int64_t output_length, HFDTree *tree);
// The same, and returns the number of samples; 0 after reporting.
int64_t OalHFDDecodeLine(const uint8_t *input, uint8_t *output, int64_t input_length, int64_t output_length,
                         HFDTree *tree);

void OalFreeHFDTree(HFDTree *tree);  // null is allowed

struct HFDTreeDeleter {
    void operator()(HFDTree *tree) const { OalFreeHFDTree(tree); }
};
using HFDTreePtr = std::unique_ptr<HFDTree, HFDTreeDeleter>;
