// The error state of the object access library and its reporting. One thread owns it.
#pragma once

#include <cstdio>
#include <string>

// Code of the last failure; set by every failing routine before it reports. Codes above 899 are silent notes.
// Codes without one of their own: 501 null argument or class, 502 bad value, 531 keyword, 700 input/output.
extern int oa_errno;

// Text of the last failure: routine, colon, what failed.
extern std::string error_string;

// The stream that reports go to; standard error when null.
extern FILE *Oa_message_fptr;

// Writes `text` and a line feed to Oa_message_fptr and flushes it; when that fails, to standard error.
// Writes nothing while oa_errno is greater than 899.
void OaReportError(const char *text);

// Sets oa_errno to `code`, formats the rest (as printf) into error_string and reports it. `format` begins with "%s: "
// for the routine's name, as in OaReportFailure(531, "%s: LINES keyword missing.", __func__).
[[gnu::format(printf, 2, 3)]] void OaReportFailure(int code, const char *format, ...);

// The same, then ends the process with status 1: for allocations that must not fail.
[[noreturn, gnu::format(printf, 2, 3)]] void OaFatal(int code, const char *format, ...);
