#include "ui/RecordingsModel.h"

#include "app/MainDialog.h"
#include "ui/Icons.h"

#include <iterator>

void LRecordingsModel::Reload() {
    beginResetModel();
    endResetModel();
}

int LRecordingsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : dialog_.List().Count();
}

int LRecordingsModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(std::size(kRecordingColumns));
}

QVariant LRecordingsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= dialog_.List().Count()) return {};
    const LRecordingRow& row = dialog_.List().Rows()[index.row()];
    if (role == Qt::DecorationRole && index.column() == 0) {
        static const QIcon wave = LThemeIcon("audio-x-wav"), mp3 = LThemeIcon("audio-x-generic");
        return row.icon == 1 ? mp3 : wave;
    }
    if (role == Qt::TextAlignmentRole && index.column() > 0)
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    if (role == Qt::EditRole && index.column() == 0)
        return QString::fromStdString(RenameEditText(row.name));
    if (role != Qt::DisplayRole && role != Qt::EditRole) return {};
    switch (index.column()) {
    case 0:
        return QString::fromStdString(row.name);
    case 1:
        return QString::fromStdString(row.duration);
    case 2:
        return QString::fromStdString(row.size);
    default:
        return QString::fromStdString(row.modified);
    }
}

QVariant LRecordingsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    if (section < 0 || section >= static_cast<int>(std::size(kRecordingColumns))) return {};
    return QString::fromLatin1(kRecordingColumns[section]);
}

Qt::ItemFlags LRecordingsModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (index.column() == 0) flags |= Qt::ItemIsEditable;
    return flags;
}

bool LRecordingsModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole || index.column() != 0) return false;
    // Renaming reloads the list, which must not happen while the editor is still committing.
    QMetaObject::invokeMethod(
        this, [this, row = index.row(), text = value.toString().toStdString()] {
            dialog_.OnRenameEnded(row, text);
        },
        Qt::QueuedConnection);
    return true;
}

void LRecordingsModel::sort(int column, Qt::SortOrder order) {
    dialog_.List().Sort(column, order == Qt::AscendingOrder);
    Reload();
}
