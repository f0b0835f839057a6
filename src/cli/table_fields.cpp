#include "cli/table_fields.h"

#include "base/text.h"

namespace {

bool matches(const ColumnView &view, int64_t place, const std::string &name) {
    const ViewField &field = view[place];
    const ColumnInfo &named = field.bit_column ? *field.bit_column : *field.column;
    return OdlWildCardCompare(name.c_str(), view.name(place).c_str()) ||
           OdlWildCardCompare(name.c_str(), named.name.c_str());
}

bool add_matches(const ColumnView &view, const std::string &name, std::vector<int64_t> *places) {
    const size_t before = places->size();
    for (int64_t i = 0; i < view.size(); ++i)
        if (matches(view, i, name))
            places->push_back(i);
    return places->size() > before;
}

void add_interval(const Interval &chosen, std::vector<int64_t> *places) {
    for (int64_t number = chosen.first; number <= chosen.last; ++number)
        places->push_back(number - 1);
}

}  // namespace

std::string choose_fields(const ColumnView &view, const std::optional<std::string> &columns,
                          std::vector<int64_t> *places) {
    if (view.size() == 0)
        return "the table has no columns";
    const std::optional<Interval> chosen = columns ? interval(*columns) : Interval{1, view.size()};
    if (chosen) {
        if (chosen->last > view.size())
            return util_format("there is no column %lld; there are %lld", static_cast<long long>(chosen->last),
                               static_cast<long long>(view.size()));
        add_interval(*chosen, places);
        return "";
    }
    if (add_matches(view, *columns, places))  // a name may hold commas
        return "";
    for (size_t from = 0; from <= columns->size();) {
        const size_t comma = std::min(columns->find(',', from), columns->size());
        const std::string name = columns->substr(from, comma - from);
        if (name.empty())
            return "--columns takes A:B with 1 <= A <= B, or names between commas, not " + *columns;
        if (!add_matches(view, name, places))
            return "there is no column " + name;
        from = comma + 1;
    }
    return "";
}

std::optional<ViewField> find_field(const ColumnView &view, const std::string &name) {
    for (int64_t i = 0; i < view.size(); ++i)
        if (matches(view, i, name))
            return view[i];
    for (int64_t i = 0; i < view.size(); ++i)
        if (OdlWildCardCompare(name.c_str(), view[i].column->name.c_str()))
            return ViewField{view[i].column, nullptr, view[i].item, 1, nullptr};
    return std::nullopt;
}
