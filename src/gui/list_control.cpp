#include "gui/list_control.h"

#include <QAbstractListModel>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QStyledItemDelegate>

#include <algorithm>
#include <cmath>

// The lines as the view asks for them.
class LineModel final : public QAbstractListModel {
  public:
    using QAbstractListModel::QAbstractListModel;

    void set(std::vector<std::string> lines) {
        beginResetModel();
        lines_ = std::move(lines);
        endResetModel();
    }
    const std::vector<std::string> &lines() const { return lines_; }

    int rowCount(const QModelIndex &parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(lines_.size());
    }
    QVariant data(const QModelIndex &index, int role) const override {
        return role == Qt::DisplayRole && index.isValid() ? shown(index.row()) : QVariant();
    }
    // One line whatever it holds, and not longer than can be painted at once.
    QString shown(int row) const {
        constexpr size_t longest = 2000;
        const std::string &line = lines_[static_cast<size_t>(row)];
        QString text = QString::fromUtf8(line.data(), static_cast<qsizetype>(std::min(line.size(), longest)));
        for (QChar &character : text) {
            if (character.category() == QChar::Other_Control || character.category() == QChar::Separator_Line ||
                character.category() == QChar::Separator_Paragraph)
                character = QLatin1Char(' ');
        }
        if (line.size() > longest)
            text += QStringLiteral(" …");
        return text;
    }

  private:
    std::vector<std::string> lines_;
};

namespace {

constexpr int margin = 4;                 // left and right of a line
constexpr qint64 pause_of_typing = 1500;  // milliseconds after which typing seeks something else
constexpr int shown_after_typing = 2500;

// How wide texts are in a font. Of ASCII characters in a font of fixed pitch their number tells it: laying out the
// words of a hundred thousand lines would be felt.
class Ruler {
  public:
    Ruler(const QFont &font, bool narrow_blanks)
        : metrics_(font), pitch_(metrics_.horizontalAdvance(QLatin1Char('0'))), fixed_(QFontInfo(font).fixedPitch()) {
        lone_blank_ = metrics_.horizontalAdvance(QLatin1Char(' '));
        blank_ = narrow_blanks ? pitch_ / 2 : lone_blank_;
    }

    double pitch() const { return pitch_; }
    double ascent() const { return metrics_.ascent(); }
    double width(QStringView text) const {
        const bool ascii = std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 128; });
        return fixed_ && ascii ? static_cast<double>(text.size()) * pitch_
                               : metrics_.horizontalAdvance(text.toString());
    }
    double blanks(qsizetype count) const { return count == 1 ? lone_blank_ : static_cast<double>(count) * blank_; }

  private:
    QFontMetricsF metrics_;
    double pitch_;
    bool fixed_;
    double lone_blank_;
    double blank_;
};

// Calls `word(text, x)` for each run of characters other than blanks; returns where the line ends.
template <typename Word>
double lay_out(QStringView line, const Ruler &ruler, Word word) {
    double x = 0;
    for (qsizetype i = 0; i < line.size();) {
        qsizetype end = i;
        const bool blanks = line[i] == QLatin1Char(' ');
        while (end < line.size() && (line[end] == QLatin1Char(' ')) == blanks)
            ++end;
        const QStringView run = line.mid(i, end - i);
        if (!blanks)
            word(run, x);
        x += blanks ? ruler.blanks(run.size()) : ruler.width(run);
        i = end;
    }
    return x;
}

class LineDelegate final : public QStyledItemDelegate {
  public:
    explicit LineDelegate(ListControl *list) : QStyledItemDelegate(list), list_(*list) {}

    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override {
        return {static_cast<int>(std::ceil(list_.widest_line())) + 2 * margin, list_.fontMetrics().height() + 2};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &given, const QModelIndex &index) const override {
        QStyleOptionViewItem option = given;
        initStyleOption(&option, index);
        const QString line = option.text;
        option.text.clear();
        list_.style()->drawControl(QStyle::CE_ItemViewItem, &option, painter, &list_);

        const bool selected = option.state & QStyle::State_Selected;
        const bool active = option.state & QStyle::State_Active;
        painter->setPen(option.palette.color(active ? QPalette::Active : QPalette::Inactive,
                                             selected ? QPalette::HighlightedText : QPalette::Text));
        painter->setFont(option.font);
        const Ruler ruler(option.font, list_.has_narrow_blanks());
        const double baseline = option.rect.top() + 1 + ruler.ascent();
        lay_out(line, ruler, [&](QStringView word, double x) {
            painter->drawText(QPointF(option.rect.left() + margin + x, baseline), word.toString());
        });
    }

  private:
    ListControl &list_;
};

}  // namespace

ListControl::ListControl(QWidget *parent)
    : QListView(parent), model_(new LineModel(this)), sought_label_(new QLabel(this)) {
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setModel(model_);
    setItemDelegate(new LineDelegate(this));
    setUniformItemSizes(true);
    setEditTriggers(NoEditTriggers);
    setHorizontalScrollMode(ScrollPerPixel);
    sought_label_->setTextFormat(Qt::PlainText);
    sought_label_->setAutoFillBackground(true);
    sought_label_->setFrameShape(QFrame::StyledPanel);
    sought_label_->setMargin(margin);
    sought_label_->hide();
}

void ListControl::set_lines(std::vector<std::string> lines) {
    end_search();
    silent_ = true;
    model_->set(std::move(lines));
    silent_ = false;
    measure();
}

const std::vector<std::string> &ListControl::lines() const {
    return model_->lines();
}

int ListControl::selected_line() const {
    return currentIndex().isValid() ? currentIndex().row() : -1;
}

void ListControl::select_line(int line) {
    silent_ = true;
    setCurrentIndex(model_->index(line));
    silent_ = false;
}

bool ListControl::has_narrow_blanks() const {
    return property("narrowBlanks").toBool();
}

bool ListControl::selects_by_press() const {
    return property("selectsByPress").toBool();
}

void ListControl::measure() {
    const Ruler ruler(font(), has_narrow_blanks());
    widest_ = 0;
    for (size_t row = 0; row < lines().size(); ++row) {
        // No byte takes more room than a wide character.
        if (static_cast<double>(lines()[row].size()) * 2 * ruler.pitch() <= widest_)
            continue;
        const QString text = model_->shown(static_cast<int>(row));
        widest_ = std::max(widest_, lay_out(text, ruler, [](QStringView, double) {}));
    }
    scheduleDelayedItemsLayout();
}

// --- Selection ----------------------------------------------------------------------------------------------------

void ListControl::currentChanged(const QModelIndex &current, const QModelIndex &previous) {
    QListView::currentChanged(current, previous);
    if (!silent_ && current.isValid() && !selects_by_press())
        emit line_selected();
}

void ListControl::mousePressEvent(QMouseEvent *event) {
    QListView::mousePressEvent(event);
    if (selects_by_press() && event->button() == Qt::LeftButton && indexAt(event->position().toPoint()).isValid())
        emit line_selected();
}

void ListControl::mouseDoubleClickEvent(QMouseEvent *event) {
    QListView::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton && indexAt(event->position().toPoint()).isValid())
        emit line_activated();
}

void ListControl::changeEvent(QEvent *event) {
    QListView::changeEvent(event);
    if (event->type() == QEvent::FontChange && itemDelegate())
        measure();
}

// --- Keys ---------------------------------------------------------------------------------------------------------

void ListControl::keyPressEvent(QKeyEvent *event) {
    constexpr Qt::KeyboardModifiers commands = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    const QString text = event->text();
    const bool prints = !text.isEmpty() && text[0].isPrint() && !(event->modifiers() & commands);
    const bool is_typing = typed_.isValid() && typed_.elapsed() < pause_of_typing;
    const bool enters = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (selects_by_press() && currentIndex().isValid() && (enters || (event->key() == Qt::Key_Space && !is_typing))) {
        emit line_selected();
        return;
    }
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (currentIndex().isValid())
                emit line_activated();
            return;
        case Qt::Key_F3:
            if (!sought_.isEmpty())
                find_from(selected_line(), event->modifiers() & Qt::ShiftModifier ? -1 : 1);
            return;
        case Qt::Key_Escape:
            if (!sought_label_->isVisible())
                return QListView::keyPressEvent(event);
            return end_search();
        default:
            return prints ? type(text) : QListView::keyPressEvent(event);
    }
}

void ListControl::type(const QString &text) {
    const bool goes_on = typed_.isValid() && typed_.elapsed() < pause_of_typing;
    typed_.start();
    // A blank alone seeks nothing: it would be in every line.
    if (!goes_on && text.trimmed().isEmpty())
        return;
    sought_ = goes_on ? sought_ + text : text;
    // What is being typed may be in the selected line already; something new is sought behind it.
    find_from(goes_on ? std::max(selected_line(), 0) - 1 : selected_line(), 1);
}

// Selects the first line with the text sought behind `start`, around the end of the list.
void ListControl::find_from(int start, int step) {
    const int count = model_->rowCount({});
    bool found = false;
    for (int i = 1; i <= count && !found; ++i) {
        const int row = ((start + i * step) % count + count) % count;
        found = model_->shown(row).contains(sought_, Qt::CaseInsensitive);
        if (found)
            setCurrentIndex(model_->index(row));
    }
    show_sought(found);
}

void ListControl::show_sought(bool found) {
    sought_label_->setText((found ? tr("Find: %1") : tr("Not found: %1")).arg(sought_));
    sought_label_->adjustSize();
    const QSize size = sought_label_->size();
    sought_label_->move(viewport()->geometry().bottomRight() - QPoint(size.width() - 1, size.height() - 1));
    sought_label_->show();
    sought_label_->raise();
    if (hide_timer_)
        killTimer(hide_timer_);
    hide_timer_ = startTimer(shown_after_typing);
}

void ListControl::end_search() {
    typed_.invalidate();
    sought_label_->hide();
}

void ListControl::timerEvent(QTimerEvent *event) {
    if (event->timerId() != hide_timer_)
        return QListView::timerEvent(event);
    killTimer(hide_timer_);
    hide_timer_ = 0;
    sought_label_->hide();
}
