#include "support/QtTestApp.h"
#include "tags/AudioTagData.h"
#include "ui/TagEditorDialogs.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QLineEdit>
#include <QTabWidget>

TEST(TagEditorDialog, TypedFieldsReachTheStoreOnOk) {
    QtTestApp();
    LAudioTagData tags;
    tags.SetTag("GENRE", "Jazz", true);
    {
        LTagEditorDialog id3(nullptr, tags, "/music/a.mp3");
        EXPECT_EQ(id3.windowTitle(), "Audio Tag Editor");
        qobject_cast<QLineEdit*>(id3.Field("TITLE"))->setText("Typed title");
        EXPECT_EQ(qobject_cast<QComboBox*>(id3.Field("GENRE"))->currentText(), "Jazz");
        id3.accept();
    }
    EXPECT_EQ(tags.GetTag("TITLE"), "Typed title");
    {
        LTagEditorDialog wave(nullptr, tags, "/music/a.WAV");
        ASSERT_NE(wave.findChild<QTabWidget*>(), nullptr);
        EXPECT_EQ(wave.findChild<QTabWidget*>()->tabText(0), "Basic");
        qobject_cast<QLineEdit*>(wave.Field("CLIENTID"))->setText("Station 9");
        wave.accept();
    }
    EXPECT_EQ(tags.GetTag("CLIENTID"), "Station 9");
    {
        LTagEditorDialog many(nullptr, tags);
        EXPECT_EQ(many.windowTitle(), "Edit Audio Tags");
        qobject_cast<QLineEdit*>(many.Field("ALBUM"))->setText("Collected");
        many.accept();
    }
    EXPECT_EQ(tags.GetTag("ALBUM"), "Collected");
}
