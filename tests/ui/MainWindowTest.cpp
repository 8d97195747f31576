// The main window on the offscreen platform: its menus and toolbar, renaming in place and
// dropping files.
#include "app/MainCommands.h"
#include "ui/DesktopTest.h"
#include "ui/MainWindow.h"

#include <QAction>
#include <QLineEdit>
#include <QMenuBar>
#include <QMimeData>
#include <QTableView>
#include <QTest>
#include <QToolBar>

namespace fs = std::filesystem;

namespace {

class MainWindowTest : public DesktopTest {};

// "&Play or Split File" -> "Play or Split File"
QStringList Texts(const QList<QAction*>& actions) {
    QStringList texts;
    for (QAction* action : actions)
        texts << (action->isSeparator() ? "-" : action->text().remove('&'));
    return texts;
}

TEST_F(MainWindowTest, MenusAndToolbarFollowTheSelectionAndCloseAsks) {
    Tone(output / "a.wav");
    Tone(output / "b.wav");
    LMainWindow window{LMainDialogWindows{}};
    window.Dialog().LoadSavedAudioFiles();
    window.show();

    // The window builds its menus and toolbar from the command tables, in their order.
    const QList<QAction*> menus = window.menuBar()->actions();
    ASSERT_EQ(menus.size(), static_cast<qsizetype>(MainMenus().size()) + 1); // and Help
    for (size_t m = 0; m < MainMenus().size(); ++m) {
        QStringList expected;
        for (int id : MainMenus()[m].items)
            expected << (id ? QString(FindMainCommand(id)->menuText).remove('&') : "-");
        EXPECT_EQ(Texts(menus[static_cast<qsizetype>(m)]->menu()->actions()), expected);
    }
    QStringList tools;
    for (int id : MainToolbar()) tools << (id ? FindMainCommand(id)->toolLabel : "-");
    EXPECT_EQ(Texts(window.findChild<QToolBar*>("Toolbar")->actions()), tools);
    EXPECT_EQ(window.Action(CM_RECORD)->shortcut().toString(), "Ctrl+R");

    EXPECT_FALSE(window.Action(CM_REMOVE_FILES)->isEnabled());
    EXPECT_TRUE(window.Action(CM_SELECT_ALL)->isEnabled());
    window.List()->selectRow(1);
    EXPECT_TRUE(window.Action(CM_REMOVE_FILES)->isEnabled());
    EXPECT_TRUE(window.Action(CM_RENAME_FILE)->isEnabled());
    // Windows that come later leave their commands disabled.
    EXPECT_FALSE(window.ToolAction(CM_PLAY_OR_SPLIT)->isEnabled());
    window.List()->clearSelection();
    EXPECT_FALSE(window.Action(CM_REMOVE_FILES)->isEnabled());

    // Close asks first.
    EXPECT_EQ(window.Action(CM_CLOSE_WINDOW)->shortcut().toString(), "Ctrl+W");
    ui.QueueAnswer(LMessageAnswer::Cancel);
    window.Action(CM_CLOSE_WINDOW)->trigger();
    EXPECT_TRUE(window.isVisible());
    ui.QueueAnswer(LMessageAnswer::Ok);
    window.Action(CM_CLOSE_WINDOW)->trigger();
    EXPECT_FALSE(window.isVisible());
}

TEST_F(MainWindowTest, F2RenamesTheFileOnDisk) {
    Tone(output / "take1.wav");
    LMainWindow window{LMainDialogWindows{}};
    window.Dialog().LoadSavedAudioFiles();
    window.show();
    window.List()->selectRow(0);
    window.Action(CM_RENAME_FILE)->trigger();
    auto* editor = window.List()->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->text(), "take1"); // the extension stays as it is
    editor->setText("Side A: Song");
    QTest::keyClick(editor, Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return fs::exists(output / "Side A Song.wav"); }, 3000));
    EXPECT_FALSE(fs::exists(output / "take1.wav"));
    EXPECT_EQ(window.List()->model()->index(0, 0).data().toString(), "Side A Song.wav");
}

TEST_F(MainWindowTest, DroppedFilesBecomeRows) {
    const fs::path elsewhere = home.Path() / "elsewhere";
    fs::create_directories(elsewhere);
    Tone(elsewhere / "x.wav");
    Tone(elsewhere / "y.wav");
    LMainWindow window{LMainDialogWindows{}};
    window.show();
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString((elsewhere / "x.wav").string())),
                  QUrl::fromLocalFile(QString::fromStdString((elsewhere / "y.wav").string()))});
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &drop);
    EXPECT_EQ(window.List()->model()->rowCount(), 2);
    EXPECT_TRUE(fs::exists(output / "x.wav"));
}

} // namespace
