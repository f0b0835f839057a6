// The drawing area of a window: part of a larger content, with scroll bars as needed. Private to the folder.
#pragma once

#include <QAbstractScrollArea>

struct Window;

class ClientArea final : public QAbstractScrollArea {
    Q_OBJECT

  public:
    explicit ClientArea(QWidget *parent = nullptr);

    // From here on the area's events go to the window.
    void attach(Window *window);

    void set_content(QSize content, int step);
    QPoint position() const;
    void scroll_to(QPoint position);
    // Scrolls if the key is one that does.
    bool scroll_by_key(int key);

    // The size that layouts are told; an invalid one restores the ordinary one.
    void set_size_hint(QSize size);
    QSize sizeHint() const override;
    // Size of the viewport once the area itself has this size, and of the area for a viewport of this size.
    QSize viewport_size_in(QSize area) const;
    QSize size_for_viewport(QSize viewport) const;

  protected:
    bool event(QEvent *event) override;
    bool viewportEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

  private:
    bool takes_tab(const QKeyEvent &key);
    void update_scroll_bars();
    QSize scroll_bars_at(QSize viewport) const;
    QSize frame_size() const { return {2 * frameWidth(), 2 * frameWidth()}; }
    void zoom_by_wheel(const QWheelEvent &event);
    void scroll_by_wheel(const QWheelEvent &event);

    Window *window_ = nullptr;
    QSize content_;
    QSize size_hint_;
    int step_ = 16;
    bool moving_ = false;    // both scroll bars, in one step
    int zoom_angle_ = 0;     // of the wheel, not yet a whole notch
    QPointF scroll_rest_{};  // pixels of the wheel, not yet a whole one
};
