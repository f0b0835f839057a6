// The list of lines. Private to the folder.
#pragma once

#include <QElapsedTimer>
#include <QListView>

#include <string>
#include <vector>

class LineModel;
class QLabel;

// Shows its lines from a model, so that their number hardly matters, in the desktop's fixed-pitch font. With the
// property `narrowBlanks` runs of blanks are half as wide, as columns want that were aligned for such blanks. With the
// property `selectsByPress` a line is selected by a press on it, also again, and by Enter or Space; moving is not
// enough.
//
// Typing finds the next line that holds what was typed, anywhere in it and in any case; F3 and Shift+F3 find further
// ones.
class ListControl final : public QListView {
    Q_OBJECT

  public:
    explicit ListControl(QWidget *parent = nullptr);

    void set_lines(std::vector<std::string> lines);
    const std::vector<std::string> &lines() const;
    int selected_line() const;   // -1 when there is none
    void select_line(int line);  // sends no signal
    bool has_narrow_blanks() const;
    bool selects_by_press() const;
    double widest_line() const { return widest_; }

  signals:
    void line_selected();
    void line_activated();  // by double click or Enter

  protected:
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void changeEvent(QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

  private:
    void type(const QString &text);
    void find_from(int start, int step);
    void show_sought(bool found);
    void end_search();
    void measure();

    LineModel *model_;
    QLabel *sought_label_;
    QString sought_;
    QElapsedTimer typed_;
    int hide_timer_ = 0;
    double widest_ = 0;
    bool silent_ = false;
};
