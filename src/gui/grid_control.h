// The grid of cells. Private to the folder.
#pragma once

#include "gui/gui.h"

#include <QTableView>

class GridModel;
class QAction;

// Asks its callback for the cells on the screen only; what it costs does not grow with the rows.
class GridControl final : public QTableView {
    Q_OBJECT

  public:
    explicit GridControl(QWidget *parent = nullptr);

    void set_grid(GuiGrid grid);
    GuiCell current() const;
    void set_current(GuiCell cell);  // sends no signal
    GuiCells selection() const;
    void copy(bool with_names);

    // Lets a menu item copy, copyWithNames or selectAll, as its property `edit` says.
    void connect_edit_item(QAction *item);

  signals:
    void cell_selected();
    void cell_activated();  // by double click or Enter

  protected:
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool viewportEvent(QEvent *event) override;

  private:
    void measure();
    int wanted_width(int column) const;
    std::string selected_text(const GuiCells &cells, bool with_names) const;

    GridModel *model_;
    bool silent_ = false;
};
