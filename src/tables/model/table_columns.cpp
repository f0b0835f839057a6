// The columns of a table: its COLUMNs and FIELDs, those of containers once for each repetition.
#include "base/text.h"
#include "tables/model/keyword_text.h"
#include "tables/model/out_of_memory.h"
#include "tables/model/table_info.h"
#include "tables/model/value_lists.h"

#include <algorithm>

namespace {

constexpr size_t deepest_nesting = 64;  // of containers

std::string listed_type(std::initializer_list<const char *> keywords, const ObjDesc *node,
                        std::span<const std::string_view> list) {
    const char *text = nullptr;
    for (const char *keyword : keywords) {
        if (OaKwdValuetoStr(keyword, node, &text) != 0)
            continue;
        const std::string type = tb_normalised(text);
        return search_string_array_1(list, type) >= 0 ? type : "Unknown";
    }
    return "Unknown";
}

bool is_column_class(const std::string &name) {
    return (util_contains(name, "COLUMN") && !util_contains(name, "BIT_COLUMN")) || util_contains(name, "FIELD");
}

ColumnInfo read_column(const ObjDesc *node, const std::string &class_name) {
    ColumnInfo column;
    column.object = node;
    column.class_name = class_name;
    column.name = tb_name_of(node, "Unknown");
    column.data_type = listed_type({"ITEM_TYPE", "DATA_TYPE"}, node, tb_data_types);
    column.bytes = tb_number_of({"ITEM_BYTES", "BYTES"}, node, -1);
    column.start_byte = tb_number_of({"START_BYTE"}, node, -1);
    column.items = tb_number_of({"ITEMS"}, node, 1);
    column.item_offset = tb_number_of({"ITEM_OFFSET"}, node, column.bytes);
    tb_get_bit_column_info_1(node, &column, tb_most_columns);
    return column;
}

// --- The plan -----------------------------------------------------------------------------------------------------
// The label is read once, into a tree of columns and containers; repetitions then copy from it. Containers without a
// column are left out of it, so that each repetition adds one at least and the work is bounded by what is kept.

struct PlanNode {
    ColumnInfo column;  // of a leaf
    bool is_container = false;
    size_t container = 0;  // place in the table's list
    std::vector<size_t> children;
};

class Plan {
  public:
    Plan(const ObjDesc *top, TableInfo *table) : table_(table) {
        nodes_.emplace_back();
        struct Level {
            const ObjDesc *next;
            size_t node;
        };
        std::vector<Level> levels = {{top->first_child, 0}};
        while (!levels.empty()) {
            const ObjDesc *child = levels.back().next;
            if (!child) {
                const size_t done = levels.back().node;
                levels.pop_back();
                if (!levels.empty() && !nodes_[done].children.empty())
                    nodes_[levels.back().node].children.push_back(done);
                continue;
            }
            levels.back().next = child->right_sibling;
            const std::string class_name = tb_class_of(child);
            if (class_name == "CONTAINER") {
                const size_t place = get_container_params(child, table);
                if (levels.size() > deepest_nesting) {
                    table->columns_left_out = true;
                } else if (table->containers[place].repetitions != 0) {
                    nodes_.push_back({{}, true, place, {}});
                    levels.push_back({child->first_child, nodes_.size() - 1});
                }
            } else if (is_column_class(class_name)) {
                add_leaf(child, class_name, levels.back().node);
            }
        }
    }

    // Appends the columns, in order, to the table's.
    void expand();

  private:
    struct Step {  // of the way through a container
        size_t node;
        size_t next_child;
        int64_t repetition;
        int64_t shift;  // bytes from the row's start to that of this repetition
        bool is_place;  // whether that is known
        std::string suffix;
    };

    void add_leaf(const ObjDesc *child, const std::string &class_name, size_t parent) {
        if (leaves_ == tb_most_columns) {
            table_->columns_left_out = true;
            return;
        }
        ++leaves_;
        nodes_.push_back({read_column(child, class_name), false, 0, {}});
        nodes_[parent].children.push_back(nodes_.size() - 1);
    }
    Step enter(size_t node, const Step &around, int64_t repetition) const;
    bool add(const Step &step, const ColumnInfo &column);

    TableInfo *table_;
    std::vector<PlanNode> nodes_;
    int64_t leaves_ = 0;
    int64_t used_ = 0;  // columns and bit columns
    int64_t items_ = 0;
};

Plan::Step Plan::enter(size_t node, const Step &around, int64_t repetition) const {
    const ContainerInfo &container = table_->containers[nodes_[node].container];
    Step step = {node, 0, repetition, around.shift, around.is_place, around.suffix};
    int64_t distance = 0;
    const int64_t start = container.start_byte == -1 ? 1 : container.start_byte;
    if (__builtin_mul_overflow(container.bytes, repetition, &distance) ||
        __builtin_add_overflow(distance, start, &distance) || __builtin_sub_overflow(distance, 1, &distance) ||
        __builtin_add_overflow(step.shift, distance, &step.shift))
        step.is_place = false;
    if (container.repetitions > 1)
        step.suffix.append(1, '_').append(std::to_string(repetition + 1));
    return step;
}

bool Plan::add(const Step &step, const ColumnInfo &column) {
    if (used_ >= tb_most_columns) {
        table_->columns_left_out = true;
        return false;
    }
    ColumnInfo &added = table_->columns.emplace_back(column);
    const int64_t room = tb_most_columns - ++used_;
    if (static_cast<int64_t>(added.bit_columns.size()) > room) {
        added.bit_columns.resize(static_cast<size_t>(room));
        table_->columns_left_out = true;
    }
    used_ += static_cast<int64_t>(added.bit_columns.size());
    added.items_before = items_;
    if (__builtin_add_overflow(items_, std::max<int64_t>(added.items, 1), &items_))
        items_ = INT64_MAX;
    const PlanNode &parent = nodes_[step.node];
    if (parent.is_container) {
        added.in_container = true;
        added.container_number = table_->containers[parent.container].number;
        added.repetition = step.suffix;
    }
    if (added.start_byte != -1 &&
        (!step.is_place || __builtin_add_overflow(added.start_byte, step.shift, &added.start_byte)))
        added.start_byte = -1;
    return true;
}

void Plan::expand() {
    std::vector<Step> steps = {{0, 0, 0, 0, true, ""}};
    while (!steps.empty()) {
        Step &step = steps.back();
        const PlanNode &node = nodes_[step.node];
        if (step.next_child < node.children.size()) {
            const size_t child = node.children[step.next_child++];
            if (nodes_[child].is_container)
                steps.push_back(enter(child, step, 0));
            else if (!add(step, nodes_[child].column))
                return;
            continue;
        }
        const int64_t following = step.repetition + 1;
        const size_t done = step.node;
        steps.pop_back();
        if (!steps.empty() && following < table_->containers[nodes_[done].container].repetitions)
            steps.push_back(enter(done, steps.back(), following));
    }
}

}  // namespace

size_t get_container_params(const ObjDesc *object, TableInfo *table) {
    ContainerInfo &container = table->containers.emplace_back();
    container.start_byte = tb_number_of({"START_BYTE"}, object, -1);
    container.repetitions = tb_number_of({"REPETITIONS"}, object, -1);
    container.bytes = tb_number_of({"BYTES"}, object, -1);
    container.name = tb_name_of(object, "");
    container.number = static_cast<int64_t>(table->containers.size());
    return table->containers.size() - 1;
}

void tb_get_bit_column_info_1(const ObjDesc *object, ColumnInfo *column, int64_t room) {
    for (const ObjDesc *child = object->first_child; child; child = child->right_sibling) {
        const std::string class_name = tb_class_of(child);
        if (!util_contains(class_name, "BIT_COLUMN") || static_cast<int64_t>(column->bit_columns.size()) >= room)
            continue;
        ColumnInfo &bits = column->bit_columns.emplace_back();
        bits.object = child;
        bits.class_name = class_name;
        bits.name = tb_name_of(child, "Unknown");
        bits.data_type =
            listed_type({"BIT_ITEM_TYPE", "BIT_DATA_TYPE", "ITEM_TYPE", "DATA_TYPE"}, child, tb_bit_data_types);
        bits.bytes = tb_number_of({"ITEM_BITS", "BITS"}, child, -1);
        bits.start_byte = tb_number_of({"START_BIT"}, child, -1);
        bits.items = tb_number_of({"ITEMS"}, child, 1);
        bits.item_offset = tb_number_of({"ITEMS_OFFSET"}, child, bits.bytes);  // labels of bit columns write it so
    }
}

void tb_get_column_info_2(const ObjDesc *object, TableInfo *table) {
    tb_or_out_of_memory("Lumacart tb_get_column_info ran out of memory", [&] { Plan(object, table).expand(); });
}
