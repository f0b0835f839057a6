// Previous Pixel coding from the other side: an encoder, and a decoder byte by byte.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Samples whose difference does not fit, and every `escape_every`-th (0: none), are written in full.
inline std::string encode_previous_pixel(const std::vector<uint16_t> &samples, size_t escape_every = 0) {
    std::string bytes;
    for (size_t i = 0; i < samples.size(); ++i) {
        const int difference = i == 0 ? -1000 : static_cast<int16_t>(samples[i] - samples[i - 1]);
        const bool in_full = difference < -127 || difference > 127 || (escape_every && i % escape_every == 0);
        if (in_full)
            bytes += {'\xff', static_cast<char>(samples[i] >> 8), static_cast<char>(samples[i])};
        else
            bytes += static_cast<char>(difference + 127);
    }
    return bytes;
}

inline std::vector<uint16_t> walk_previous_pixel(const std::string &bytes) {
    std::vector<uint16_t> samples;
    unsigned previous = 0;
    for (size_t i = 0; i < bytes.size(); ++i) {
        const unsigned byte = static_cast<uint8_t>(bytes[i]);
        if (byte < 255)
            previous = (previous + byte - 127) % 65536;
        else if (i + 2 < bytes.size())
            previous = static_cast<uint8_t>(bytes[i + 1]) * 256u + static_cast<uint8_t>(bytes[i + 2]);
        else
            break;
        if (byte == 255)
            i += 2;
        samples.push_back(static_cast<uint16_t>(previous));
    }
    return samples;
}
