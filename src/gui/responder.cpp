#include "gui/application.h"
#include "gui/long_text.h"

#include <QApplication>
#include <QCloseEvent>
#include <QColorDialog>
#include <QFile>
#include <QFileDialog>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

#include <cstdio>
#include <utility>

namespace {

// A box that Escape closes even where no button stands for it.
class ClosableBox final : public QMessageBox {
  public:
    using QMessageBox::QMessageBox;

  protected:
    void keyPressEvent(QKeyEvent *event) override {
        if (event->key() == Qt::Key_Escape && !escapeButton())
            reject();
        else
            QMessageBox::keyPressEvent(event);
    }
    void closeEvent(QCloseEvent *event) override {
        if (escapeButton())
            QMessageBox::closeEvent(event);
        else
            reject();
    }
};

struct BoxKind {
    QMessageBox::Icon icon;
    const char *name;
};
BoxKind kind_of(NoticeKind kind) {
    switch (kind) {
        case NoticeKind::Note:
            return {QMessageBox::Information, "Note"};
        case NoticeKind::Warning:
            return {QMessageBox::Warning, "Warning"};
        case NoticeKind::Error:
            break;
    }
    return {QMessageBox::Critical, "Error"};
}

ClosableBox *new_box(const BoxKind &kind, const std::string &text) {
    auto *box = new ClosableBox(QApplication::activeWindow());
    const LongText shown = fit_text(QString::fromStdString(text));
    box->setIcon(kind.icon);
    box->setWindowTitle(QApplication::applicationName() + QLatin1String(" - ") + QLatin1String(kind.name));
    box->setTextFormat(Qt::PlainText);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    box->setText(shown.text);
    if (shown.cut)
        box->setDetailedText(QString::fromStdString(text));
    return box;
}

bool declines(const std::string &button) {
    return button == "Cancel" || button == "No";
}

// The button's text with the first of its letters underlined that no button before it has taken for its key.
QString with_key(const std::string &button, QString *taken) {
    QString text = QString::fromStdString(button);
    for (qsizetype i = 0; i < text.size(); i++) {
        if (text[i].isLetter() && !taken->contains(text[i].toLower())) {
            taken->append(text[i].toLower());
            return text.insert(i, u'&');
        }
    }
    return text;
}

QStringList filters_of(const std::string &file_type) {
    QStringList filters;
    if (!file_type.empty()) {
        const QString type = QString::fromStdString(file_type);
        filters << QStringLiteral("%1 files (*.%2 *.%3)").arg(type.toUpper(), type.toLower(), type.toUpper());
    }
    return filters << QStringLiteral("All files (*)");
}

// False when the name is not one of a local file. Names that are not text reach us with the character U+FFFD in place
// of the bytes and so name nothing.
bool split_path(const QUrl &url, FileSpec *chosen) {
    const QString path = url.toLocalFile();
    const QByteArray bytes = QFile::encodeName(path);
    const qsizetype slash = bytes.lastIndexOf('/');
    if (slash < 0 || slash + 1 == bytes.size() || path.contains(QChar::ReplacementCharacter))
        return false;
    chosen->directory = bytes.left(qMax<qsizetype>(slash, 1)).toStdString();
    chosen->name = bytes.mid(slash + 1).toStdString();
    return true;
}

FileAnswer run_file_dialog(QFileDialog *dialog, const FileRequest &request, FileSpec *chosen) {
    const QPointer<QFileDialog> alive(dialog);
    dialog->setWindowTitle(QString::fromStdString(request.prompt));
    dialog->setNameFilters(filters_of(request.file_type));
    if (!request.proposed.directory.empty())
        dialog->setDirectory(QFile::decodeName(request.proposed.directory.c_str()));
    if (!request.proposed.name.empty())
        dialog->selectFile(QFile::decodeName(request.proposed.name.c_str()));
    const OrdinaryCursor cursor;
    if (dialog->exec() != QDialog::Accepted || !alive)
        return FileAnswer::Cancel;
    const QList<QUrl> urls = dialog->selectedUrls();
    return urls.size() == 1 && split_path(urls[0], chosen) ? FileAnswer::Ok : FileAnswer::Bad;
}

FileAnswer run_directory_dialog(QFileDialog *dialog, const std::string &prompt, std::string *chosen) {
    const QPointer<QFileDialog> alive(dialog);
    dialog->setWindowTitle(QString::fromStdString(prompt));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    const OrdinaryCursor cursor;
    if (dialog->exec() != QDialog::Accepted || !alive)
        return FileAnswer::Cancel;
    const QList<QUrl> urls = dialog->selectedUrls();
    const QString path = urls.size() == 1 ? urls[0].toLocalFile() : QString();
    if (!path.startsWith(u'/') || path.contains(QChar::ReplacementCharacter))
        return FileAnswer::Bad;
    *chosen = QFile::encodeName(path).toStdString();
    return FileAnswer::Ok;
}

// The boxes live on the heap under a guard: their parent may be destroyed, and they with it, while they are shown.
class DesktopResponder final : public Responder {
  public:
    void message(NoticeKind kind, const std::string &text) override {
        if (!qApp) {
            fprintf(stderr, "%s\n", text.c_str());
            return;
        }
        const OrdinaryCursor cursor;
        const QPointer<QMessageBox> box(new_box(kind_of(kind), text));
        // Not the ready-made one, which some desktops give an icon; the buttons of questions have none.
        box->addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
        box->exec();
        delete box;
    }

    int question(const std::string &text, const std::vector<std::string> &buttons) override {
        if (!qApp)
            return -1;
        const OrdinaryCursor cursor;
        const QPointer<QMessageBox> box(new_box({QMessageBox::Question, "Question"}, text));
        QList<QAbstractButton *> shown;
        QString taken;
        for (const std::string &button : buttons) {
            // One role for all: the desktop's order of roles would change that of the buttons.
            shown.append(box->addButton(with_key(button, &taken), QMessageBox::ActionRole));
            if (declines(button))
                box->setEscapeButton(shown.back());
        }
        box->exec();
        const auto chosen = box ? static_cast<int>(shown.indexOf(box->clickedButton())) : -1;
        delete box;
        return chosen;
    }

    FileAnswer open_file(const FileRequest &request, FileSpec *chosen) override {
        if (!qApp)
            return FileAnswer::Cancel;
        const QPointer<QFileDialog> dialog(new QFileDialog(QApplication::activeWindow()));
        dialog->setFileMode(QFileDialog::ExistingFile);
        const FileAnswer answer = run_file_dialog(dialog, request, chosen);
        delete dialog;
        return answer;
    }

    FileAnswer save_file(const FileRequest &request, FileSpec *chosen) override {
        if (!qApp)
            return FileAnswer::Cancel;
        const QPointer<QFileDialog> dialog(new QFileDialog(QApplication::activeWindow()));
        dialog->setAcceptMode(QFileDialog::AcceptSave);
        dialog->setFileMode(QFileDialog::AnyFile);
        // The program itself asks before it replaces a file.
        dialog->setOption(QFileDialog::DontConfirmOverwrite);
        dialog->setDefaultSuffix(QString::fromStdString(request.file_type));
        const FileAnswer answer = run_file_dialog(dialog, request, chosen);
        delete dialog;
        return answer;
    }

    bool choose_colour(const std::string &prompt, Colour *colour) override {
        if (!qApp)
            return false;
        const QPointer<QColorDialog> dialog(new QColorDialog(QApplication::activeWindow()));
        dialog->setWindowTitle(QString::fromStdString(prompt));
        dialog->setCurrentColor(QColor(colour->red, colour->green, colour->blue));
        const OrdinaryCursor cursor;
        const bool chosen = dialog->exec() == QDialog::Accepted && dialog;
        const QColor answer = chosen ? dialog->selectedColor() : QColor();
        delete dialog;
        if (!answer.isValid())
            return false;
        *colour = {static_cast<uint8_t>(answer.red()), static_cast<uint8_t>(answer.green()),
                   static_cast<uint8_t>(answer.blue())};
        return true;
    }

    FileAnswer choose_directory(const std::string &prompt, std::string *chosen) override {
        if (!qApp)
            return FileAnswer::Cancel;
        const QPointer<QFileDialog> dialog(new QFileDialog(QApplication::activeWindow()));
        const FileAnswer answer = run_directory_dialog(dialog, prompt, chosen);
        delete dialog;
        return answer;
    }
};

DesktopResponder g_desktop_responder;
Responder *g_responder = &g_desktop_responder;

}  // namespace

Responder *gui_set_responder(Responder *responder) {
    return std::exchange(g_responder, responder ? responder : &g_desktop_responder);
}

void gui_note(const std::string &text) {
    g_responder->message(NoticeKind::Note, text);
}
void gui_warning(const std::string &text) {
    g_responder->message(NoticeKind::Warning, text);
}
void gui_error(const std::string &text) {
    g_responder->message(NoticeKind::Error, text);
}

int gui_question(const std::string &text, const std::vector<std::string> &buttons) {
    return g_responder->question(text, buttons);
}

FileAnswer gui_open_file(const FileRequest &request, FileSpec *chosen) {
    return g_responder->open_file(request, chosen);
}

FileAnswer gui_save_file(const FileRequest &request, FileSpec *chosen) {
    return g_responder->save_file(request, chosen);
}

bool gui_choose_colour(const std::string &prompt, Colour *colour) {
    return g_responder->choose_colour(prompt, colour);
}

FileAnswer gui_choose_directory(const std::string &prompt, std::string *chosen) {
    return g_responder->choose_directory(prompt, chosen);
}
