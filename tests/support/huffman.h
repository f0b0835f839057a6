// Huffman first-difference coding from the other side: codes by a plain list, an encoder, and a walk bit by bit.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

class HuffmanCodes {
  public:
    // Frequencies of the values 1 to 511.
    explicit HuffmanCodes(const std::vector<uint32_t> &frequencies) {
        struct Group {
            uint64_t frequency;
            std::vector<int> values;
        };
        std::vector<Group> groups;
        for (size_t i = 0; i < frequencies.size(); ++i)
            if (frequencies[i])
                groups.push_back({frequencies[i], {static_cast<int>(i) + 1}});
        const auto sort = [&] {
            std::stable_sort(groups.begin(), groups.end(),
                             [](const Group &a, const Group &b) { return a.frequency < b.frequency; });
        };
        sort();
        while (groups.size() > 1) {
            for (const int value : groups[0].values)
                codes_[value].insert(0, 1, '0');
            for (const int value : groups[1].values)
                codes_[value].insert(0, 1, '1');
            groups[1].frequency += groups[0].frequency;
            groups[1].values.insert(groups[1].values.end(), groups[0].values.begin(), groups[0].values.end());
            groups.erase(groups.begin());
            sort();
        }
        if (groups.size() == 1 && groups[0].values.size() == 1)
            codes_[groups[0].values[0]].assign(1, '0');
        for (const auto &[value, code] : codes_)
            values_[code] = value;
    }

    const std::map<int, std::string> &codes() const { return codes_; }

    // Which of the values that stand for the same difference is used: the one of the shortest code.
    std::string encode(const std::string &line) const {
        std::string bits;
        for (size_t i = 1; i < line.size(); ++i) {
            const int difference = static_cast<uint8_t>(line[i - 1] - line[i]);
            const std::string *best = nullptr;
            for (const int value : {difference, difference + 256})
                if (const auto at = codes_.find(value);
                    at != codes_.end() && (!best || at->second.size() < best->size()))
                    best = &at->second;
            bits += best ? *best : "";
        }
        std::string bytes = line.substr(0, 1);
        for (size_t i = 0; i < bits.size(); i += 8) {
            std::string byte = bits.substr(i, 8);
            byte.resize(8, '0');
            bytes += static_cast<char>(std::stoi(byte, nullptr, 2));
        }
        return bytes;
    }

    // Decodes over `line`, whose length is the room; what is not reached stays.
    void decode(const std::string &bytes, std::string *line) const {
        std::string code;
        size_t done = 0;
        (*line)[done++] = bytes[0];
        for (size_t bit = 8; bit < bytes.size() * 8 && done < line->size(); ++bit) {
            code += static_cast<uint8_t>(bytes[bit / 8]) >> (7 - bit % 8) & 1 ? '1' : '0';
            if (codes_.size() == 1)
                code.assign(1, '0');
            if (const auto at = values_.find(code); at != values_.end()) {
                (*line)[done] = static_cast<char>((*line)[done - 1] - at->second);
                ++done;
                code.clear();
            }
        }
    }

  private:
    std::map<int, std::string> codes_;
    std::map<std::string, int> values_;
};
