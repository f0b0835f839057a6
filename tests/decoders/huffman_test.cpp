#include "decoders/huffman.h"

#include "support/huffman.h"
#include "support/silent_reports.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <utility>

namespace {

using Frequencies = std::vector<uint32_t>;

std::map<int, std::string> codes_of(const HFDTree *tree) {
    std::map<int, std::string> codes;
    std::vector<std::pair<const HFDNode *, std::string>> open = {{tree->root, ""}};
    while (!open.empty()) {
        const auto [node, code] = open.back();
        open.pop_back();
        if (node->is_leaf()) {
            codes[node->value] = code;
            continue;
        }
        EXPECT_EQ(node->value, 65535);
        open.emplace_back(node->left, code + "0");
        open.emplace_back(node->right, code + "1");
    }
    return codes;
}

Frequencies frequencies_of(const std::map<int, uint32_t> &given) {
    Frequencies frequencies(hfd_frequencies, 0);
    for (const auto &[value, count] : given)
        frequencies[static_cast<size_t>(value) - 1] = count;
    return frequencies;
}

Frequencies powers() {  // codes of up to 70 bits
    Frequencies frequencies(hfd_frequencies, 0);
    uint32_t a = 1, b = 1;
    for (size_t i = 200; i < 246; ++i) {
        frequencies[i] = a;
        b = std::exchange(a, a + b);
    }
    for (size_t i = 300; i < 330; ++i)
        frequencies[i] = 4294967295u;
    return frequencies;
}

Frequencies around(double bits) {
    Frequencies frequencies(hfd_frequencies);
    for (int i = 0; i < hfd_frequencies; ++i)
        frequencies[static_cast<size_t>(i)] = static_cast<uint32_t>(1e6 * std::pow(2, -std::abs(i - 255) / bits));
    return frequencies;
}

// Of every kind: by frequency, by chance, without any order.
std::vector<Frequencies> histograms(std::mt19937 *random) {
    std::vector<Frequencies> all = {around(0.3),
                                    around(1),
                                    around(2),
                                    around(40),
                                    powers(),
                                    Frequencies(hfd_frequencies, 1),
                                    Frequencies(hfd_frequencies, 4294967295u),
                                    frequencies_of({{7, 3}}),
                                    frequencies_of({{256, 1}, {511, 1}})};
    Frequencies chance(hfd_frequencies);
    for (uint32_t &frequency : chance)
        frequency = static_cast<uint32_t>((*random)() % 5 ? (*random)() % 8 : (*random)());
    all.push_back(chance);
    return all;
}

std::string decoded(HFDTree *tree, const std::string &bytes, std::string line) {
    EXPECT_EQ(OalHFDDecompress(reinterpret_cast<const uint8_t *>(bytes.data()),
                               reinterpret_cast<uint8_t *>(line.data()), std::ssize(bytes), std::ssize(line), tree),
              1);
    return line;
}

TEST(Huffman, GivesTheCodesThatTheEncoderGave) {
    const Frequencies ties = frequencies_of({{1, 1}, {2, 1}, {3, 1}, {4, 2}, {5, 3}});
    // By hand: 1 and 2 join to A of 2, before 4; 3 and A to B of 3, before 5; 4 and B to C of 5; 5 and C.
    const std::map<int, std::string> expected = {{5, "0"}, {4, "10"}, {3, "110"}, {1, "1110"}, {2, "1111"}};
    EXPECT_EQ(codes_of(HFDTreePtr(OalCreateHFDTree(ties.data())).get()), expected);
    std::mt19937 random(3);
    for (const Frequencies &frequencies : histograms(&random)) {
        const HFDTreePtr tree(OalCreateHFDTree(frequencies.data()));
        std::map<int, std::string> encoder_codes = HuffmanCodes(frequencies).codes();
        if (tree->root->is_leaf())
            encoder_codes.begin()->second.clear();
        EXPECT_TRUE(codes_of(tree.get()) == encoder_codes);
    }
}

TEST(Huffman, DecodesWhatWasEncodedAndAnyBytesAsABitWalkDoes) {
    std::mt19937 random(5);
    const auto letter = [&] { return static_cast<char>(random()); };
    for (const Frequencies &frequencies : histograms(&random)) {
        const HFDTreePtr tree(OalCreateHFDTree(frequencies.data()));
        const HuffmanCodes codes(frequencies);
        std::vector<uint32_t> values;  // that have a code
        for (const auto &[value, code] : codes.codes())
            values.push_back(static_cast<uint32_t>(value));
        std::string line(1, letter());
        while (line.size() < 1500)
            line += static_cast<char>(line.back() - static_cast<int>(values[random() % values.size()]));
        EXPECT_TRUE(decoded(tree.get(), codes.encode(line), std::string(line.size(), '?')) == line);

        std::string bytes(700, 0);
        std::generate(bytes.begin(), bytes.end(), letter);
        for (const size_t room : {1, 2, 31, 39, 800, 1200, 9000}) {
            for (size_t length = 1; length <= bytes.size(); length += length < 40 ? 1 : 61) {
                std::string expected(room, '?');
                codes.decode(bytes.substr(0, length), &expected);
                ASSERT_TRUE(decoded(tree.get(), bytes.substr(0, length), std::string(room, '?')) == expected)
                    << length << " bytes into " << room;
            }
        }
    }
}

TEST(Huffman, KnowsHistogramsWithoutCodes) {
    const SilentReports reports;
    EXPECT_FALSE(OalCreateHFDTree(Frequencies(hfd_frequencies, 0).data()));
    const HFDTreePtr leaf(OalCreateHFDTree(frequencies_of({{512 - 1, 9}}).data()));
    EXPECT_TRUE(leaf->root->is_leaf());
    EXPECT_EQ(decoded(leaf.get(), "A!", "0123456789ab"), "ABCDEFGHI9ab");  // value 511 is -1
    uint8_t byte = 0;
    for (const auto &[input, output] : {std::pair{0, 1}, {1, 0}, {-1, 1}}) {
        EXPECT_EQ(OalHFDDecompress(&byte, &byte, input, output, leaf.get()), 0);
        EXPECT_EQ(error_string, "OalHFDDecompress: invalid inputs!");
        EXPECT_EQ(oa_errno, 502);
    }
}

}  // namespace
