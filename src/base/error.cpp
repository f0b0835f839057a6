#include "base/error.h"

#include <cstdarg>
#include <cstdlib>

int oa_errno = 0;
std::string error_string;
FILE *Oa_message_fptr = nullptr;

namespace {

constexpr int last_reported_code = 899;

void format_error(const char *format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = vsnprintf(nullptr, 0, format, arguments);
    error_string.assign(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    if (length > 0)
        vsnprintf(error_string.data(), error_string.size() + 1, format, again);
    va_end(again);
}

}  // namespace

void OaReportError(const char *text) {
    if (oa_errno > last_reported_code)
        return;
    FILE *stream = Oa_message_fptr ? Oa_message_fptr : stderr;
    if (fprintf(stream, "%s\n", text) < 0 || fflush(stream) != 0)
        fprintf(stderr, "%s\n", text);
}

void OaReportFailure(int code, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    format_error(format, arguments);
    va_end(arguments);
    oa_errno = code;
    OaReportError(error_string.c_str());
}

void OaFatal(int code, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    format_error(format, arguments);
    va_end(arguments);
    oa_errno = code;
    OaReportError(error_string.c_str());
    exit(1);
}
