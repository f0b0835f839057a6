// Which window shows which class of object. The table is filled by the application; a new kind of product is a row.
#pragma once

#include "viewer/state.h"

#include <memory>
#include <span>

struct ProductOpener {
    const char *class_pattern;                          // of the object to show
    bool (*condition)(ObjDesc *root);                   // null: always
    void (*open)(std::unique_ptr<GenericState> state);  // label_state->current_object is set; shows its own errors
    void (*plot)(std::unique_ptr<GenericState> state);  // null: not plotted
};

// Rows in order of choice: the first whose condition holds and whose class occurs in the label is taken.
void set_product_openers(std::span<const ProductOpener> rows);
std::span<const ProductOpener> product_openers();
// The first row for the label's current object, whatever else the label holds; null when there is none.
const ProductOpener *find_opener(const LabelState &label);
