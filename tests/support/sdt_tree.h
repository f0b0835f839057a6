// Slot descriptor trees: made from label text, run over source bytes, written down.
#pragma once

#include "base/text.h"
#include "oa/sdt.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// An object in label language: "CLASS", its keywords as "NAME = value" in lines, the objects inside.
inline std::string object(const std::string &class_name, const std::string &keywords, const std::string &inside = "") {
    return "OBJECT = " + class_name + "\n" + keywords + "\n" + inside + "END_OBJECT = " + class_name + "\n";
}

inline std::string column(const std::string &type, int64_t start, int64_t bytes, const std::string &more = "") {
    return object("COLUMN", util_format("DATA_TYPE = %s\nSTART_BYTE = %lld\nBYTES = %lld\n", type.c_str(),
                                        static_cast<long long>(start), static_cast<long long>(bytes)) +
                                more);
}

inline std::string table(int64_t rows, int64_t row_bytes, const std::string &inside, const std::string &more = "") {
    return object("TABLE",
                  util_format("ROWS = %lld\nROW_BYTES = %lld\n", static_cast<long long>(rows),
                              static_cast<long long>(row_bytes)) +
                      more,
                  inside);
}

// The first object of a label, cut off from the rest.
inline ObjDesc *parse_object(const std::string &text) {
    const OdlTree root(OdlParseLabelString((text + "\nEND\n").c_str(), nullptr, 0, 1));
    return root && root->first_child ? OdlCutObjDesc(root->first_child) : nullptr;
}

inline OaSdt plan_object(const std::string &text, OaInterchangeFormat format) {
    OaSdt object(parse_object(text));
    return object && OalCreateSDT(object.get(), format) ? std::move(object) : nullptr;
}

// The output of a tree fed in chunks of the given lengths, over and over. What lies behind the buffer must stay.
inline std::string process(ObjDesc *sdt, const std::string &source, const std::vector<size_t> &cuts,
                           int64_t buffer_size) {
    const std::string guard(64, '\x5A');
    std::string buffer = std::string(static_cast<size_t>(buffer_size), '\0') + guard;
    ObjDesc *leaf = OalInitializeSDT(sdt, buffer.data(), buffer_size);
    int ended = 0;
    for (size_t i = 0, position = 0; position < source.size() && !ended; ++i) {
        // A chunk of its own, so that the sanitizer sees a read past it.
        const std::string chunk = source.substr(position, cuts[i % cuts.size()]);
        ended = OalProcessSDT(chunk.data(), static_cast<int64_t>(chunk.size()), &leaf);
        position += chunk.size();
    }
    EXPECT_EQ(ended, 1) << "the end of the data was not told";
    EXPECT_TRUE(buffer.ends_with(guard));
    return buffer.substr(0, static_cast<size_t>(buffer_size));
}

// "source start+repetitions x size>destination start:size" of every slot below a node, with { those below it }; * marks
// what the plan inserted.
inline std::string layout_text(const ObjDesc *node) {
    std::string text;
    for (const ObjDesc *child = node->first_child; child; child = child->right_sibling) {
        const OaSlot *slot = OalSlotOf(child);
        if (!slot)
            continue;
        text += util_format("%s%ld+%ldx%ld>%ld:%ld ", slot->inserted ? "*" : "", slot->src.start_offset,
                            slot->total_repetitions, slot->src.size, slot->dst.start_offset, slot->dst.size);
        if (child->first_child)
            text += "{ " + layout_text(child) + "} ";
    }
    return text;
}

// "CLASS NAME=value NAME=value { objects below }" in a line.
inline std::string label_text(const ObjDesc *node) {
    std::string text = node->class_name;
    for (const Kwd *keyword = node->first_keyword; keyword; keyword = keyword->right_sibling)
        text += util_format(" %s=%s", keyword->name, keyword->value);
    for (const ObjDesc *child = node->first_child; child; child = child->right_sibling)
        text += " { " + label_text(child) + " }";
    return text;
}
