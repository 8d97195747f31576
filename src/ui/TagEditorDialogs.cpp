#include "ui/TagEditorDialogs.h"

#include "tags/CART.h"
#include "tags/Genres.h"

#include <QComboBox>
#include <QDateTimeEdit>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include <strings.h>

#include <algorithm>
#include <functional>

namespace {

QString Text(const std::string& text) {
    return QString::fromStdString(text);
}

bool IsWave(const std::string& path) {
    const std::size_t dot = path.rfind('.');
    return dot != std::string::npos && strcasecmp(path.c_str() + dot, ".wav") == 0;
}

// A list of names; an editable one also takes a name that is not in it.
QComboBox* NameList(QWidget* parent, bool editable) {
    auto* list = new QComboBox(parent);
    list->setEditable(editable);
    list->setInsertPolicy(QComboBox::NoInsert);
    return list;
}

void ShowValue(QWidget* widget, const std::string& value) {
    if (auto* edit = qobject_cast<QLineEdit*>(widget)) edit->setText(Text(value));
    if (auto* text = qobject_cast<QPlainTextEdit*>(widget)) text->setPlainText(Text(value));
    if (auto* list = qobject_cast<QComboBox*>(widget)) {
        if (list->isEditable())
            list->setCurrentText(Text(value));
        else
            list->setCurrentIndex(std::max(list->findText(Text(value)), 0));
    }
}

QDialogButtonBox* OkCancel(QDialog* dialog) {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}

} // namespace

QWidget* LTagEditorDialog::AddField(QFormLayout* form, const LTagField& field,
                                    const std::string& value) {
    QWidget* widget = nullptr;
    const std::string tag = field.tag;
    if (tag == "GENRE") {
        // Only the ID3 editor takes a genre that is not in the list.
        auto* list = NameList(this, id3_ != nullptr);
        for (const char* genre : _Genres)
            list->addItem(genre);
        widget = list;
    } else if (tag == "CATEGORY") {
        auto* list = NameList(this, true);
        for (const LCartCategoryName& category : _CategoryNames)
            list->addItem(category.name);
        widget = list;
    } else if (list_ && tag == "COMMENT") {
        auto* text = new QPlainTextEdit(this);
        text->setTabChangesFocus(true);
        text->setMinimumHeight(text->fontMetrics().lineSpacing() * 4 + 12);
        widget = text;
    } else {
        widget = new QLineEdit(this);
    }
    ShowValue(widget, value);
    widget->setAccessibleName(QString(field.label).remove(':'));
    form->addRow(field.label, widget);
    fields_[tag] = widget;
    return widget;
}

LTagEditorDialog::LTagEditorDialog(QWidget* parent, LAudioTagData& tags, const std::string& path)
    : QDialog(parent) {
    setWindowTitle("Audio Tag Editor");
    auto* layout = new QVBoxLayout(this);
    if (IsWave(path)) {
        basic_ = std::make_unique<LBasicTagDlg>(tags);
        auto* pages = new QTabWidget(this);
        auto* page = new QWidget(pages);
        auto* form = new QFormLayout(page);
        for (const LTagField& field : LBasicTagDlg::Fields())
            AddField(form, field, basic_->Values().at(field.tag));
        auto* clear = new QPushButton("&Clear Data", page);
        connect(clear, &QPushButton::clicked, this, [this] {
            basic_->ClearData();
            for (const auto& [tag, value] : basic_->Values()) ShowValue(fields_.at(tag), value);
        });
        auto* clearRow = new QHBoxLayout;
        clearRow->addStretch(1);
        clearRow->addWidget(clear);
        form->addRow(clearRow);
        pages->addTab(page, "Basic");
        layout->addWidget(pages);
        resize(738, 627);
    } else {
        id3_ = std::make_unique<LIDTagDlg>(tags, path.substr(path.rfind('.') == std::string::npos ? path.size() : path.rfind('.')));
        auto* columns = new QHBoxLayout;
        auto* left = new QFormLayout;
        auto* right = new QFormLayout;
        const auto fields = LIDTagDlg::Fields();
        for (std::size_t i = 0; i < fields.size(); ++i)
            AddField(i < 9 ? left : right, fields[i], id3_->Values().at(fields[i].tag));
        const LTagDateTime& at = id3_->Date();
        date_ = new QDateTimeEdit(QDateTime(QDate(at.year, at.month, at.day), QTime(at.hour, at.minute)), this);
        date_->setDisplayFormat("yyyy-MM-dd HH:mm");
        date_->setCalendarPopup(true);
        date_->setAccessibleName("Date");
        right->insertRow(1, "Date:", date_);
        columns->addLayout(left);
        columns->addLayout(right);
        layout->addLayout(columns);
        resize(900, 470);
    }
    layout->addWidget(OkCancel(this));
}

LTagEditorDialog::LTagEditorDialog(QWidget* parent, LAudioTagData& tags)
    : QDialog(parent), list_(std::make_unique<LAudioTagListEditor>(tags)) {
    setWindowTitle("Edit Audio Tags");
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout;
    form->addRow("Title", new QLabel(kTitleFromFileNameNote, this));
    AddField(form, {"Artist", "ARTIST"}, list_->Values().at("ARTIST"));
    AddField(form, {"Album", "ALBUM"}, list_->Values().at("ALBUM"));
    genreList_ = new QComboBox(this);
    for (const char* genre : _Genres)
        genreList_->addItem(genre);
    genreList_->setCurrentIndex(list_->GenreIndex());
    genreList_->setAccessibleName("Genre");
    form->addRow("Genre", genreList_);
    auto* track = new QLabel(QString("%auto%   ") + kTrackNumbersNote, this);
    form->addRow("Track Number", track);
    AddField(form, {"Copyright", "COPYRIGHT"}, list_->Values().at("COPYRIGHT"));
    AddField(form, {"Comment", "COMMENT"}, list_->Values().at("COMMENT"));
    // The notes keep their height; the comment takes the room that is left.
    for (QLabel* note : findChildren<QLabel*>())
        note->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    layout->addLayout(form);
    layout->addWidget(OkCancel(this));
    resize(720, 340);
}

LTagEditorDialog::~LTagEditorDialog() = default;

QWidget* LTagEditorDialog::Field(const char* tag) const {
    const auto found = fields_.find(tag);
    return found == fields_.end() ? nullptr : found->second;
}

void LTagEditorDialog::Collect(
    const std::function<void(const std::string&, const std::string&)>& set) const {
    for (const auto& [tag, widget] : fields_) {
        if (auto* edit = qobject_cast<QLineEdit*>(widget)) set(tag, edit->text().toStdString());
        if (auto* text = qobject_cast<QPlainTextEdit*>(widget))
            set(tag, text->toPlainText().toStdString());
        if (auto* list = qobject_cast<QComboBox*>(widget))
            set(tag, list->currentText().toStdString());
    }
}

void LTagEditorDialog::accept() {
    if (id3_) {
        Collect([this](const std::string& tag, const std::string& value) { id3_->SetValue(tag, value); });
        const QDateTime at = date_->dateTime();
        id3_->SetDate({at.date().year(), at.date().month(), at.date().day(), at.time().hour(),
                       at.time().minute()});
        id3_->CmOk();
    } else if (basic_) {
        Collect([this](const std::string& tag, const std::string& value) { basic_->SetValue(tag, value); });
        basic_->CmOk();
    } else {
        Collect([this](const std::string& tag, const std::string& value) { list_->SetValue(tag, value); });
        list_->SetGenreIndex(genreList_->currentIndex());
        list_->CmOk();
    }
    QDialog::accept();
}

bool LEditTagsOfFile(QWidget* parent, LAudioTagData& tags, const std::string& path) {
    LTagEditorDialog dialog(parent, tags, path);
    return dialog.exec() == QDialog::Accepted;
}

bool LEditTagsOfFiles(QWidget* parent, LAudioTagData& tags) {
    LTagEditorDialog dialog(parent, tags);
    return dialog.exec() == QDialog::Accepted;
}
