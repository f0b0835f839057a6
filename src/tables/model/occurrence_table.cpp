#include "tables/model/occurrence_table.h"

#include "base/text.h"
#include "tables/model/out_of_memory.h"

#include <cinttypes>

bool ts_insert_occurrence_1(OccurrenceTable *table, std::string_view text) {
    if (table->size() >= ts_most_occurrences)
        return false;
    text = text.substr(0, ts_longest_line);
    const auto found = table->find(text);
    if (found != table->end()) {
        ++found->second;
        return true;
    }
    tb_or_out_of_memory("Check_Malloc, from table processing - Lumacart is out of memory and must stop",
                        [&] { return table->emplace(text, 1); });
    return true;
}

void ts_print_occurrence_1(const OccurrenceTable &table, std::string *lines) {
    for (const auto &[text, count] : table) {
        const std::string line = count == 1 ? util_format("     %s -- 1 occurrence", text.c_str())
                                            : util_format("     %s -- %" PRId64 " occurrences", text.c_str(), count);
        lines->append(line, 0, ts_longest_line).append("\n");
    }
}

void ts_cleanup_occurrence_1(OccurrenceTable *table) {
    table->clear();
}
