// What is told while nobody attends: lines on standard error instead of boxes.
#pragma once

#include <string>

// While unattended, every box and dialog is answered at once, questions by their refusal, and logged.
void set_unattended(bool unattended);

// The file that the lines to come are about; counts them from 0 again.
void log_about(const std::string &file);
int logged_lines();
void log_unattended(const std::string &text);

// Boxes that are not shown while unattended; logged then.
void tell_note(const std::string &text);
void tell_error(const std::string &text);
