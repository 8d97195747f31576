#include "support/QtTestApp.h"
#include "tags/AudioTagData.h"
#include "ui/TagEditorDialogs.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>

TEST(TagEditorDialog, EachEditorTakesWhatItAllowsAndOkStoresIt) {
    QtTestApp();
    LAudioTagData tags;
    tags.SetTag("GENRE", "Jazz", true);
    {
        // Only the ID3 editor takes a genre of its own.
        LTagEditorDialog id3(nullptr, tags, "/music/a.mp3");
        EXPECT_EQ(id3.windowTitle(), "Audio Tag Editor");
        auto* genre = qobject_cast<QComboBox*>(id3.Field("GENRE"));
        EXPECT_EQ(genre->currentText(), "Jazz");
        EXPECT_TRUE(genre->isEditable());
        qobject_cast<QLineEdit*>(id3.Field("TITLE"))->setText("Typed title");
        id3.accept();
    }
    EXPECT_EQ(tags.GetTag("TITLE"), "Typed title");
    {
        LTagEditorDialog wave(nullptr, tags, "/music/a.WAV");
        ASSERT_NE(wave.findChild<QTabWidget*>(), nullptr);
        EXPECT_EQ(wave.findChild<QTabWidget*>()->tabText(0), "Basic");
        auto* genre = qobject_cast<QComboBox*>(wave.Field("GENRE"));
        EXPECT_FALSE(genre->isEditable());
        EXPECT_EQ(genre->currentText(), "Jazz");
        // "Clear Data" empties every field and shows the empty genre; OK then removes the tags.
        for (QPushButton* button : wave.findChildren<QPushButton*>())
            if (button->text() == "&Clear Data") button->click();
        EXPECT_EQ(qobject_cast<QLineEdit*>(wave.Field("TITLE"))->text(), "");
        EXPECT_EQ(genre->currentIndex(), 147);
        qobject_cast<QLineEdit*>(wave.Field("CLIENTID"))->setText("Station 9");
        wave.accept();
    }
    EXPECT_EQ(tags.GetTag("TITLE"), "");
    EXPECT_EQ(tags.GetTag("GENRE"), "");
    EXPECT_EQ(tags.GetTag("CLIENTID"), "Station 9");
    {
        LTagEditorDialog many(nullptr, tags);
        EXPECT_EQ(many.windowTitle(), "Edit Audio Tags");
        qobject_cast<QLineEdit*>(many.Field("ALBUM"))->setText("Collected");
        auto* comment = qobject_cast<QPlainTextEdit*>(many.Field("COMMENT"));
        ASSERT_NE(comment, nullptr);
        comment->setPlainText("Side A\nRecorded at home");
        many.accept();
    }
    EXPECT_EQ(tags.GetTag("ALBUM"), "Collected");
    EXPECT_EQ(tags.GetTag("COMMENT"), "Side A\nRecorded at home");
}
