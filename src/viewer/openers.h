// Which window shows which class of object. The table is filled by the application; a new kind of product is a row.
#pragma once

#include "viewer/state.h"

#include <memory>
#include <span>

struct ProductOpener {
    const char *class_pattern;                          // of the object to show
    bool (*condition)(const ObjDesc *object);           // that the object must fulfil too; null: none
    void (*open)(std::unique_ptr<GenericState> state);  // label_state->current_object is set; shows its own errors
    void (*plot)(std::unique_ptr<GenericState> state);  // null: not plotted
    void (*browse)(std::unique_ptr<GenericState> state) = nullptr;  // one column at a time; null: not so
};

// Rows in order of choice: the first that an object of the label fits is taken, with the first such object.
void set_product_openers(std::span<const ProductOpener> rows);
std::span<const ProductOpener> product_openers();
// The first row for the label's current object, whatever else the label holds; null when there is none.
const ProductOpener *find_opener(const LabelState &label);
