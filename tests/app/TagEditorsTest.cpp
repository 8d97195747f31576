#include "app/TagEditors.h"

#include "tags/AudioTagData.h"
#include "tags/Genres.h"

#include <gtest/gtest.h>

TEST(TagEditors, OkStoresTheFieldsTheProgramAndTheDate) {
    LAudioTagData tags;
    tags.SetTag("TITLE", "Old", true);
    tags.SetTag("ENCODER", "Someone else", true);
    LIDTagDlg untouched(tags, ".mp3");
    untouched.CmOk();
    EXPECT_FALSE(tags.HasParm("DATE")) << "no date is made up";
    LIDTagDlg id3(tags, ".mp3");
    EXPECT_EQ(id3.Values().at("TITLE"), "Old");
    id3.SetValue("TITLE", "New");
    id3.SetValue("ENCODER", "");
    id3.SetDate({2026, 3, 5, 14, 7});
    id3.CmOk();
    EXPECT_EQ(tags.GetTag("TITLE"), "New");
    EXPECT_FALSE(tags.HasParm("ENCODER")) << "an emptied field removes its tag";
    EXPECT_EQ(tags.GetTag("DATE"), "0503");
    EXPECT_EQ(tags.GetTag("TIME"), "1407");
    EXPECT_FALSE(tags.HasParm("PRODUCERAPPVERSION"));

    LIDTagDlg again(tags, ".WAV");
    EXPECT_EQ(again.Date().day, 5);
    EXPECT_EQ(again.Date().minute, 7);
    again.CmOk();
    EXPECT_EQ(tags.GetTag("PRODUCERAPPVERSION"), "1.51");
}

TEST(TagEditors, BasicPageClearsAndTheBatchEditorFindsTheGenre) {
    LAudioTagData tags;
    tags.SetTag("TITLE", "Side A", true);
    tags.SetTag("GENRE", "rock", true);
    LBasicTagDlg basic(tags);
    basic.CmOk();
    EXPECT_EQ(tags.GetTag("ENCODER"), "Vinora Records Vinyl to CD Converter 1.51");
    EXPECT_EQ(tags.GetTag("TITLE"), "Side A");
    basic.ClearData();
    for (const auto& [tag, value] : basic.Values())
        EXPECT_EQ(value, "") << tag;

    LAudioTagListEditor list(tags);
    EXPECT_STREQ(_Genres[list.GenreIndex()], "Rock");
    tags.SetTag("GENRE", "Not a genre", true);
    EXPECT_EQ(LAudioTagListEditor(tags).GenreIndex(), 0);
    list.SetValue("ARTIST", "Band");
    list.CmOk();
    EXPECT_EQ(tags.GetTag("ARTIST"), "Band");
    EXPECT_EQ(tags.GetTag("GENRE"), "Rock");
    EXPECT_EQ(tags.GetTag("TITLE"), "Side A");
}
