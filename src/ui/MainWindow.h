#pragma once

#include "app/MainDialog.h"

#include <QMainWindow>

#include <map>
#include <memory>

class LRecordingsModel;
class QAction;
class QLabel;
class QMenu;
class QSystemTrayIcon;
class QTableView;

// The main window: toolbar, menus, the recordings list and the status bar over MainDialog,
// which holds every behaviour. Remembers its geometry and column widths. When the environment
// names a file in VINORA_STATUS_FILE, the window writes its status panes and rows there
// whenever they change, for scripts and tests.
class LMainWindow : public QMainWindow, private LMainDialogView {
public:
    explicit LMainWindow(LMainDialogWindows windows);
    ~LMainWindow() override;

    MainDialog& Dialog() { return *dialog_; }
    QTableView* List() const { return list_; }
    // The menu action of a command, and its toolbar button (nullptr for none).
    QAction* Action(int command) const;
    QAction* ToolAction(int command) const;
    QSystemTrayIcon* TrayIcon() const { return tray_; }

    // Start-up once the window is shown: InitDialog, then the wizard check half a second later.
    void Start();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void RowsChanged() override;
    void StatusChanged(int pane) override;
    void BeginRename(int row) override;
    void HideWindow() override;
    void CloseWindow() override;
    LProcessResult RunJob(const char* caption,
                          const std::function<LProcessResult(LProcessInterface&)>& job) override;

    void BuildActions();
    void BuildMenus();
    void BuildHelpMenu();
    void BuildToolbar();
    void BuildList();
    void BuildStatusBar();
    void BuildTray();
    void UpdateActions();
    void WriteStatusFile() const;
    void SelectionChanged();
    void ShowContextMenu(const QPoint& at);
    void RestoreLayout();
    void SaveLayout();

    std::unique_ptr<MainDialog> dialog_;
    LRecordingsModel* model_ = nullptr;
    QTableView* list_ = nullptr;
    QLabel* panes_[3] = {};
    std::map<int, QAction*> actions_;     // the menus' actions, with the shortcuts
    std::multimap<int, QAction*> tools_;  // the toolbar's buttons
    QSystemTrayIcon* tray_ = nullptr;
    QAction* minimize_ = nullptr;
    bool syncingSelection_ = false;
    bool closing_ = false;
};
