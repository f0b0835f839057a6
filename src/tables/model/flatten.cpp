#include "tables/model/flatten.h"

#include "base/text.h"
#include "oa/value_text.h"
#include "tables/model/keyword_text.h"

#include <algorithm>

namespace {

constexpr int64_t most_containers = 50000;
constexpr int64_t most_copied_bytes = int64_t{1} << 27;

int fail(int code, const char *routine, const char *message) {
    OaReportFailure(code, "%s: %s", routine, message);
    return 1;
}

bool is_of(const ObjDesc *node, std::string_view class_end) {
    return tb_class_of(node).ends_with(class_end);
}

bool is_column(const ObjDesc *node) {
    return is_of(node, "COLUMN") && !is_of(node, "BIT_COLUMN");
}

bool read_number(const char *keyword, const ObjDesc *node, int64_t *value) {
    return OalParseInteger(tb_text_of(keyword, node), value);
}

ObjDesc *first_child_of(const ObjDesc *parent, std::string_view class_end) {
    for (ObjDesc *child = parent->first_child; child; child = child->right_sibling)
        if (is_of(child, class_end))
            return child;
    return nullptr;
}

ObjDesc *next_below(ObjDesc *node, const ObjDesc *top) {
    if (node->first_child)
        return node->first_child;
    while (node != top && !node->right_sibling)
        node = node->parent;
    return node == top ? nullptr : node->right_sibling;
}

void remove(ObjDesc *node) {
    OdlFreeTree(OdlCutObjDesc(node));
}

// --- The copy -----------------------------------------------------------------------------------------------------

// Makes flat->table one of a private copy of the whole tree. False when it is not found there.
bool make_copy(FlatTable *flat) {
    if (flat->root)
        return true;
    std::vector<int64_t> path;  // left siblings of the table and of what is around it
    const ObjDesc *top = flat->table;
    for (; top->parent; top = top->parent) {
        path.push_back(0);
        for (const ObjDesc *left = top->left_sibling; left; left = left->left_sibling)
            ++path.back();
    }
    OdlTree copy(OaCopyTree(top, OA_COPY_LABEL));
    ObjDesc *table = copy.get();
    for (; table && !path.empty(); path.pop_back()) {
        table = table->first_child;
        for (int64_t left = path.back(); table && left > 0; --left)
            table = table->right_sibling;
    }
    if (!table)
        return false;
    flat->root = std::move(copy);
    flat->table = table;
    return true;
}

void count_columns(FlatTable *flat) {
    flat->columns = 0;
    for (const ObjDesc *child = flat->table->first_child; child; child = child->right_sibling)
        flat->columns += is_column(child);
    if (flat->root)
        OaLongtoKwdValue("COLUMNS", flat->table, flat->columns);
}

// --- Containers ---------------------------------------------------------------------------------------------------

// What may yet be copied: labels can ask for more than any memory holds.
struct Room {
    int64_t columns = tb_most_columns;
    int64_t bytes = most_copied_bytes;

    bool take(const ObjDesc *node) {
        int64_t taken = 0;
        for (auto *at = const_cast<ObjDesc *>(node); at; at = next_below(at, node)) {
            taken += static_cast<int64_t>(sizeof *at);
            for (const Kwd *keyword = at->first_keyword; keyword; keyword = keyword->right_sibling)
                taken += static_cast<int64_t>(sizeof *keyword + keyword->size);
            if (taken > bytes)
                return false;
        }
        bytes -= taken;
        return --columns >= 0;
    }
};

struct Child {
    const ObjDesc *node;
    int64_t start_byte;
};

// Bytes from repetition to repetition. False when they are no size.
bool measure_stride(const std::vector<Child> &children, int64_t bytes, int64_t *stride) {
    *stride = bytes;
    if (!std::ranges::all_of(children, [](const Child &child) { return is_of(child.node, "CONTAINER"); }))
        return true;
    for (const Child &child : children) {
        int64_t repetitions = 0;
        int64_t inner = 0;
        if (!read_number("REPETITIONS", child.node, &repetitions) || !read_number("BYTES", child.node, &inner) ||
            __builtin_mul_overflow(repetitions, inner, &inner) || __builtin_add_overflow(*stride, inner, stride))
            return false;
    }
    return true;
}

// START_BYTE of a child's copy in repetition `r`. False when it is no position.
bool place_of(const Child &child, int64_t r, int64_t stride, int64_t container_start, int64_t smallest, int64_t *out) {
    int64_t distance = 0;
    return !__builtin_mul_overflow(r, stride, &distance) && !__builtin_add_overflow(child.start_byte, distance, out) &&
           !__builtin_add_overflow(*out, container_start, out) && !__builtin_sub_overflow(*out, smallest, out) &&
           !__builtin_sub_overflow(*out, 1, out);
}

// Puts a container's columns before it and removes it.
int redo_container(ObjDesc *container, Room *room, bool *left_out) {
    int64_t repetitions = 0;
    int64_t bytes = 0;
    int64_t start = 0;
    if (!read_number("REPETITIONS", container, &repetitions))
        return fail(531, __func__, "Container handling:  REPETITIONS read failed");
    if (!read_number("BYTES", container, &bytes))
        return fail(531, __func__, "Container handling:  BYTES read failed");
    if (!read_number("START_BYTE", container, &start))
        return fail(531, __func__, "Container handling:  START_BYTE read failed");
    std::vector<Child> children;
    int64_t smallest = INT64_MAX;
    for (const ObjDesc *child = container->first_child; child; child = child->right_sibling) {
        int64_t unused = 0;
        children.push_back({child, 0});
        if (!read_number("START_BYTE", child, &children.back().start_byte))
            return fail(531, __func__, "Container handling:  START_BYTE read failed");
        if (!read_number("BYTES", child, &unused))
            return fail(531, __func__, "Container handling:  BYTE read failed");
        smallest = std::min(smallest, children.back().start_byte);
    }
    int64_t stride = 0;
    if (!measure_stride(children, bytes, &stride))
        return fail(502, __func__, "Container handling:  BYTES read failed");
    for (int64_t r = 0; r < repetitions && !children.empty() && !*left_out; ++r) {
        for (const Child &child : children) {
            int64_t place = 0;
            if (!place_of(child, r, stride, start, smallest, &place))
                return fail(502, __func__, "Container handling:  START_BYTE set failed");
            if (!room->take(child.node)) {
                *left_out = true;
                break;
            }
            ObjDesc *copy = OdlPasteObjDescBefore(OaCopyTree(child.node, OA_COPY_LABEL), container);
            OdlAdjustObjDescLevel(copy);
            OaLongtoKwdValue("START_BYTE", copy, place);
        }
    }
    remove(container);
    return 0;
}

// --- Arrays -------------------------------------------------------------------------------------------------------

struct ArrayShape {
    int64_t items = 1;
    int64_t item_bytes = 0;
    int64_t bytes = 0;
    int64_t start_byte = 0;
    std::string type;
};

int measure_array(const char *routine, const ObjDesc *array, ArrayShape *shape) {
    int64_t axes = 0;
    int64_t offset = 0;
    int64_t element_start = 1;
    std::vector<int64_t> axis_items;
    if (!read_number("AXES", array, &axes) || axes < 1)
        return fail(531, routine, "Array handling:  AXES read failed");
    const char *list = nullptr;
    if (OaKwdValuetoStr("AXIS_ITEMS", array, &list) != 0 || OaSequencetoLongArray(list, &axis_items) != 0 ||
        static_cast<int64_t>(axis_items.size()) != axes)
        return fail(531, routine, "Array handling:  AXIS_ITEMS read failed");
    const ObjDesc *element = first_child_of(array, "ELEMENT");
    if (!element)
        return fail(530, routine, "Array handling:  Element not found");
    if (!read_number("OFFSET", array, &offset))
        return fail(531, routine, "Array handling:  OFFSET read failed");
    read_number("START_BYTE", element, &element_start);
    shape->type = tb_text_of("DATA_TYPE", element);
    bool is_size = read_number("BYTES", element, &shape->item_bytes) && shape->item_bytes > 0 && !shape->type.empty();
    for (const int64_t count : axis_items)
        is_size = is_size && count > 0 && !__builtin_mul_overflow(shape->items, count, &shape->items);
    if (!is_size || __builtin_mul_overflow(shape->items, shape->item_bytes, &shape->bytes) ||
        __builtin_add_overflow(offset, element_start, &shape->start_byte))
        return fail(502, routine, "Array handling:  copying array data failed");
    return 0;
}

// Puts a column in the place of an array.
int redo_array(ObjDesc *array) {
    ArrayShape shape;
    if (measure_array(__func__, array, &shape) != 0)
        return 1;
    ObjDesc *column =
        OdlNewObjDesc("COLUMN", nullptr, nullptr, nullptr, nullptr, array->file_name, 0, array->line_number);
    const char *name = nullptr;
    if (OaKwdValuetoStr("NAME", array, &name) == 0)
        OaStrtoKwdValue("NAME", column, name);
    OaStrtoKwdValue("DATA_TYPE", column, shape.type.c_str());
    OaLongtoKwdValue("START_BYTE", column, shape.start_byte);
    OaLongtoKwdValue("BYTES", column, shape.bytes);
    OaLongtoKwdValue("ITEMS", column, shape.items);
    OaLongtoKwdValue("ITEM_BYTES", column, shape.item_bytes);
    OaStrtoKwdValue("DESCRIPTION", column, "\"From array\"");
    OdlAdjustObjDescLevel(OdlPasteObjDescBefore(column, array));
    remove(array);
    return 0;
}

}  // namespace

int ctr_to_cols(FlatTable *flat) {
    flat->has_containers = first_child_of(flat->table, "CONTAINER") != nullptr;
    if (flat->has_containers) {
        if (!make_copy(flat))
            return fail(530, __func__, "CONTAINER handling: couldn't find table object");
        Room room;
        int64_t done = 0;
        // What a container leaves in its place may be containers again.
        for (ObjDesc *child = flat->table->first_child; child;) {
            if (!is_of(child, "CONTAINER")) {
                child = child->right_sibling;
                continue;
            }
            if (done == most_containers)
                return fail(502, __func__, "CONTAINER object handling:  Possible infinite loop");
            ObjDesc *before = child->left_sibling;
            if (redo_container(child, &room, &flat->columns_left_out) != 0)
                return fail(oa_errno, __func__,
                            done == 0 ? "Container handling failure" : "Couldn't process CONTAINER object");
            ++done;
            child = before ? before->right_sibling : flat->table->first_child;
        }
        for (ObjDesc *at = flat->table; at; at = next_below(at, flat->table)) {
            if (is_of(at, "CONTAINER")) {
                fail(530, __func__, "Container not child of table");
                break;
            }
        }
    }
    count_columns(flat);
    return 0;
}

int array_to_column(FlatTable *flat) {
    if (first_child_of(flat->table, "ARRAY") != nullptr) {
        if (!make_copy(flat))
            return fail(530, __func__, "ARRAY object: couldn't find table object");
        for (ObjDesc *child = flat->table->first_child; child;) {
            ObjDesc *next = child->right_sibling;
            if (is_of(child, "ARRAY") && redo_array(child) != 0)
                return 1;
            child = next;
        }
    }
    count_columns(flat);
    return 0;
}

int tb_add_arrays(TableInfo *table, FlatTable *flat) {
    flat->table = const_cast<ObjDesc *>(table->object);
    const int status = array_to_column(flat);
    if (flat->root) {
        table->columns.clear();
        table->containers.clear();
        table->columns_left_out = false;
        tb_get_column_info_2(flat->table, table);
    }
    return status;
}

int remove_bitcols(FlatTable *flat) {
    for (ObjDesc *at = flat->table->first_child; at;) {
        if (!is_of(at, "BIT_COLUMN")) {
            at = next_below(at, flat->table);
            continue;
        }
        if (!flat->root) {  // begin again in the copy
            if (!make_copy(flat))
                return fail(530, __func__, "Could not process bit column.");
            at = flat->table->first_child;
            continue;
        }
        ObjDesc *bits = at;
        while (at != flat->table && !at->right_sibling)
            at = at->parent;
        at = at == flat->table ? nullptr : at->right_sibling;
        remove(bits);
    }
    return 0;
}

int flatten_table(ObjDesc *table, FlatTable *flat) {
    flat->root.reset();
    flat->table = table;
    flat->columns_left_out = false;
    if (!table)
        return fail(501, __func__, "table is NULL.");
    return ctr_to_cols(flat) != 0 || array_to_column(flat) != 0 || remove_bitcols(flat) != 0 ? 1 : 0;
}
