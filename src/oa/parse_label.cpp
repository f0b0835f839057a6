// From any product file to its label tree.
#include "base/file.h"
#include "base/text.h"
#include "oa/gif.h"
#include "oa/jpeg2000.h"
#include "oa/oa.h"
#include "oa/signatures.h"
#include "oa/stream.h"

#include <string_view>

namespace {

constexpr const char *routine = "OaParseLabelFile";
constexpr size_t longest_label = size_t{64} << 20;

// The label's records as lines, to its END or as far as they can be read. NULs, which pad records in some files, would
// end the text and become blanks.
std::string join_label_records(OaStream *stream) {
    std::string label;
    char *record = nullptr;
    int64_t length = 0;
    while (label.size() < longest_label && OalReadStream(stream, 0, &record, -1, &length) == 0) {
        const std::string_view line(record, static_cast<size_t>(length));
        label.append(line).push_back('\n');
        if (util_trim(line, std::string_view(" \t\r\n\0", 5)) == "END")
            break;
    }
    for (char &c : label)
        if (c == '\0')
            c = ' ';
    return label;
}

ObjDesc *parse_variable_length(OaStream *stream, const char *message_file_name, int expand, int suppress_messages) {
    const std::string label = join_label_records(stream);
    odl_suppress_messages = suppress_messages;
    ObjDesc *root = OdlParseFile(stream->file_name.c_str(), nullptr, label.c_str(), message_file_name, nullptr,
                                 suppress_messages, 1, 1, 0);
    return OdlExpandLabelFile(root, message_file_name, expand, suppress_messages);
}

bool is_jpeg2000_file(const char *file_name) {
    const FilePtr file = util_open_regular(file_name);
    char start[longest_signature];
    return file && is_jpeg2000({start, fread(start, 1, sizeof start, file.get())});
}

}  // namespace

ObjDesc *OaParseLabelFile(const char *file_name, const char *message_file_name, int expand, int suppress_messages) {
    if (file_name && is_jpeg2000_file(file_name))
        return OalCreateODLTreeFromJpeg2000(file_name);
    OaStreamPtr stream(OalOpenStream(file_name, OA_UNKNOWN_RECORD_TYPE, 0, 0, "r"));
    if (!stream) {
        OaReportFailure(oa_errno, "%s: OalOpenStream returned error.", routine);
        return nullptr;
    }
    switch (stream->record_type) {
        case OA_GIF:
            return OalCreateODLTreeFromGif(stream->file.get(), stream->file_name.c_str());
        case OA_VARIABLE_LENGTH:
            return parse_variable_length(stream.get(), message_file_name, expand, suppress_messages);
        default:
            const std::string opened = stream->file_name;
            stream.reset();
            return OdlParseLabelFile(opened.c_str(), message_file_name, expand, suppress_messages);
    }
}
