#include "gui/grid_control.h"

#include "base/text.h"

#include <QAbstractTableModel>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QScrollBar>
#include <QToolTip>

#include <algorithm>

namespace {

constexpr int64_t measured_rows = 100;
constexpr int widest_column = 60;  // characters
constexpr int cell_margin = 12;    // left and right of a text together, with the grid's line
constexpr int head_margin = 12;

// One line whatever the bytes are, and not longer than can be painted at once.
QString shown_text(const std::string &bytes) {
    constexpr size_t longest = 2000;
    QString text = QString::fromUtf8(bytes.data(), static_cast<qsizetype>(std::min(bytes.size(), longest)));
    for (QChar &character : text) {
        if (character.category() == QChar::Other_Control || character.category() == QChar::Separator_Line ||
            character.category() == QChar::Separator_Paragraph)
            character = QLatin1Char(' ');
    }
    if (bytes.size() > longest)
        text += QStringLiteral(" …");
    return text;
}

// A field of tab-separated text: in quotes where a tab, line end or quote would be taken for another field's.
void append_field(std::string *text, const std::string &field) {
    if (field.find_first_of("\t\n\r\"") == std::string::npos) {
        *text += field;
        return;
    }
    *text += '"';
    for (const char c : field) {
        if (c == '"')
            *text += '"';
        *text += c;
    }
    *text += '"';
}

}  // namespace

// The cells as the view asks for them.
class GridModel final : public QAbstractTableModel {
  public:
    using QAbstractTableModel::QAbstractTableModel;

    void set(GuiGrid grid) {
        beginResetModel();
        grid_ = std::move(grid);
        endResetModel();
        // The heads of rows may need another width now.
        if (rowCount({}) > 0)
            emit headerDataChanged(Qt::Vertical, 0, rowCount({}) - 1);
    }
    const GuiGrid &grid() const { return grid_; }

    int rowCount(const QModelIndex &parent) const override {
        return parent.isValid() || grid_.columns.empty()
                   ? 0
                   : static_cast<int>(std::clamp<int64_t>(grid_.rows, 0, gui_grid_rows));
    }
    int columnCount(const QModelIndex &parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(grid_.columns.size());
    }
    QVariant data(const QModelIndex &index, int role) const override {
        if (!index.isValid())
            return {};
        switch (role) {
            case Qt::DisplayRole:
                return shown(index.row(), index.column());
            case Qt::TextAlignmentRole:
                return alignment(index.column());
            default:
                return {};
        }
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        const bool is_row = orientation == Qt::Vertical;
        if (role == Qt::TextAlignmentRole)
            return is_row ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : alignment(section);
        if (role != Qt::DisplayRole)
            return {};
        return is_row ? QVariant(QString::number(qlonglong{grid_.first_row} + section))
                      : QVariant(head(section).join(QLatin1Char('\n')));
    }

    QString shown(int row, int column) const { return grid_.text ? shown_text(grid_.text(row, column)) : QString(); }
    QStringList head(int column) const {
        const GuiGridColumn &about = grid_.columns[static_cast<size_t>(column)];
        QStringList lines{shown_text(about.name)};
        for (const std::string &remark : about.remarks)
            lines += shown_text(remark);
        return lines;
    }

  private:
    QVariant alignment(int column) const {
        const bool is_number = grid_.columns[static_cast<size_t>(column)].is_number;
        return QVariant((is_number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    }

    GuiGrid grid_;
};

GridControl::GridControl(QWidget *parent) : QTableView(parent), model_(new GridModel(this)) {
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setModel(model_);
    setWordWrap(false);
    setEditTriggers(NoEditTriggers);
    setSelectionMode(ContiguousSelection);
    setHorizontalScrollMode(ScrollPerPixel);
    setTabKeyNavigation(false);
    setCornerButtonEnabled(true);
    // Would go through all rows to find those selected; and the columns' bold heads need more room than was measured.
    horizontalHeader()->setHighlightSections(false);
    verticalHeader()->setHighlightSections(false);
    horizontalHeader()->setMinimumSectionSize(24);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    measure();
}

void GridControl::set_grid(GuiGrid grid) {
    const auto heads = [](const GuiGrid &of) {
        std::vector<std::string> all;
        for (const GuiGridColumn &column : of.columns) {
            all.push_back(column.name);
            all.insert(all.end(), column.remarks.begin(), column.remarks.end());
        }
        return all;
    };
    const bool same_heads = !grid.columns.empty() && heads(grid) == heads(model_->grid());
    std::vector<int> widths;
    for (int column = 0; same_heads && column < model_->columnCount({}); ++column)
        widths.push_back(columnWidth(column));

    silent_ = true;
    model_->set(std::move(grid));
    silent_ = false;
    measure();
    for (size_t column = 0; column < widths.size(); ++column)
        setColumnWidth(static_cast<int>(column), std::max(widths[column], columnWidth(static_cast<int>(column))));
    scrollToTop();
    horizontalScrollBar()->setValue(0);
}

// --- Current cell and selection -----------------------------------------------------------------------------------

GuiCell GridControl::current() const {
    return currentIndex().isValid() ? GuiCell{currentIndex().row(), currentIndex().column()} : GuiCell{};
}

void GridControl::set_current(GuiCell cell) {
    silent_ = true;
    const bool present = cell.row >= 0 && cell.row < model_->rowCount({}) && cell.column >= 0;
    setCurrentIndex(present ? model_->index(static_cast<int>(cell.row), cell.column) : QModelIndex());
    silent_ = false;
}

GuiCells GridControl::selection() const {
    const QItemSelection ranges = selectionModel()->selection();
    if (ranges.isEmpty())
        return {};
    GuiCells cells{{ranges[0].top(), ranges[0].left()}, {ranges[0].bottom(), ranges[0].right()}};
    for (const QItemSelectionRange &range : ranges) {
        cells.first = {std::min<int64_t>(cells.first.row, range.top()), std::min(cells.first.column, range.left())};
        cells.last = {std::max<int64_t>(cells.last.row, range.bottom()), std::max(cells.last.column, range.right())};
    }
    return cells;
}

void GridControl::currentChanged(const QModelIndex &current, const QModelIndex &previous) {
    QTableView::currentChanged(current, previous);
    if (!silent_ && current.isValid())
        emit cell_selected();
}

void GridControl::mouseDoubleClickEvent(QMouseEvent *event) {
    QTableView::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton && indexAt(event->position().toPoint()).isValid())
        emit cell_activated();
}

// --- Copying ------------------------------------------------------------------------------------------------------

std::string GridControl::selected_text(const GuiCells &cells, bool with_names) const {
    const GuiGrid &grid = model_->grid();
    std::string text;
    const auto append_line = [&](auto field) {
        for (int column = cells.first.column; column <= cells.last.column; ++column) {
            if (column > cells.first.column)
                text += '\t';
            append_field(&text, field(column));
        }
        text += '\n';
    };
    if (with_names)
        append_line([&](int column) { return grid.columns[static_cast<size_t>(column)].name; });
    for (int64_t row = cells.first.row; row <= cells.last.row; ++row)
        append_line([&](int column) { return grid.text ? grid.text(row, column) : std::string(); });
    return text;
}

void GridControl::copy(bool with_names) {
    const GuiCells cells = selection();
    if (cells.first.row < 0)
        return;
    const int64_t count = (cells.last.row - cells.first.row + 1) * (cells.last.column - cells.first.column + 1);
    if (count > gui_grid_copied_cells) {
        gui_warning(util_format("%lld cells are too many to copy; at most %lld are.", static_cast<long long>(count),
                                static_cast<long long>(gui_grid_copied_cells)));
        return;
    }
    const BusyCursor busy;
    QApplication::clipboard()->setText(QString::fromStdString(selected_text(cells, with_names)));
}

void GridControl::connect_edit_item(QAction *item) {
    const QString name = item->property("edit").toString();
    if (name == QLatin1String("copy"))
        connect(item, &QAction::triggered, this, [this] { copy(false); });
    else if (name == QLatin1String("copyWithNames"))
        connect(item, &QAction::triggered, this, [this] { copy(true); });
    else if (name == QLatin1String("selectAll"))
        connect(item, &QAction::triggered, this, &QTableView::selectAll);
}

// --- Keys and the mouse -------------------------------------------------------------------------------------------

void GridControl::keyPressEvent(QKeyEvent *event) {
    if (event->matches(QKeySequence::Copy))
        return copy(false);
    if (event->key() == Qt::Key_C && event->modifiers() == (Qt::ControlModifier | Qt::ShiftModifier))
        return copy(true);
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (currentIndex().isValid())
                emit cell_activated();
            return;
        case Qt::Key_Escape:
            return event->ignore();
        default:
            return QTableView::keyPressEvent(event);
    }
}

// What a column is too narrow for is told where the pointer rests.
bool GridControl::viewportEvent(QEvent *event) {
    if (event->type() != QEvent::ToolTip)
        return QTableView::viewportEvent(event);
    const auto &help = static_cast<const QHelpEvent &>(*event);
    const QModelIndex index = indexAt(help.pos());
    const QString text = index.isValid() ? model_->shown(index.row(), index.column()) : QString();
    const bool is_cut = fontMetrics().horizontalAdvance(text) + cell_margin > columnWidth(index.column());
    QToolTip::showText(help.globalPos(), is_cut ? text.toHtmlEscaped() : QString(), this);
    return true;
}

// --- Measures -----------------------------------------------------------------------------------------------------

void GridControl::changeEvent(QEvent *event) {
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange && model_)
        measure();
}

// In a font of fixed pitch the text of the most characters is the widest, but for signs of other scripts: one of them
// is measured for each column.
int GridControl::wanted_width(int column) const {
    QString longest;
    const int64_t rows = std::min<int64_t>(model_->rowCount({}), measured_rows);
    for (int64_t row = 0; row < rows; ++row) {
        QString text = model_->shown(static_cast<int>(row), column);
        if (text.size() > longest.size())
            longest = std::move(text);
    }
    int width = fontMetrics().horizontalAdvance(longest) + cell_margin;
    for (const QString &line : model_->head(column))
        width = std::max(width, horizontalHeader()->fontMetrics().horizontalAdvance(line) + head_margin);
    return std::min(width, fontMetrics().horizontalAdvance(QLatin1Char('0')) * widest_column);
}

void GridControl::measure() {
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);
    for (int column = 0; column < model_->columnCount({}); ++column)
        setColumnWidth(column, wanted_width(column));
}
