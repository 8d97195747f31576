// The ID3v2 reader and writer on tags held in memory.

#include "tags/AudioTagData.h"
#include "tags/ID3v2.h"
#include "tags/TagTestFiles.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using tagtest::ExpectTags;

namespace {

using Bytes = std::vector<uint8_t>;

Bytes Text(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

// Text with zero bytes in it.
Bytes Text(const char* text, std::size_t size) {
    return Bytes(text, text + size);
}

Bytes Concat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes& part : parts)
        out.insert(out.end(), part.begin(), part.end());
    return out;
}

// A version 2.3 frame (10-byte header) or 2.2 frame (6-byte header).
Bytes Frame(const std::string& id, const Bytes& data, uint8_t formatFlags = 0) {
    Bytes frame = Text(id);
    const std::size_t sizeBytes = id.size() == 3 ? 3 : 4;
    for (std::size_t i = 0; i < sizeBytes; ++i)
        frame.push_back(static_cast<uint8_t>(data.size() >> (8 * (sizeBytes - 1 - i))));
    if (id.size() == 4) frame.insert(frame.end(), {0, formatFlags});
    frame.insert(frame.end(), data.begin(), data.end());
    return frame;
}

Bytes Tag(uint8_t version, const Bytes& frames, uint8_t flags = 0) {
    Bytes tag{'I', 'D', '3', version, 0, flags, 0, 0, 0, 0};
    ID3v2EncodeTagSize(tag.data() + 6, static_cast<uint32_t>(frames.size()));
    tag.insert(tag.end(), frames.begin(), frames.end());
    return tag;
}

LAudioTagData Parse(const Bytes& tag, bool* ok = nullptr) {
    LAudioTagData tags;
    const bool parsed = ParseTagID3v2(tag.data(), tag.size(), tags);
    if (ok) *ok = parsed;
    return tags;
}

const Bytes kLatin1{0};
const Bytes kUTF16LE{1, 0xFF, 0xFE};
const Bytes kUTF16BE{1, 0xFE, 0xFF};
const Bytes kUTF8{3};

} // namespace

TEST(ID3v2Parse, TextFramesInEveryEncodingTheVersionsDefine) {
    const Bytes tag = Tag(3, Concat({
                                 Frame("TIT2", Concat({kLatin1, Text("Caf\xE9\0", 5)})),
                                 Frame("TPE1", Concat({kUTF16LE, {'M', 0, 0xFC, 0}})),
                                 Frame("TALB", Concat({kUTF16BE, {0, 'A', 0, 0xE9}})),
                                 Frame("TYER", Concat({kUTF8, Text("1979")})),
                                 Frame("TCOM", {1, 'x', 0}), // UTF-16 without byte-order mark
                                 Frame("TIT1", {2, 0, 'x'}), // big-endian UTF-16: later versions
                                 Frame("TSRC", Concat({kLatin1, Text("GBAYE7900001")})),
                                 Frame("TXXX", Concat({kLatin1, Text("desc\0value", 10)})),
                                 Text(std::string(20, '\0')), // padding
                             }));
    bool ok = false;
    const LAudioTagData tags = Parse(tag, &ok);
    EXPECT_TRUE(ok);
    ExpectTags(tags, {{"TITLE", "Caf\xC3\xA9"},
                      {"ARTIST", "M\xC3\xBC"},
                      {"ALBUM", "A\xC3\xA9"},
                      {"YEAR", "1979"},
                      {"TSRC", "GBAYE7900001"}});
    EXPECT_FALSE(tags.HasParm("COMPOSER"));
    EXPECT_FALSE(tags.HasParm("CATEGORY"));
    EXPECT_FALSE(tags.HasParm("TXXX"));
    EXPECT_EQ(tags.GetCount(), 5u);

    // Version 2.2 has its own three-letter frame IDs.
    const LAudioTagData v22 =
        Parse(Tag(2, Concat({
                         Frame("TT2", Concat({kLatin1, Text("Side A")})),
                         Frame("TPA", Concat({kLatin1, Text("1/2")})),
                         Frame("COM", Concat({kLatin1, Text("eng"), Text("\0Nice", 5)})),
                     })));
    ExpectTags(v22, {{"TITLE", "Side A"}, {"DISKNUMBER", "1/2"}, {"COMMENT", "Nice"}});
}

// Read: numbers in parentheses name list genres, "((" escapes one. Written: list genres become
// their number, other texts keep their parentheses.
TEST(ID3v2Parse, GenreNumbersAndEscapedParentheses) {
    const auto genre = [](const std::string& text) {
        return Parse(Tag(3, Frame("TCON", Concat({kLatin1, Text(text)})))).GetTag("GENRE");
    };
    EXPECT_EQ(genre("(17)"), "Rock");
    EXPECT_EQ(genre("(17)Rock & Roll"), "Rock");
    EXPECT_EQ(genre("((jazz)"), "(jazz)");
    EXPECT_EQ(genre("(RX)"), "(RX)");
    EXPECT_EQ(genre("(200)"), "(200)");
    EXPECT_EQ(genre("My Genre"), "My Genre");

    for (const char* text : {"My Genre", "(jazz) fusion", "((odd"}) {
        LAudioTagData tags;
        tags.SetTag("GENRE", text, true);
        EXPECT_EQ(Parse(StoreTagID3v2(tags)).GetTag("GENRE"), text);
    }
}

TEST(ID3v2Parse, CommentURLRatingAndCounter) {
    const Bytes utf16{1};
    const Bytes noteWithDescription = Concat({utf16,
                                              Text("eng"),
                                              {0xFF, 0xFE},
                                              Text("i\0T\0\0\0", 6),
                                              {0xFF, 0xFE},
                                              Text("n\0o\0t\0e\0", 8)});
    const Bytes plainComment =
        Concat({utf16, Text("eng"), {0xFF, 0xFE, 0, 0, 0xFF, 0xFE}, Text("h\0i\0", 4)});
    const LAudioTagData tags = Parse(
        Tag(3, Concat({
                   Frame("COMM", noteWithDescription),
                   Frame("COMM", plainComment),
                   Frame("COMM", Concat({kLatin1, Text("eng"), Text("iTunNORM\0 0000", 14)})),
                   Frame("WXXX", Concat({kLatin1, Text("home\0http://example.org/\xE9", 25)})),
                   Frame("POPM", Concat({Text("me@example.org\0", 15), {196, 0, 0, 0, 9}})),
                   Frame("PCNT", {0x00, 0x01, 0x00, 0x02}),
               })));
    // The plain comment wins over the ones with descriptions, wherever it stands.
    ExpectTags(tags, {{"COMMENT", "hi"},
                      {"URL", "http://example.org/\xC3\xA9"},
                      {"RATING", "196"},
                      {"PLAYCOUNT", "65538"}});
}

TEST(ID3v2Parse, DamagedTagsStopWithoutReadingPastTheData) {
    const Bytes good = Frame("TIT2", Concat({kLatin1, Text("Kept")}));
    // A frame that claims more bytes than the tag has ends the tag; the frames before stay.
    Bytes oversized = Frame("TPE1", Concat({kLatin1, Text("Lost")}));
    oversized[4] = 0x7F;
    LAudioTagData tags = Parse(Tag(3, Concat({good, oversized})));
    EXPECT_EQ(tags.GetTag("TITLE"), "Kept");
    EXPECT_FALSE(tags.HasParm("ARTIST"));

    // An ID with a character outside A-Z and 0-9 ends the tag too.
    tags = Parse(Tag(3, Concat({good, Frame("Tpe1", Concat({kLatin1, Text("x")})),
                                Frame("TALB", Concat({kLatin1, Text("y")}))})));
    EXPECT_EQ(tags.GetCount(), 1u);

    // Frames too short for what they hold are skipped.
    tags = Parse(Tag(3, Concat({Frame("COMM", {0, 'e'}), Frame("POPM", Text("no rating")),
                                Frame("POPM", {}), Frame("PCNT", {1}), Frame("TIT2", {}), good})));
    EXPECT_EQ(tags.GetCount(), 1u);

    // A tag larger than the data, sizes with the high bit set and other versions fail.
    bool ok = true;
    Bytes truncated = Tag(3, good);
    truncated.resize(truncated.size() - 1);
    Parse(truncated, &ok);
    EXPECT_FALSE(ok);
    Bytes badSize = Tag(3, good);
    badSize[9] |= 0x80;
    Parse(badSize, &ok);
    EXPECT_FALSE(ok);
    Parse(Tag(5, good), &ok);
    EXPECT_FALSE(ok);
}

TEST(ID3v2Parse, UnsynchronisationExtendedHeaderAndFrameFlags) {
    // In an unsynchronised tag FF 00 stands for FF; frame sizes count the bytes without the
    // inserted zeros.
    Bytes title = Frame("TIT2", Concat({kLatin1, Text("\xFFx", 2)}));
    title.insert(title.begin() + 12, 0);
    EXPECT_EQ(Parse(Tag(3, title, 0x80)).GetTag("TITLE"), "\xC3\xBFx");

    const Bytes extended{0, 0, 0, 6, 0, 0, 0, 0, 0, 0};
    const LAudioTagData tags =
        Parse(Tag(3,
                  Concat({extended, Frame("TALB", Concat({kLatin1, Text("A")})),
                          Frame("TPE1", Concat({kLatin1, Text("zipped")}), 0x80),
                          Frame("TIT2", Concat({{7}, kLatin1, Text("Grouped")}), 0x20)}),
                  0x40));
    ExpectTags(tags, {{"ALBUM", "A"}, {"TITLE", "Grouped"}});
    EXPECT_FALSE(tags.HasParm("ARTIST"));
}

TEST(ID3v2Store, WritesVersion23FramesThatReadBack) {
    LAudioTagData tags;
    tags.SetTag("TITLE", "Caf\xC3\xA9 M\xC3\xBCller", true);
    tags.SetTag("GENRE", "rock", true);
    tags.SetTag("COMMENT", "Side (A)", true);
    tags.SetTag("URL", "http://example.org/", true);
    tags.SetTag("RATING", "128", true);
    tags.SetTag("PLAYCOUNT", "70000", true);
    tags.SetTag("TRACKNUMBER", "3/12", true);
    tags.SetTag("ISFT", "Vinora", true);
    tags.SetTag("NULL", "unknown chunk", true);
    tags.SetTag("UMID", "1,2,3,", true);
    tags.SetTag("ORIGINATOR", "bext only", true);

    const Bytes tag = StoreTagID3v2(tags);
    ASSERT_GE(tag.size(), 10u);
    EXPECT_EQ(Bytes(tag.begin(), tag.begin() + 6), (Bytes{'I', 'D', '3', 3, 0, 0}));
    EXPECT_EQ(ID3v2DecodeTagSize(tag.data() + 6), tag.size() - 10);

    const std::string bytes(tag.begin(), tag.end());
    // Genre names known to the list are written as their number.
    EXPECT_NE(bytes.find(std::string("TCON\0\0\0\x0B\0\0\x01\xFF\xFE(\0"
                                     "1\0"
                                     "7\0)\0",
                                     21)),
              std::string::npos);
    EXPECT_EQ(bytes.find("NULL"), std::string::npos);
    EXPECT_EQ(bytes.find("UMID"), std::string::npos);
    EXPECT_NE(bytes.find("ISFT"), std::string::npos);

    const LAudioTagData read = Parse(tag);
    ExpectTags(read, {{"TITLE", "Caf\xC3\xA9 M\xC3\xBCller"},
                      {"GENRE", "Rock"},
                      {"COMMENT", "Side (A)"},
                      {"URL", "http://example.org/"},
                      {"RATING", "128"},
                      {"PLAYCOUNT", "70000"},
                      {"TRACKNUMBER", "3/12"}});
    EXPECT_EQ(read.GetCount(), 7u);
}
