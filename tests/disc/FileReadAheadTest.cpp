// The ring the files of a disc are read into ahead of the drive: every file's bytes in order
// across buffer ends, files that vanished or changed size told apart, and a writer that gives
// up midway leaves no reader and no open file behind.
#include "disc/FileReadAhead.h"
#include "support/DiscTreeFiles.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

size_t OpenFiles() {
    return size_t(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

class FileReadAheadTest : public testing::Test {
protected:
    std::string Write(const std::string& name, const std::string& bytes) {
        WriteTreeFile(folder + "/" + name, bytes);
        return folder + "/" + name;
    }

    TempHome home;
    const std::string folder = home.Path().string();
};

} // namespace

TEST_F(FileReadAheadTest, HandsOverEachFileInOrderAndSaysWhichEndedEarly) {
    struct Case {
        const char* name;
        std::string bytes;  // what the file holds
        uint64_t expected;  // the size the reader is told
        bool exists;        // false: the file is gone before it is read
        bool complete;
    };
    const Case cases[] = {
        {"across buffers", RandomBytes(10000, 1), 10000, true, true},
        {"empty", "", 0, true, true},
        {"vanished", "", 5000, false, false},
        {"shrank", RandomBytes(3000, 2), 9000, true, false},
        {"grew", RandomBytes(9000, 3), 4096, true, true},
        {"exactly one buffer", RandomBytes(4096, 4), 4096, true, true},
    };
    std::vector<LFileReadAhead::Source> sources;
    for (const Case& c : cases) {
        const std::string path = folder + "/" + c.name;
        if (c.exists) Write(c.name, c.bytes);
        sources.push_back({path, c.expected});
    }
    LFileReadAhead ahead(sources, 4096, 3);
    std::vector<std::string> got(std::size(cases));
    std::vector<bool> complete(std::size(cases), false);
    size_t expectedSource = 0;
    LFileReadAhead::Piece piece;
    while (ahead.Next(piece)) {
        ASSERT_EQ(piece.source, expectedSource);
        got[piece.source].append(reinterpret_cast<const char*>(piece.data), piece.size);
        if (piece.last) {
            complete[piece.source] = piece.complete;
            ++expectedSource;
        }
    }
    EXPECT_EQ(expectedSource, std::size(cases));
    EXPECT_FALSE(ahead.Next(piece));
    for (size_t i = 0; i < std::size(cases); ++i) {
        SCOPED_TRACE(cases[i].name);
        EXPECT_EQ(got[i], cases[i].bytes.substr(0, cases[i].expected));
        EXPECT_EQ(complete[i], cases[i].complete);
    }
}

TEST_F(FileReadAheadTest, AWriterThatStopsMidwayLeavesNoFileOpen) {
    std::vector<LFileReadAhead::Source> sources;
    for (int i = 0; i < 40; ++i)
        sources.push_back({Write("f" + std::to_string(i), RandomBytes(20000, i)), 20000});
    const size_t before = OpenFiles();
    // Stopped before taking anything (the reader waits on a full ring), after a few pieces,
    // and with nothing to read at all.
    for (const int taken : {0, 3}) {
        LFileReadAhead ahead(sources, 4096, 2);
        LFileReadAhead::Piece piece;
        for (int i = 0; i < taken; ++i) ASSERT_TRUE(ahead.Next(piece));
    }
    EXPECT_EQ(OpenFiles(), before);
    LFileReadAhead none({}, 4096, 2);
    LFileReadAhead::Piece piece;
    EXPECT_FALSE(none.Next(piece));
}
