#include "tags/AudioTagData.h"
#include "tags/Genres.h"
#include "tags/TagText.h"

#include <gtest/gtest.h>

namespace {

std::vector<std::string> Names(const LHashTable& table) {
    std::vector<std::string> names;
    for (const LHashTable::LHashNode& node : table)
        names.push_back(node.name);
    return names;
}

} // namespace

TEST(TagStore, SetParmInsertsAtTheHeadAndSetParmBottomAtTheTail) {
    LHashTable table;
    table.SetParmBottom("A", "1");
    table.SetParmBottom("B", "2");
    table.SetParm("C", "3");
    table.SetParm("A", "one"); // replaces in place
    EXPECT_EQ(Names(table), (std::vector<std::string>{"C", "A", "B"}));
    EXPECT_STREQ(table.GetParm("A", "x"), "one");
    EXPECT_STREQ(table.GetParm("a", "x"), "x"); // names are case-sensitive
    table.DeleteParm("A");
    EXPECT_EQ(Names(table), (std::vector<std::string>{"C", "B"}));
}

TEST(TagStore, SetTagTrimsCutsAndRemoves) {
    LAudioTagData tags;
    tags.SetTag("TITLE", "  Side One \t", true);
    EXPECT_EQ(tags.GetTag("TITLE"), "Side One");
    tags.SetTag("TITLE", "Other", false);
    EXPECT_EQ(tags.GetTag("TITLE"), "Side One");
    tags.SetTag("TITLE", "   ", true);
    EXPECT_FALSE(tags.HasParm("TITLE"));

    // 258 ASCII bytes and a two-byte character: cut before the character, never inside it.
    const std::string value = std::string(258, 'a') + "\xC3\xA9" + "tail";
    tags.SetTag("COMMENT", value.c_str(), true);
    EXPECT_EQ(tags.GetTag("COMMENT"), std::string(258, 'a'));
    char out[260];
    tags.GetTag("COMMENT", out);
    EXPECT_EQ(std::string(out), std::string(258, 'a'));
}

TEST(TagStore, CustomParmsTakeTitleFromTheFileNameAndSetTheTrack) {
    LAudioTagData tags;
    tags.SetTag("TITLE", "Old", true);
    tags.SetCustomTagParms("/music/Side A.part 2.wav", true, 7);
    EXPECT_EQ(tags.GetTag("TITLE"), "Side A.part 2");
    EXPECT_EQ(tags.GetTag("TRACKNUMBER"), "7");
    tags.SetCustomTagParms("/music/x.wav", false, -1);
    EXPECT_EQ(tags.GetTag("TITLE"), "Side A.part 2");
    EXPECT_EQ(tags.GetTag("TRACKNUMBER"), "7");
}

TEST(TagNames, GenreTableSkipsOnePublishedEntryAndIsSearchedWithoutRegardToCase) {
    EXPECT_STREQ(_Genres[132], "BritPop");
    EXPECT_STREQ(_Genres[133], "Polsk Punk");
    EXPECT_STREQ(_Genres[147], "");
    EXPECT_EQ(FindGenre("rock"), 17);
    EXPECT_EQ(FindGenre("My Genre"), -1);
    EXPECT_EQ(FindGenre(""), -1);
}

TEST(TagText, ConvertsBetweenEncodings) {
    EXPECT_EQ(LCopyFromISO88591("Caf\xE9"), "Caf\xC3\xA9");
    EXPECT_EQ(LCopyToISO88591("Caf\xC3\xA9 M\xC3\xBCller", 30), "Caf\xE9 M\xFCller");
    EXPECT_EQ(LCopyToISO88591("Caf\xC3\xA9 M\xC3\xBCller", 4), "Caf\xE9");
    // A character Latin-1 lacks still gives some text; broken UTF-8 is left out.
    EXPECT_FALSE(LCopyToISO88591("\xE2\x82\xAC", 10).empty());
    EXPECT_EQ(LCopyToISO88591("a\xFF"
                              "b",
                              10),
              "ab");

    const std::string utf16 = LUTF8ToUTF16LE("\xC3\xA9z");
    EXPECT_EQ(utf16, std::string("\xE9\0z\0", 4));
    EXPECT_EQ(LUTF16ToUTF8(reinterpret_cast<const uint8_t*>(utf16.data()), utf16.size(), false),
              "\xC3\xA9z");
    const uint8_t bigEndian[] = {0x00, 0xE9, 0xD8, 0x3D, 0xDE, 0x00, 0x00};
    EXPECT_EQ(LUTF16ToUTF8(bigEndian, sizeof(bigEndian), true), "\xC3\xA9\xF0\x9F\x98\x80");

    EXPECT_TRUE(LIsValidUTF8("Caf\xC3\xA9 \xF0\x9F\x98\x80"));
    for (const char* bad : {"\xE9", "\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80"})
        EXPECT_FALSE(LIsValidUTF8(bad)) << bad;
    EXPECT_EQ(LTextFromFileField("Caf\xE9\0junk", 9), "Caf\xC3\xA9");
    EXPECT_EQ(LTextFromFileField("Caf\xC3\xA9", 5), "Caf\xC3\xA9");
}
