// The main window's behaviour without a window: the list, its commands, messages and questions,
// answered by the scripted user interaction.
#include "app/MainCommands.h"
#include "app/MainDialogFixture.h"

#include <sys/stat.h>
#include <utime.h>

#include <algorithm>

namespace fs = std::filesystem;

namespace {

class MainDialogTest : public MainDialogFixture {
protected:
    MainDialogTest() { fs::create_directories(elsewhere); }

    std::vector<std::string> Names() {
        std::vector<std::string> names;
        for (const LRecordingRow& row : dialog.List().Rows())
            names.push_back(row.name);
        return names;
    }

    // The files of the output folder, sorted by name.
    std::vector<std::string> Files() const {
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(output))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    fs::path elsewhere = home.Path() / "elsewhere";
};

TEST(RecordingsListFormatTest, SizesAndTimes) {
    EXPECT_EQ(FormatRecordingSize(1048576), "1.000 MB");
    EXPECT_EQ(FormatRecordingSize(1572864), "1.500 MB");
    setenv("TZ", "UTC", 1);
    tzset();
    EXPECT_EQ(FormatRecordingTime(1235977509), "2009-03-02   07:05:09");
}

TEST_F(MainDialogTest, AddsFilesOnceByNameAndReportsFailuresTogether) {
    ASSERT_TRUE(dialog.AddFileToList(Tone(elsewhere / "Song.WAV").c_str(), true, false));
    EXPECT_EQ(dialog.List().Rows()[0].icon, 0);
    EXPECT_TRUE(fs::exists(output / "Song.WAV"));
    fs::create_directories(elsewhere / "b");
    Tone(elsewhere / "Song.mp3");
    Tone(elsewhere / "b/song.MP3");
    fs::path bad = elsewhere / "bad.wav";
    std::ofstream(bad) << "not audio";
    ui.QueuePaths({(elsewhere / "Song.mp3").string(), (elsewhere / "b/song.MP3").string(),
                   bad.string(), (elsewhere / "notes.txt").string()});
    dialog.RunCommand(CM_ADD_FILES);
    EXPECT_EQ(Names(), (std::vector<std::string>{"Song.WAV", "Song.mp3"}));
    EXPECT_EQ(dialog.List().Rows()[1].icon, 1);
    EXPECT_EQ(Texts(), (std::vector<std::string>{
                           "One or more files were not added because either those files already "
                           "exist in the list or Vinora Records does not support the file formats "
                           "of those files."}));
    EXPECT_EQ(LUserSettingGetString("Settings", "LoadFromFolder"), elsewhere.string());

    // A drop of several kinds warns once and adds what it can.
    ui.ClearCalls();
    std::ofstream(elsewhere / "a.aif") << "x";
    std::ofstream(elsewhere / "b.txt") << "x";
    dialog.DropFiles({(elsewhere / "a.aif").string(), (elsewhere / "b.txt").string(),
                      Tone(elsewhere / "c.wav").string()});
    ASSERT_EQ(ui.Calls().size(), 1u);
    EXPECT_EQ(ui.Calls()[0].caption, "Error");
    EXPECT_EQ(ui.Calls()[0].text, "Only wav and mp3 files can be added to this list.");
    EXPECT_EQ(Names(), (std::vector<std::string>{"Song.WAV", "Song.mp3", "c.wav"}));
}

TEST_F(MainDialogTest, RemovesWithAndWithoutDeletingTheFiles) {
    for (bool deleteFiles : {false, true}) {
        LUserSettingSet<bool>("Settings", "DeleteFiles", deleteFiles);
        Tone(output / "a.wav");
        Tone(output / "b.wav");
        dialog.RefreshFileList();
        dialog.List().SelectAll();
        ui.QueueAnswer(LMessageAnswer::No);
        dialog.RunCommand(CM_REMOVE_FILES);
        EXPECT_EQ(dialog.List().Count(), 2);
        ui.QueueAnswer(LMessageAnswer::Yes);
        dialog.RunCommand(CM_REMOVE_FILES);
        EXPECT_EQ(dialog.List().Count(), 0);
        EXPECT_EQ(fs::exists(output / "a.wav"), !deleteFiles);
        EXPECT_EQ(ui.Calls().back().caption, "Confirm Remove");
    }
}

TEST_F(MainDialogTest, RenamesOnlyToAFreeNameAndKeepsTheExtension) {
    Tone(output / "take1.wav");
    Tone(output / "other.wav", 2);
    const std::string other = FileBytes(output / "other.wav");
    dialog.RefreshFileList();
    dialog.OnMainNotify(WM_NOTIFY_FILE, "take1.wav", 0);
    dialog.List().SelectOnly(dialog.List().Find("take1.wav"));
    dialog.RunCommand(CM_RENAME_FILE);
    EXPECT_EQ(view.renamed, dialog.List().Find("take1.wav"));
    EXPECT_EQ(RenameEditText("take1.wav"), "take1");
    EXPECT_EQ(RenameEditText("a.b.wav"), "a.b");

    // Each step renames `from` to the committed `text`; the recording is then named `after`,
    // in the folder and in the status bar, beside an untouched other.wav.
    const struct {
        const char* from;
        const char* text;
        const char* after;
    } steps[] = {
        {"take1.wav", "take1", "take1.wav"}, // as it came: nothing happens
        {"take1.wav", "other", "take1.wav"}, // a file that exists: refused
        {"take1.wav", "Take1", "Take1.wav"}, // a change of case is a rename
        {"Take1.wav", "a/b:c.d", "abcd.wav"},
        {"abcd.wav", "?*", "abcd.wav"},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.text);
        const int row = dialog.List().Find(step.from);
        dialog.OnRenameStarted(row);
        dialog.OnRenameEnded(row, step.text);
        std::vector<std::string> files{step.after, "other.wav"};
        std::sort(files.begin(), files.end());
        EXPECT_EQ(Files(), files);
        EXPECT_EQ(dialog.StatusPane(0), step.after);
        EXPECT_EQ(FileBytes(output / "other.wav"), other);
    }
    EXPECT_EQ(Texts(), std::vector<std::string>{"A file named \"other.wav\" already exists in the "
                                                "recordings folder. Please choose another name."});
}

TEST_F(MainDialogTest, TotalSizeBeyondTwoGigabytes) {
    // A sparse file: the wave header and then nothing but a large size.
    fs::resize_file(Tone(output / "a.wav"), 5'000'000'000);
    dialog.RefreshFileList();
    EXPECT_EQ(LUserSettingGetString("RecordingPage", "TotalSize"), "5000000000");
    EXPECT_EQ(LUserSettingGet<int64_t>("RecordingPage", "TotalSize", 0), 5'000'000'000);
}

TEST_F(MainDialogTest, MovesOneSelectedRowWithinTheList) {
    for (const char* name : {"a.wav", "b.wav"})
        Tone(output / name);
    dialog.RefreshFileList();
    const std::vector<std::string> original{"a.wav", "b.wav"};
    dialog.List().SelectOnly(0);
    dialog.RunCommand(CM_MOVE_UP);
    EXPECT_EQ(Names(), original);
    dialog.List().SelectAll();
    dialog.RunCommand(CM_MOVE_DOWN);
    EXPECT_EQ(Names(), original);
    dialog.List().SelectOnly(1);
    dialog.RunCommand(CM_MOVE_DOWN);
    EXPECT_EQ(Names(), original);
    dialog.RunCommand(CM_MOVE_UP);
    EXPECT_EQ(Names(), (std::vector<std::string>{"b.wav", "a.wav"}));
    EXPECT_EQ(dialog.List().Selected(), std::vector<int>{0});
}

TEST_F(MainDialogTest, StartUpDownloadsTheEncoderOnlyWhenItIsMissing) {
    // LAME on PATH stands in for the component.
    dialog.InitDialog();
    dialog.Shutdown();
    EXPECT_TRUE(view.jobs.empty());
    EXPECT_TRUE(Texts().empty());

    // Nothing on PATH: no encoder, and no sound editor either.
    Tone(output / "a.wav");
    const std::string path = getenv("PATH");
    setenv("PATH", home.Path().c_str(), 1);
    MainDialog second{view, {}};
    second.InitDialog();
    second.Shutdown();
    EXPECT_EQ(view.jobs, std::vector<std::string>{"Install-on-Demand"});
    ASSERT_EQ(Texts().size(), 1u);
    EXPECT_TRUE(Texts()[0].starts_with(
        "The attempted auto-installation of the MP3 encoder component has failed."));
    second.RefreshFileList();
    second.List().SelectOnly(0);
    second.RunCommand(CM_EDIT_WITH_SONEDIT);
    setenv("PATH", path.c_str(), 1);
    ASSERT_EQ(Texts().size(), 2u);
    EXPECT_TRUE(Texts()[1].starts_with("No sound editor was found on this computer."));
    EXPECT_NE(Texts()[1].find("vinora-cli settings set Settings SoundEditor"), std::string::npos);
}

TEST_F(MainDialogTest, EnabledStatesFollowTheSelectionAndTheWindowsThatExist) {
    EXPECT_TRUE(dialog.IsCommandEnabled(CM_ADD_FILES));
    EXPECT_FALSE(dialog.IsCommandEnabled(CM_SELECT_ALL));
    EXPECT_FALSE(dialog.IsCommandEnabled(CM_RECORD)); // no recording window yet
    Tone(output / "a.wav");
    dialog.RefreshFileList();
    EXPECT_TRUE(dialog.IsCommandEnabled(CM_SELECT_ALL));
    EXPECT_FALSE(dialog.IsCommandEnabled(CM_REMOVE_FILES));
    dialog.List().SelectOnly(0);
    EXPECT_TRUE(dialog.IsCommandEnabled(CM_REMOVE_FILES));
    EXPECT_TRUE(dialog.IsCommandEnabled(CM_EDIT_TAG));
    EXPECT_TRUE(dialog.IsCommandEnabled(CM_JOIN_FILES)); // explains itself with one file
}

TEST_F(MainDialogTest, QueueMessagesUpdateTheStatusPanes) {
    dialog.OnMainNotify(WM_NOTIFY_PROGRESS, "Converting...", 40);
    EXPECT_EQ(dialog.StatusPane(1), "Status: Converting...40% Done");
    dialog.OnMainNotify(WM_NOTIFY_PROGRESS, "", 0);
    EXPECT_EQ(dialog.StatusPane(1), "Status: Converting...40% Done");
    dialog.OnMainNotify(WM_NOTIFY_PROGRESS, "", 7);
    EXPECT_EQ(dialog.StatusPane(1), "Status: 7% Done");
    dialog.OnMainNotify(WM_NOTIFY_FILES_PROCESSING, "", 0);
    dialog.OnMainNotify(WM_NOTIFY_FILES_PROCESSING, "", 0);
    EXPECT_EQ(dialog.StatusPane(2), "Files Being Processed: 2");
    dialog.OnMessage(WM_RECORDING_SESSION_ENDED, "", 1);
    dialog.OnMainNotify(WM_NOTIFY_ADD, Tone(output / "a.wav").string(), 0);
    EXPECT_EQ(dialog.StatusPane(2), "Files Being Processed: 1");
    EXPECT_TRUE(ui.Calls().empty());
    dialog.OnMainNotify(WM_NOTIFY_ADD, Tone(output / "b.wav").string(), 0);
    EXPECT_EQ(dialog.StatusPane(2), "No Files Queued");
    EXPECT_EQ(Texts(), std::vector<std::string>{"Your recordings have finished processing"});
}

TEST_F(MainDialogTest, ExitAsksAgainWhileFilesAreQueued) {
    dialog.RunCommand(CM_CLOSE_WINDOW);
    EXPECT_EQ(view.closed, 1);
    ui.QueueAnswer(LMessageAnswer::Ok);
    EXPECT_TRUE(dialog.CanClose());
    dialog.OnMainNotify(WM_NOTIFY_FILES_PROCESSING, "", 0);
    ui.QueueAnswer(LMessageAnswer::Ok);
    ui.QueueAnswer(LMessageAnswer::Cancel);
    EXPECT_FALSE(dialog.CanClose());
    ASSERT_EQ(ui.Calls().size(), 3u);
    EXPECT_TRUE(ui.Calls()[2].text.starts_with(
        "Warning! You have some files that are still to be processed!"));
}

TEST_F(MainDialogTest, TagEditsGoToTheCopyFolderToo) {
    const fs::path copies = home.Path() / "copies";
    fs::create_directories(copies);
    LUserSettingSetString("OutputFormat", "OutputFolder", copies.c_str());
    Tone(output / "a.wav");
    fs::copy_file(output / "a.wav", copies / "a.wav");
    const utimbuf old{1235977509, 1235977509};
    utime((output / "a.wav").c_str(), &old);
    dialog.RefreshFileList();
    dialog.List().SelectOnly(0);
    ASSERT_EQ(dialog.List().Rows()[0].modifiedTime, 1235977509);
    dialog.RunCommand(CM_EDIT_TAG);
    EXPECT_EQ(Texts(), std::vector<std::string>{"Tag written successfully to file."});
    // "Last Modified" and "Size" show the file as the edit left it.
    EXPECT_GT(dialog.List().Rows()[0].modifiedTime, 1235977509);
    EXPECT_EQ(dialog.List().Rows()[0].sizeBytes,
              static_cast<int64_t>(fs::file_size(output / "a.wav")));
    for (const fs::path& file : {output / "a.wav", copies / "a.wav"}) {
        LAudioTagData tags;
        tags.ReadTags(file.c_str(), tagModeAll);
        EXPECT_EQ(tags.GetTag("TITLE"), "Edited") << file;
    }
}

TEST_F(MainDialogTest, JoinsTwoOrThreeFilesAndSplitsIntoTheList) {
    for (const char* name : {"a.wav", "b.wav", "c.wav", "d.wav"})
        Tone(output / name);
    LUserSettingSetString("OutputFormat", "OutputFolder", elsewhere.c_str());
    dialog.RefreshFileList();
    dialog.List().SelectAll();
    dialog.RunCommand(CM_JOIN_FILES);
    EXPECT_EQ(Texts(), std::vector<std::string>{
                           "You cannot select more than 3 files to join at the one time."});
    EXPECT_EQ(dialog.List().Count(), 4);

    // The save-to-computer copy keeps a file of its name that is there already.
    std::ofstream(elsewhere / "a_b_JOINED.wav") << "mine";
    dialog.List().SelectOnly(0);
    dialog.List().Select(1, true);
    dialog.RunCommand(CM_JOIN_FILES);
    EXPECT_TRUE(fs::exists(output / "a_b_JOINED.wav"));
    EXPECT_EQ(FileBytes(elsewhere / "a_b_JOINED.wav"), "mine");
    EXPECT_TRUE(FileBytes(elsewhere / "a_b_JOINED (01).wav") == FileBytes(output / "a_b_JOINED.wav"));
    EXPECT_GE(dialog.List().Find("a_b_JOINED.wav"), 0);

    dialog.SplitFile((output / "c.wav").string(), {22050});
    EXPECT_GE(dialog.List().Find("c_SPLIT_00.wav"), 0);
    EXPECT_GE(dialog.List().Find("c_SPLIT_01.wav"), 0);
    EXPECT_EQ(Texts().back(), "File splitting is finished");
    dialog.SplitFile((output / "gone.wav").string(), {22050});
    EXPECT_NE(Texts().back().find("does not exist"), std::string::npos);
}

} // namespace
