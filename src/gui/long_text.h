// Texts of any length made to fit a message box. Private to the folder.
#pragma once

#include <QString>

struct LongText {
    QString text;
    bool cut = false;  // something was left out
};

// At most some 4,000 characters in some 30 rows; words too long for a row, such as paths, get places to break at.
LongText fit_text(const QString &text);
