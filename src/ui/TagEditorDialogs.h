#pragma once

#include "app/TagEditors.h"

#include <QDialog>

#include <map>
#include <memory>

class LAudioTagData;
class QComboBox;
class QDateTimeEdit;
class QWidget;

// The tag editors as windows over LIDTagDlg, LBasicTagDlg and LAudioTagListEditor. Each shows
// a form of the fields; OK stores them in the tag store (the caller writes the file).
class LTagEditorDialog : public QDialog {
public:
    // The editor for a file: the "Basic" page for ".wav", else the ID3 editor.
    LTagEditorDialog(QWidget* parent, LAudioTagData& tags, const std::string& path);
    // The editor of the tags shared by several files.
    LTagEditorDialog(QWidget* parent, LAudioTagData& tags);
    ~LTagEditorDialog() override;

    // The field of a tag ("TITLE"): a line edit, a text of several lines or a list.
    QWidget* Field(const char* tag) const;

    void accept() override;

private:
    QWidget* AddField(class QFormLayout* form, const LTagField& field, const std::string& value);
    void Collect(const std::function<void(const std::string&, const std::string&)>& set) const;

    std::unique_ptr<LIDTagDlg> id3_;
    std::unique_ptr<LBasicTagDlg> basic_;
    std::unique_ptr<LAudioTagListEditor> list_;
    std::map<std::string, QWidget*> fields_;
    QDateTimeEdit* date_ = nullptr;
    QComboBox* genreList_ = nullptr;
};

// What the main window opens for its Edit Tag and Edit Selected Tags commands.
bool LEditTagsOfFile(QWidget* parent, LAudioTagData& tags, const std::string& path);
bool LEditTagsOfFiles(QWidget* parent, LAudioTagData& tags);
