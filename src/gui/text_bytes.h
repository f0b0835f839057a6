// Bytes as characters of a text document and back. Private to the folder.
#pragma once

#include <QString>

#include <string>
#include <string_view>

// Stands in a row that goes on in the next one. No byte is shown by it.
constexpr QChar ROW_CONTINUES(0xedff);

// Each valid UTF-8 character as itself. Line ends, NUL, bytes that are not text, and the bytes of characters that a
// document would take for something else, each as one character of a private range.
QString text_from_bytes(std::string_view bytes);
// The reverse. ROW_CONTINUES is left out.
std::string bytes_from_text(QStringView text);
