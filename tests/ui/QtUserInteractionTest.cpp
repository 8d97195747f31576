// Where the Qt user interaction opens its boxes.
#include "support/QtTestApp.h"
#include "ui/QtUserInteraction.h"

#include <gtest/gtest.h>

#include <QDialog>
#include <QMainWindow>
#include <QMessageBox>

TEST(QtUserInteractionTest, ATipOpensAboveTheModalWindowThatAsked) {
    QtTestApp();
    QMainWindow main;
    main.show();
    LQtUserInteraction ui;
    ui.SetParentWindow([&main] { return &main; });
    QDialog options(&main);
    options.setModal(true);
    options.show();
    ui.ShowTip("Noise Floor", "Measure the noise floor first.");
    EXPECT_EQ(options.findChildren<QMessageBox*>().size(), 1);
    options.close();
    ui.ShowTip("Noise Floor", "Measure the noise floor first.");
    EXPECT_EQ(main.findChildren<QMessageBox*>(Qt::FindDirectChildrenOnly).size(), 1);
}
