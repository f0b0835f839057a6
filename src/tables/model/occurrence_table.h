// How often each text occurs, in the order of their bytes. Bounded: columns may hold as many texts as rows.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

constexpr size_t ts_most_occurrences = 500;  // different texts
constexpr size_t ts_longest_line = 257;      // bytes of a line that tells of one; of longer texts no more counts

using OccurrenceTable = std::map<std::string, int64_t, std::less<>>;

// Counts a text. False when the table is full: from then on nothing is counted, not even texts that it holds.
bool ts_insert_occurrence_1(OccurrenceTable *table, std::string_view text);

// Appends a line for each text: "     TEXT -- 3 occurrences".
void ts_print_occurrence_1(const OccurrenceTable &table, std::string *lines);

void ts_cleanup_occurrence_1(OccurrenceTable *table);
