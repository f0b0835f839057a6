// The image label that a new label window starts from.
#pragma once

#include <string>
#include <vector>

// Twelve lines of a label, each padded to 78 columns and marked by an asterisk, then notes on how to complete them.
std::vector<std::string> label_template();
