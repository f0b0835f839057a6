// The message channel: destination, prefix, wrapping, suppression, counting.
#include "odl/message.h"

#include "base/memory.h"
#include "base/text.h"

#include <algorithm>
#include <string_view>

long odl_message_count = 0;
int odl_suppress_messages = 0;

namespace {

constexpr size_t line_width = 75;
// An indent that would leave fewer columns than this for the text is not taken.
constexpr size_t least_columns = 3;
// What a message quotes of a label may be as long as the label.
constexpr size_t longest_message = 10000;

// Columns before the message's body, under which further lines begin.
size_t body_column(std::string_view text) {
    constexpr std::string_view separator = " -- ";
    const size_t found = text.find(separator);
    if (found == std::string_view::npos)
        return 0;
    const size_t column = found + separator.size();
    return column > line_width - least_columns ? 0 : column;
}

std::string wrapped(std::string_view text) {
    const size_t indent = body_column(text);
    std::string lines;
    size_t limit = line_width;
    while (text.size() > limit) {
        const size_t blank = text.rfind(' ', limit);
        const bool breaks_at_blank = blank != std::string_view::npos && blank > 0;
        lines.append(text.substr(0, breaks_at_blank ? blank : limit)).append("\n").append(indent, ' ');
        text.remove_prefix(breaks_at_blank ? blank + 1 : limit);
        limit = line_width - indent;
    }
    return lines.append(text).append("\n");
}

void write(const char *file_name, FILE *handle, std::string_view text) {
    if (odl_suppress_messages)
        return;
    const odl::MessageFile destination(file_name, handle);
    fwrite(text.data(), 1, text.size(), destination.handle());
}

}  // namespace

bool odl::MessagePlace::report(int code, const std::string &text) const {
    odl_errno = code;
    OdlPrintMessage(file_name, handle, line, text.c_str());
    return false;
}

odl::MessageFile::MessageFile(const char *file_name, FILE *handle)
    : destination_(OdlOpenMessageFile(file_name, handle)), is_own_(destination_ != handle && destination_ != stdout) {}

odl::MessageFile::~MessageFile() {
    if (is_own_)
        fclose(destination_);
}

FILE *OdlOpenMessageFile(const char *file_name, FILE *handle) {
    if (handle)
        return handle;
    if (!file_name || odl_suppress_messages)
        return stdout;
    if (FILE *file = fopen(file_name, "a"))
        return file;
    odl_errno = 200;
    OdlPrintMessage(nullptr, nullptr, 0, "Unable to open the output file.  Messages will be written to the terminal");
    return stdout;
}

int OdlPrintMessage(const char *file_name, FILE *handle, long line_number, const char *text) {
    ++odl_message_count;
    if (!text)
        odl_errno = 1;
    if (odl_suppress_messages)
        return 1;
    const std::string prefix = line_number ? util_format(" Line %ld -- ", line_number) : std::string();
    std::string message = prefix + (text ? text : " Unknown error");
    if (message.size() > longest_message)
        message.replace(longest_message, std::string::npos, "...");
    write(file_name, handle, wrapped(message));
    return 1;
}

int OdlPrintLine(const char *file_name, FILE *handle, const char *text) {
    if (!text)
        odl_errno = 1;
    write(file_name, handle, text ? text : "Unknown error\n");
    return 1;
}

char *OdlFormatMessage(const char *text) {
    return OaCopyText(wrapped(text ? text : ""));
}
