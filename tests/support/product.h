// Products on disk: a label and the data that it describes, and back again to native samples.
#pragma once

#include "base/text.h"
#include "oa/oa.h"
#include "support/notices.h"
#include "support/scratch.h"
#include "support/silent_reports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <string>
#include <vector>

// What tests of products need around them: a folder, and the notices and reports that they provoke.
class ProductTest : public testing::Test {
  protected:
    Notices notices_;
    ScratchFolder folder_;
    SilentReports reports_;
};

// The label of this text, to which an END is added.
inline OdlTree parse_label(const std::string &text) {
    return OdlTree(OdlParseLabelString((text + "\nEND\n").c_str(), nullptr, 0, 1));
}

// An IMAGE as a label describes it; what is empty or 0 is left out of the label.
struct ImageProduct {
    int64_t lines = 1;
    int64_t samples = 1;
    int bits = 8;
    std::string type = "UNSIGNED_INTEGER";
    int64_t bands = 0;
    std::string storage = {};
    int64_t prefix = 0;  // bytes around each line
    int64_t suffix = 0;
    std::string more = {};  // more lines inside the object: "MINIMUM = 3\n"
    std::string record_type = "FIXED_LENGTH";
    std::string data = {};  // as stored

    int64_t record_bytes() const { return prefix + samples * bits / 8 + suffix; }

    std::string object() const {
        std::string text = util_format("OBJECT = IMAGE\n LINES = %lld\n LINE_SAMPLES = %lld\n SAMPLE_BITS = %d\n",
                                       static_cast<long long>(lines), static_cast<long long>(samples), bits);
        text += " SAMPLE_TYPE = " + type + "\n";
        if (!storage.empty())
            text += " BAND_STORAGE_TYPE = " + storage + "\n";
        for (const auto &[name, number] :
             {std::pair{"BANDS", bands}, {"LINE_PREFIX_BYTES", prefix}, {"LINE_SUFFIX_BYTES", suffix}})
            if (number)
                text += util_format(" %s = %lld\n", name, static_cast<long long>(number));
        return text + more + "END_OBJECT = IMAGE\n";
    }
};

// Writes `name`.IMG and the label `name`.LBL, which points at the data's first byte behind `skipped` others. Returns
// the label's path.
inline std::string write_detached(const ScratchFolder &folder, const std::string &name, const ImageProduct &product,
                                  int64_t skipped = 0) {
    folder.write(name + ".IMG", std::string(static_cast<size_t>(skipped), '#') + product.data);
    return folder.write(name + ".LBL", "RECORD_TYPE = " + product.record_type +
                                           "\nRECORD_BYTES = " + std::to_string(product.record_bytes()) +
                                           "\n^IMAGE = (\"" + name + ".IMG\", " + std::to_string(skipped + 1) +
                                           " <BYTES>)\n" + product.object() + "END\n");
}

// Writes `name`.IMG, whose first records are its label. Returns its path.
inline std::string write_attached(const ScratchFolder &folder, const std::string &name, const ImageProduct &product) {
    constexpr size_t room_for_numbers = 64;
    const auto record_bytes = static_cast<size_t>(product.record_bytes());
    std::string label = "RECORD_TYPE = " + product.record_type + "\nRECORD_BYTES = " + std::to_string(record_bytes) +
                        "\n" + product.object();
    const size_t records = (label.size() + room_for_numbers) / record_bytes + 1;
    label += "^IMAGE = " + std::to_string(records + 1) + "\nEND\n";
    label.resize(records * record_bytes, ' ');
    return folder.write(name + ".IMG", label + product.data);
}

// The parsed label of a product, and its first object of a class.
struct OpenProduct {
    explicit OpenProduct(const std::string &path) : root(OaParseLabelFile(path.c_str(), nullptr, 0, 1)) {}

    ObjDesc *object(const char *class_name) const {
        return root ? OdlFindObjDesc(root.get(), class_name, nullptr, nullptr, 1, SCOPE_TO_END) : nullptr;
    }
    ObjDesc *image() const { return object("IMAGE"); }

    OdlTree root;
};

// Values as stored in the given byte order.
template <typename T>
std::string stored(const std::vector<T> &values, std::endian order) {
    std::string bytes;
    for (const T value : values) {
        char item[sizeof(T)];
        memcpy(item, &value, sizeof item);
        if (order != std::endian::native)
            std::reverse(item, item + sizeof item);
        bytes.append(item, sizeof item);
    }
    return bytes;
}

// A record of variable length: its length, its bytes and a pad byte behind an odd number of them.
inline std::string record(const std::string &bytes) {
    return stored<uint16_t>({static_cast<uint16_t>(bytes.size())}, std::endian::little) + bytes +
           (bytes.size() % 2 ? "\n" : "");
}

inline std::string bytes_of(const OaObject *object) {
    return object ? std::string(static_cast<const char *>(object->data), static_cast<size_t>(object->size)) : "";
}

template <typename T>
std::vector<T> samples_of(const OaObject *object) {
    std::vector<T> samples(object ? static_cast<size_t>(object->size) / sizeof(T) : 0);
    if (object)
        memcpy(samples.data(), object->data, samples.size() * sizeof(T));
    return samples;
}

inline std::string keyword_of(const ObjDesc *node, const char *name) {
    const char *text = nullptr;
    return node && OaKwdValuetoStr(name, node, &text) == 0 ? text : "(none)";
}
