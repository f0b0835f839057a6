#include "gui/definition.h"

#include "gui/client_area.h"
#include "gui/grid_control.h"
#include "gui/gui.h"
#include "gui/help_browser.h"
#include "gui/list_control.h"
#include "gui/text_control.h"

#include <QAction>
#include <QActionGroup>
#include <QCoreApplication>
#include <QDebug>
#include <QDialog>
#include <QFile>
#include <QMainWindow>
#include <QMenuBar>
#include <QUiLoader>

namespace {

// Knows our own widgets, and remembers the classes that nobody knows: Qt puts their base class in their place, and the
// definition loads all the same.
class DefinitionLoader final : public QUiLoader {
  public:
    QWidget *createWidget(const QString &class_name, QWidget *parent, const QString &name) override {
        if (QWidget *own = create_own(class_name, parent)) {
            own->setObjectName(name);
            return own;
        }
        QWidget *widget = QUiLoader::createWidget(class_name, parent, name);
        const bool is_line = class_name == QLatin1String("Line");
        if (widget && !is_line && class_name != QLatin1String(widget->metaObject()->className()))
            unknown_ = class_name;
        return widget;
    }

    std::unique_ptr<QWidget> load_file(const QString &path) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            qWarning().noquote() << path << "is absent";
            return nullptr;
        }
        std::unique_ptr<QWidget> root(load(&file));
        if (!root) {
            qWarning().noquote() << path << "is broken:" << errorString();
        } else if (!unknown_.isEmpty()) {
            qWarning().noquote() << path << "holds a widget of the unknown class" << unknown_;
            root.reset();
        }
        return root;
    }

  private:
    static QWidget *create_own(const QString &class_name, QWidget *parent) {
        if (class_name == QLatin1String("ClientArea"))
            return new ClientArea(parent);
        if (class_name == QLatin1String("QPlainTextEdit"))
            return new TextControl(parent);
        if (class_name == QLatin1String("QListView"))
            return new ListControl(parent);
        if (class_name == QLatin1String("QTableView"))
            return new GridControl(parent);
        return class_name == QLatin1String("HelpBrowser") ? new HelpBrowser(parent) : nullptr;
    }

    QString unknown_;
};

// The loader's constructor loads the plug-ins for Designer that it finds in the library paths, and with them libraries
// that take longer to load than all else at the start. No definition needs them.
std::unique_ptr<DefinitionLoader> new_loader() {
    const QStringList paths = QCoreApplication::libraryPaths();
    QCoreApplication::setLibraryPaths({});
    auto loader = std::make_unique<DefinitionLoader>();
    QCoreApplication::setLibraryPaths(paths);
    return loader;
}

QString window_path(int resource) {
    return QStringLiteral(":/windows/%1.ui").arg(resource);
}

bool take_menu_bar(QWidget *window) {
    const QVariant number = window->property("menuBar");
    if (!number.isValid())
        return true;
    auto *main_window = qobject_cast<QMainWindow *>(window);
    std::unique_ptr<QMenuBar> menu_bar = main_window ? load_menu_bar(number.toInt()) : nullptr;
    if (!menu_bar)
        return false;
    main_window->setMenuBar(menu_bar.release());
    return true;
}

}  // namespace

bool gui_has_definition(int resource) {
    return QFile::exists(window_path(resource));
}

std::unique_ptr<QWidget> load_window_definition(int resource) {
    const QString path = window_path(resource);
    std::unique_ptr<QWidget> root = new_loader()->load_file(path);
    if (root && !qobject_cast<QMainWindow *>(root.get()) && !qobject_cast<QDialog *>(root.get())) {
        qWarning().noquote() << path << "is neither a main window nor a dialog";
        return nullptr;
    }
    if (root && !take_menu_bar(root.get()))
        return nullptr;
    return root;
}

std::unique_ptr<QMenuBar> load_menu_bar(int resource) {
    const QString path = QStringLiteral(":/menus/%1.ui").arg(resource);
    const std::unique_ptr<QWidget> root = new_loader()->load_file(path);
    auto *menu_bar = root ? root->findChild<QMenuBar *>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
    if (!menu_bar) {
        if (root)
            qWarning().noquote() << path << "has no menu bar";
        return nullptr;
    }
    // The items belong to the definition's root, which goes.
    const QObjectList children = root->children();
    for (QObject *child : children) {
        if (qobject_cast<QAction *>(child) || qobject_cast<QActionGroup *>(child))
            child->setParent(menu_bar);
    }
    // A menu's heading is an item that the definition has no place for.
    const QList<QMenu *> menus = menu_bar->findChildren<QMenu *>();
    for (const QMenu *menu : menus) {
        if (menu->property("command").isValid())
            menu->menuAction()->setProperty("command", menu->property("command"));
    }
    menu_bar->setParent(nullptr);
    return std::unique_ptr<QMenuBar>(menu_bar);
}
