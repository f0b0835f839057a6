// What a window that shows one column at a time keeps. Private to the folder.
#pragma once

#include "tables/model/browser_position.h"
#include "tables/page_state.h"

struct BrowserState : ModuleState {
    TableProduct product;
    BrowserPosition position;
    std::unique_ptr<TableReader> reader;  // of the current table; null: its data cannot be read
    std::string reader_fault;             // why they cannot
    std::string remark;                   // that a move left, until the next one
    std::string told;                     // the failure last told, until a column can be shown
};

// The browser state of a browser window; null for any other.
BrowserState *browser_state(const Window *window);

// What is shown: the column, in bit column mode its current bit column. Null: there is none.
ColumnInfo *shown_column(const BrowserPosition &position);

// Shows the rows of the current column. The window may be gone afterwards: what cannot be shown is told.
void tb_display_column_2(Window *window);
void display_column_keywords(Window *window);
// To be called when another table became the current one: reads it and shows its keywords and first column.
void show_current_table(Window *window);
