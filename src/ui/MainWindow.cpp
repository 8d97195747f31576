#include "ui/MainWindow.h"

#include "app/MainCommands.h"
#include "platform/AtomicFile.h"
#include "platform/ProgramInfo.h"
#include "platform/UpdateCheck.h"
#include "platform/Settings.h"
#include "ui/Icons.h"
#include "ui/ProgressDialog.h"
#include "ui/RecordingsModel.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QStatusBar>
#include <QStyledItemDelegate>
#include <QSystemTrayIcon>
#include <QTableView>
#include <QTimer>
#include <QToolBar>

namespace {

constexpr const char* kLayoutSection = "MainWindow";
// Column widths in pixels after the first column, which takes the rest.
constexpr int kColumnWidths[] = {96, 80, 168};

// Tells the logic when in-place editing of a name starts.
class RenameDelegate : public QStyledItemDelegate {
public:
    RenameDelegate(MainDialog& dialog, QObject* parent)
        : QStyledItemDelegate(parent), dialog_(dialog) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override {
        dialog_.OnRenameStarted(index.row());
        return QStyledItemDelegate::createEditor(parent, option, index);
    }

private:
    MainDialog& dialog_;
};

// A job given as a function, run by ProcessRunAsDialog.
struct FunctionJob {
    const std::function<LProcessResult(LProcessInterface&)>& run;
};

LProcessResult Process(LProcessInterface& pi, FunctionJob& job) {
    return job.run(pi);
}

QKeySequence Shortcut(const char* text) {
    // The keypad's "+" is written "Num++".
    if (QString(text) == "Num++") return QKeySequence(Qt::KeypadModifier | Qt::Key_Plus);
    return QKeySequence(QString::fromLatin1(text));
}

} // namespace

LMainWindow::LMainWindow(LMainDialogWindows windows)
    : dialog_(std::make_unique<MainDialog>(static_cast<LMainDialogView&>(*this), std::move(windows))) {
    setWindowTitle(kProgramName);
    setWindowIcon(LProgramIcon());
    setObjectName("MainWindow");
    BuildActions();
    BuildMenus();
    BuildHelpMenu();
    BuildToolbar();
    BuildList();
    BuildStatusBar();
    BuildTray();
    setAcceptDrops(true);
    RestoreLayout();
    UpdateActions();
}

LMainWindow::~LMainWindow() {
    dialog_->Shutdown();
    // The list and its model read the dialog: they go before it does.
    delete list_;
    delete model_;
}

QAction* LMainWindow::Action(int command) const {
    const auto found = actions_.find(command);
    return found == actions_.end() ? nullptr : found->second;
}

QAction* LMainWindow::ToolAction(int command) const {
    const auto found = tools_.find(command);
    return found == tools_.end() ? nullptr : found->second;
}

void LMainWindow::Start() {
    dialog_->InitDialog();
    QTimer::singleShot(500, this, [this] { dialog_->OnStartupTimer(); });
}

void LMainWindow::BuildActions() {
    for (const LMainCommandInfo& command : MainCommands()) {
        const int id = command.id;
        if (command.menuText[0]) {
            auto* action = new QAction(QString::fromUtf8(command.menuText), this);
            if (command.shortcut[0]) action->setShortcut(Shortcut(command.shortcut));
            if (command.toolIcon[0]) action->setIcon(LThemeIcon(command.toolIcon));
            connect(action, &QAction::triggered, this, [this, id] { dialog_->RunCommand(id); });
            addAction(action);
            actions_[id] = action;
        }
        if (command.toolLabel[0]) {
            auto* tool = new QAction(LThemeIcon(command.toolIcon),
                                     QString::fromUtf8(command.toolLabel), this);
            tool->setToolTip(QString::fromUtf8(command.toolTip));
            connect(tool, &QAction::triggered, this, [this, id] { dialog_->RunCommand(id); });
            tools_.emplace(id, tool);
        }
    }
}

void LMainWindow::BuildMenus() {
    for (const LMainMenu& menu : MainMenus()) {
        QMenu* shown = menuBar()->addMenu(QString::fromUtf8(menu.title));
        for (int id : menu.items) {
            if (id == 0)
                shown->addSeparator();
            else
                shown->addAction(actions_.at(id));
        }
    }
}

void LMainWindow::BuildHelpMenu() {
    QMenu* help = menuBar()->addMenu("&Help");
    help->addAction("&Check for Updates...", this, [this] {
        RunJob(kCheckingForUpdatesCaption, [](LProcessInterface& pi) {
            return static_cast<LProcessResult>(LAboutCheckForVersionUpdate(pi, true));
        });
    });
    help->addSeparator();
    help->addAction("&About Vinora Records", this, [this] {
        QMessageBox::about(this, "About Vinora Records",
                           QString("<h3>%1</h3><p>Version %2</p><p>Brakwater Software</p>")
                               .arg(kProgramName)
                               .arg(kProgramVersion, 0, 'f', 2));
    });
}

void LMainWindow::BuildToolbar() {
    QToolBar* bar = addToolBar("Toolbar");
    bar->setObjectName("Toolbar");
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    bar->setIconSize(QSize(32, 32));
    for (int id : MainToolbar()) {
        if (id == 0)
            bar->addSeparator();
        else
            bar->addAction(ToolAction(id));
    }
}

void LMainWindow::BuildList() {
    model_ = new LRecordingsModel(*dialog_);
    model_->setParent(this);
    list_ = new QTableView(this);
    list_->setModel(model_);
    list_->setAccessibleName("Recordings");
    list_->setSelectionBehavior(QAbstractItemView::SelectRows);
    list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list_->setShowGrid(true);
    list_->setSortingEnabled(true);
    list_->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    list_->setEditTriggers(QAbstractItemView::EditKeyPressed);
    list_->setItemDelegateForColumn(0, new RenameDelegate(*dialog_, list_));
    list_->verticalHeader()->hide();
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    list_->setAlternatingRowColors(true);
    list_->setIconSize(QSize(18, 18));
    QHeaderView* header = list_->horizontalHeader();
    header->setSectionResizeMode(0, QHeaderView::Stretch);
    for (int column = 1; column <= 3; ++column)
        header->resizeSection(column, kColumnWidths[column - 1]);
    connect(list_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { SelectionChanged(); });
    connect(list_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) { dialog_->List().SetCurrent(current.row()); });
    connect(list_, &QTableView::doubleClicked, this,
            [this] { dialog_->RunCommand(CM_PLAY_OR_SPLIT); });
    connect(list_, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& at) { ShowContextMenu(at); });
    setCentralWidget(list_);
}

void LMainWindow::BuildStatusBar() {
    for (int pane = 0; pane < 3; ++pane) {
        panes_[pane] = new QLabel(QString::fromStdString(dialog_->StatusPane(pane)), this);
        panes_[pane]->setAccessibleName(QString("Status %1").arg(pane + 1));
        if (pane == 2)
            panes_[pane]->setToolTip("Files waiting to be processed, or the selected files (all "
                                     "files when none is selected) against the room on the disc "
                                     "in the burner: playing time for an audio CD, else size.");
        statusBar()->addWidget(panes_[pane], pane == 0 ? 2 : 1);
    }
}

void LMainWindow::BuildTray() {
    if (!QSystemTrayIcon::isSystemTrayAvailable()) return;
    tray_ = new QSystemTrayIcon(LProgramIcon(), this);
    tray_->setToolTip(kProgramName);
    auto* menu = new QMenu(this);
    menu->addAction("&Open Vinora Records", this, [this] {
        showNormal();
        raise();
        activateWindow();
    });
    minimize_ = menu->addAction("&Minimize Vinora Records", this, [this] { showMinimized(); });
    menu->addSeparator();
    menu->addAction("E&xit Vinora Records", this, [this] { close(); });
    tray_->setContextMenu(menu);
    tray_->show();
}

void LMainWindow::UpdateActions() {
    for (auto& [id, action] : actions_)
        action->setEnabled(dialog_->IsCommandEnabled(id));
    for (auto& [id, action] : tools_)
        action->setEnabled(dialog_->IsCommandEnabled(id));
}

void LMainWindow::SelectionChanged() {
    if (syncingSelection_) return;
    LRecordingsList& rows = dialog_->List();
    for (int row = 0; row < rows.Count(); ++row)
        rows.Select(row, list_->selectionModel()->isRowSelected(row, {}));
    UpdateActions();
}

void LMainWindow::RowsChanged() {
    syncingSelection_ = true;
    model_->Reload();
    const LRecordingsList& rows = dialog_->List();
    QItemSelection selection;
    for (int row = 0; row < rows.Count(); ++row)
        if (rows.Rows()[row].selected)
            selection.select(model_->index(row, 0), model_->index(row, 3));
    list_->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    if (rows.Current() >= 0)
        list_->selectionModel()->setCurrentIndex(model_->index(rows.Current(), 0),
                                                 QItemSelectionModel::NoUpdate);
    if (!rows.IsSorted()) list_->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
    syncingSelection_ = false;
    UpdateActions();
    WriteStatusFile();
}

void LMainWindow::StatusChanged(int pane) {
    panes_[pane]->setText(QString::fromStdString(dialog_->StatusPane(pane)));
    WriteStatusFile();
}

void LMainWindow::WriteStatusFile() const {
    static const QByteArray path = qgetenv("VINORA_STATUS_FILE");
    if (path.isEmpty()) return;
    std::string text;
    for (int pane = 0; pane < 3; ++pane)
        text += "pane " + std::to_string(pane) + ": " + dialog_->StatusPane(pane) + "\n";
    for (const LRecordingRow& row : dialog_->List().Rows())
        text += "row: " + row.name + "\t" + row.duration + "\t" + row.size + "\n";
    // A mirror of the window for scripts, rewritten at every change: whole, but not synced.
    LAtomicFile file(path.constData());
    if (file.IsOpen() && file.File().Write(text.data(), text.size())) file.Commit(kFileMode, false);
}

void LMainWindow::BeginRename(int row) {
    list_->edit(model_->index(row, 0));
}

void LMainWindow::HideWindow() {
    hide();
}

void LMainWindow::CloseWindow() {
    close();
}

LProcessResult LMainWindow::RunJob(const char* caption,
                                   const std::function<LProcessResult(LProcessInterface&)>& job) {
    FunctionJob function{job};
    return ProcessRunAsDialog(this, caption, function);
}

void LMainWindow::ShowContextMenu(const QPoint& at) {
    QMenu menu(this);
    for (int id : MainContextMenu()) {
        if (id == 0)
            menu.addSeparator();
        else
            menu.addAction(actions_.at(id));
    }
    menu.exec(list_->viewport()->mapToGlobal(at));
}

void LMainWindow::closeEvent(QCloseEvent* event) {
    if (!closing_ && !dialog_->CanClose()) {
        event->ignore();
        return;
    }
    closing_ = true;
    SaveLayout();
    dialog_->Shutdown();
    if (tray_) tray_->hide();
    event->accept();
    QApplication::quit();
}

void LMainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void LMainWindow::dropEvent(QDropEvent* event) {
    std::vector<std::string> paths;
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile()) paths.push_back(url.toLocalFile().toStdString());
    dialog_->DropFiles(paths);
    event->acceptProposedAction();
}

void LMainWindow::changeEvent(QEvent* event) {
    if (event->type() == QEvent::WindowStateChange && minimize_)
        minimize_->setEnabled(!isMinimized());
    QMainWindow::changeEvent(event);
}

void LMainWindow::RestoreLayout() {
    const std::string geometry = LUserSettingGetString(kLayoutSection, "Geometry");
    if (geometry.empty() ||
        !restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(geometry))))
        resize(760, 480);
    for (int column = 1; column <= 3; ++column) {
        const int width = LUserSettingGet<int>(kLayoutSection,
                                               ("Column" + std::to_string(column)).c_str(), 0);
        if (width > 0) list_->horizontalHeader()->resizeSection(column, width);
    }
}

void LMainWindow::SaveLayout() {
    LUserSettingSetString(kLayoutSection, "Geometry", saveGeometry().toBase64().toStdString().c_str());
    for (int column = 1; column <= 3; ++column)
        LUserSettingSet<int>(kLayoutSection, ("Column" + std::to_string(column)).c_str(),
                             list_->horizontalHeader()->sectionSize(column));
}
