#pragma once

#include <QAbstractTableModel>

class MainDialog;

// The recordings list as Qt's views read it: four columns over the rows of MainDialog, the
// first one editable (renaming the file).
class LRecordingsModel : public QAbstractTableModel {
public:
    explicit LRecordingsModel(MainDialog& dialog) : dialog_(dialog) {}

    // The rows changed as a whole.
    void Reload();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    void sort(int column, Qt::SortOrder order) override;

private:
    MainDialog& dialog_;
};
