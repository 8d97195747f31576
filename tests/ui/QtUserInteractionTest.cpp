// The Qt user interaction: where it opens its boxes, and on which thread.
#include "support/QtTestApp.h"
#include "ui/QtUserInteraction.h"

#include <gtest/gtest.h>

#include <QDialog>
#include <QMainWindow>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <thread>

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

TEST(QtUserInteractionTest, AQuestionFromAWorkerIsAnsweredOnTheGuiThread) {
    QtTestApp();
    LQtUserInteraction interaction;
    QThread* shownOn = nullptr;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) return;
        shownOn = QThread::currentThread();
        EXPECT_EQ(box->windowTitle(), "Vinora Records Vinyl to CD Converter");
        EXPECT_EQ(box->text(), "Stop recording?");
        box->button(QMessageBox::No)->click();
    });
    poll.start(20);
    LMessageAnswer answer = LMessageAnswer::Ok;
    std::atomic<bool> answered{false};
    std::thread worker([&] {
        answer = interaction.ShowMessage("Vinora Records Vinyl to CD Converter", "Stop recording?",
                                         LMessageButtons::YesNo);
        answered = true;
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return answered.load(); }, 5000));
    worker.join();
    EXPECT_EQ(answer, LMessageAnswer::No);
    EXPECT_EQ(shownOn, QApplication::instance()->thread());
}
