#include "ui/QtUserInteraction.h"

#include "platform/Log.h"
#include "ui/DesktopNotification.h"

#include <QApplication>
#include <QCheckBox>
#include <QDesktopServices>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QStringList>
#include <QSystemTrayIcon>
#include <QThread>
#include <QUrl>

namespace {

// Runs `call` on the GUI thread and returns its value; the calling thread waits.
template <typename Call> auto OnGuiThread(Call call) {
    QCoreApplication* app = QCoreApplication::instance();
    if (QThread::currentThread() == app->thread()) return call();
    decltype(call()) answer{};
    QMetaObject::invokeMethod(
        app, [&] { answer = call(); }, Qt::BlockingQueuedConnection);
    return answer;
}

QString Text(const std::string& text) {
    return QString::fromStdString(text);
}

// A message's text as a box shows it: line ends written "\r\n" (as some messages carry them)
// become plain line breaks.
QString MessageText(const std::string& text) {
    return Text(text).remove('\r');
}

// "Audio Files (*.wav *.mp3);;MP3 Files (*.mp3)"
QString FilterText(const std::vector<LFileFilter>& filters) {
    QStringList entries;
    for (const LFileFilter& filter : filters) {
        QStringList patterns;
        for (const std::string& pattern : filter.patterns)
            patterns << Text(pattern);
        entries << Text(filter.name) + " (" + patterns.join(' ') + ")";
    }
    return entries.join(";;");
}

QMessageBox::StandardButtons ButtonsOf(LMessageButtons buttons) {
    switch (buttons) {
    case LMessageButtons::Ok:
        return QMessageBox::Ok;
    case LMessageButtons::OkCancel:
    case LMessageButtons::ViewCancel:
        return QMessageBox::Ok | QMessageBox::Cancel;
    case LMessageButtons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case LMessageButtons::YesNoCancel:
        return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

// The answer of a box that was closed without a button: Cancel, or No where there is none.
LMessageAnswer AnswerOf(int button, LMessageButtons buttons) {
    switch (button) {
    case QMessageBox::Ok:
        return LMessageAnswer::Ok;
    case QMessageBox::Yes:
        return LMessageAnswer::Yes;
    case QMessageBox::No:
        return LMessageAnswer::No;
    default:
        return buttons == LMessageButtons::YesNo ? LMessageAnswer::No : LMessageAnswer::Cancel;
    }
}

std::vector<std::string> Paths(const QStringList& list) {
    std::vector<std::string> paths;
    for (const QString& path : list)
        paths.push_back(path.toStdString());
    return paths;
}

} // namespace

QWidget* LQtUserInteraction::Parent() const {
    // The window that asked is the modal one on top when there is one: a box parented below it
    // would open behind it, out of the user's reach.
    if (QWidget* modal = QApplication::activeModalWidget()) return modal;
    QWidget* parent = parent_ ? parent_() : nullptr;
    return parent ? parent : QApplication::activeWindow();
}

LMessageAnswer LQtUserInteraction::ShowMessage(const std::string& caption, const std::string& text,
                                               LMessageButtons buttons) {
    return OnGuiThread([&] {
        QMessageBox box(buttons == LMessageButtons::Ok ? QMessageBox::Information
                                                       : QMessageBox::Question,
                        Text(caption), MessageText(text), ButtonsOf(buttons), Parent());
        if (caption == "Error") box.setIcon(QMessageBox::Warning);
        if (buttons == LMessageButtons::ViewCancel) box.button(QMessageBox::Ok)->setText("View");
        return AnswerOf(box.exec(), buttons);
    });
}

bool LQtUserInteraction::ShowWarningWithCheck(const std::string& caption, const std::string& text,
                                               const std::string& check) {
    return OnGuiThread([&] {
        QMessageBox box(QMessageBox::Warning, Text(caption), Text(text), QMessageBox::Ok, Parent());
        auto* tick = new QCheckBox(Text(check), &box);
        box.setCheckBox(tick);
        box.exec();
        return tick->isChecked();
    });
}

std::vector<std::string> LQtUserInteraction::ChooseOpenFiles(const LFileRequest& request,
                                                             bool multiple) {
    return OnGuiThread([&] {
        const QString title = Text(request.title), folder = Text(request.folder);
        const QString filter = FilterText(request.filters);
        if (multiple) return Paths(QFileDialog::getOpenFileNames(Parent(), title, folder, filter));
        const QString path = QFileDialog::getOpenFileName(Parent(), title, folder, filter);
        return path.isEmpty() ? std::vector<std::string>{} : Paths({path});
    });
}

std::string LQtUserInteraction::ChooseSaveFile(const LFileRequest& request) {
    return OnGuiThread([&] {
        QString start = Text(request.folder);
        if (!request.fileName.empty())
            start = start.isEmpty() ? Text(request.fileName) : start + "/" + Text(request.fileName);
        return QFileDialog::getSaveFileName(Parent(), Text(request.title), start,
                                            FilterText(request.filters))
            .toStdString();
    });
}

std::string LQtUserInteraction::ChooseFolder(const std::string& prompt, const std::string& folder) {
    return OnGuiThread([&] {
        return QFileDialog::getExistingDirectory(Parent(), Text(prompt), Text(folder))
            .toStdString();
    });
}

void LQtUserInteraction::ShowTip(const std::string& title, const std::string& text) {
    OnGuiThread([&] {
        auto* box = new QMessageBox(QMessageBox::Information, Text(title), Text(text),
                                    QMessageBox::Ok, Parent());
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->setModal(false);
        box->show();
        return 0;
    });
}

void LQtUserInteraction::ShowDockNotice(const std::string& text) {
    OnGuiThread([&] {
        if (tray_ && QSystemTrayIcon::isSystemTrayAvailable() &&
            QSystemTrayIcon::supportsMessages())
            tray_->showMessage(QApplication::applicationDisplayName(), Text(text));
        else if (!SendDesktopNotification(
                     QApplication::applicationDisplayName().toStdString(), text))
            LOG("%s", text.c_str());
        return 0;
    });
}

void LQtUserInteraction::RevealFolder(const std::string& folder) {
    OnGuiThread([&] { return QDesktopServices::openUrl(QUrl::fromLocalFile(Text(folder))); });
}
