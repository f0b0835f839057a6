// The least that a program of this toolkit does before its first window stands: what the viewer's start is measured by.
#include <QApplication>
#include <QWidget>

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    QWidget window;
    window.setWindowTitle(QStringLiteral("Empty window"));
    window.resize(1000, 1000);
    window.show();
    return application.exec();
}
