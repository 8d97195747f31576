// Burning the recordings list without a window: the disc totals, the burn entry for audio CDs
// (onto the Virtual Burner) and data discs, its refusals and failures, answered from a script.
#include "app/MainDialogFixture.h"

#include "drives/SystemDiscService.h"
#include "drives/VirtualBurner.h"
#include "jobs/PlainMainQueue.h"
#include "platform/Log.h"

#include <algorithm>
#include <regex>
#include <set>

namespace fs = std::filesystem;

namespace {

constexpr const char* kCommence =
    "Commence burning to disc? All selected files in the main list will be burned.\r\n\r\nIf "
    "there are files in the list to be burned that are not selected, click \"Cancel\" and then "
    "select all desired files and click \"Burn Audio\" or \"Burn MP3\" from the toolbar.";
constexpr const char* kBurnFailed = "Burn has failed. There may be a problem with the drive or "
                                    "disc. Please try another disk or try a lower speed.";

class BurnFromListTest : public MainDialogFixture {
protected:
    BurnFromListTest() { UseBurner("cd-r:" + disc.string()); }
    ~BurnFromListTest() override { SetDiscService(nullptr); }

    void UseBurner(const std::string& setting) {
        service = std::make_shared<LSystemDiscService>(setting, false);
        SetDiscService(service);
    }
    LVirtualDisc& Disc() { return service->VirtualBurner()->Disc(); }

    // a.wav (1 s), b.wav (2 s) and c.mp3 (1 s), listed in that order.
    void ThreeRows() {
        RunCommand("cd " + ShellQuote(output) +
                   " && sox -n -r 44100 -c 2 -b 16 a.wav synth 1 sine 440"
                   " && sox -n -r 44100 -c 2 -b 16 b.wav synth 2 sine 550"
                   " && sox -n -r 44100 -c 2 -b 16 c.wav synth 1 sine 660"
                   " && lame --quiet c.wav c.mp3 && rm c.wav");
        dialog.LoadSavedAudioFiles();
        ASSERT_EQ(dialog.List().Count(), 3);
    }

    static std::string Log() {
        char folder[260];
        std::string text;
        if (!LLog::GetFolder(folder)) return text;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder))
            text += FileBytes(entry.path());
        return text;
    }

    static std::set<std::string> DataFolders() {
        std::set<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator("/var/tmp"))
            if (entry.path().filename().string().starts_with("vinora-data-"))
                names.insert(entry.path());
        return names;
    }

    fs::path disc = home.Path() / "disc";
    std::shared_ptr<LSystemDiscService> service;
};

// The track titles of the cue sheet, in order.
std::vector<std::string> CueTitles(const fs::path& cue) {
    const std::string text = FileBytes(cue);
    std::vector<std::string> titles;
    const std::regex title("TITLE \"([^\"]*)\"");
    for (auto it = std::sregex_iterator(text.begin(), text.end(), title); it != std::sregex_iterator(); ++it)
        titles.push_back((*it)[1]);
    return titles;
}

TEST_F(BurnFromListTest, DiscTotalsCountTheSelectionOrEveryRow) {
    ThreeRows();
    const std::string time = CapacityText(Disc().FreeBlocks(), 4);
    const std::string size = CapacityText(Disc().FreeBlocks(), 1);
    // An audio CD counts time, anything else the rows' "Size" column.
    double allMB = 0;
    for (const LRecordingRow& row : dialog.List().Rows()) allMB += std::stod(row.size);
    const double rowMB = std::stod(dialog.List().Rows()[1].size);
    char all[32], one[32];
    std::snprintf(all, sizeof all, "%5.3f MB", allMB);
    std::snprintf(one, sizeof one, "%5.3f MB", rowMB);
    const struct {
        int format;
        int selected; // -1 none
        std::string pane;
        std::string totalTime;
        int64_t totalSize;
    } cases[] = {
        {4, -1, "0:00:04.00 / " + time, "0:00:04.00", -1},
        {4, 1, "0:00:02.00 / " + time, "0:00:02.00", -1},
        {1, -1, all + (" / " + size), "", int64_t(allMB * 1048576)},
        {2, 1, one + (" / " + size), "", int64_t(rowMB * 1048576)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pane);
        LUserSettingSet<int>("OutputFormat", "OutputFormatNum", c.format);
        LUserSettingSetString("RecordingPage", "TotalTime", "");
        LUserSettingSet<int64_t>("RecordingPage", "TotalSize", -1);
        for (int row = 0; row < 3; ++row) dialog.List().Select(row, row == c.selected);
        dialog.UpdateMainWindowCDInfo(true);
        EXPECT_EQ(dialog.StatusPane(2), c.pane);
        EXPECT_EQ(LUserSettingGetString("RecordingPage", "TotalTime"), c.totalTime);
        EXPECT_EQ(LUserSettingGet<int64_t>("RecordingPage", "TotalSize", 0), c.totalSize);
    }
    SetDiscService(nullptr);
    dialog.UpdateMainWindowCDInfo(true);
    EXPECT_TRUE(dialog.StatusPane(2).ends_with(" / No Burner Found")) << dialog.StatusPane(2);
}

TEST_F(BurnFromListTest, DiscEventsRefreshTheTotals) {
    LPlainMainQueue queue;
    LMainThreadQueue::SetCurrent(&queue);
    ThreeRows();
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 4);
    dialog.InitDialog();
    const std::string full = "0:00:04.00 / " + CapacityText(Disc().FreeBlocks(), 4);
    EXPECT_EQ(dialog.StatusPane(2), full);
    // The listener's first report only learns what the drives hold.
    Disc().SetTrayOpen(false);
    queue.RunPending();
    Disc().SetTrayOpen(true);
    EXPECT_TRUE(queue.RunUntil([&] { return dialog.StatusPane(2) == "0:00:04.00 / No Disc in Drive"; }, 3000))
        << dialog.StatusPane(2);
    Disc().Insert(LDiscMediaKind::CDR, false);
    EXPECT_TRUE(queue.RunUntil([&] { return dialog.StatusPane(2) == full; }, 3000))
        << dialog.StatusPane(2);
    dialog.Shutdown();
    LMainThreadQueue::SetCurrent(nullptr);
}

TEST_F(BurnFromListTest, AnAudioCDTakesEveryRowInListOrderAndAnotherCopyOnYes) {
    ThreeRows();
    // c.mp3 moved above b.wav; then nothing selected.
    dialog.List().SelectOnly(2);
    dialog.RunCommand(2021);
    dialog.List().Select(1, false);
    ASSERT_FALSE(dialog.List().HasSelection());
    // Each burn finds a blank disc: the user puts one in after the eject.
    view.beforeJob = [&](const std::string&) {
        if (!Disc().Present() || Disc().DiscStatus() != LVirtualDisc::Status::Blank)
            Disc().Insert(LDiscMediaKind::CDR, false);
    };
    ui.QueueAnswer(LMessageAnswer::Ok);
    ui.QueueAnswer(LMessageAnswer::Yes); // another copy
    ui.QueueAnswer(LMessageAnswer::Ok);
    ui.QueueAnswer(LMessageAnswer::No);
    dialog.BurnSelectedFiles(true);

    EXPECT_EQ(dialog.List().Selected(), (std::vector<int>{0, 1, 2}));
    // The erase check before each burn and the burn, twice.
    EXPECT_EQ(view.jobs, std::vector<std::string>(4, "Burn Audio CD"));
    const std::string done = "Burn has successfully completed. The disc has been ejected.\r\n\r\n"
                             "Total Files Burned: 3\r\nTotal Duration: 0:00:04.00 \n  Would you "
                             "like to burn another copy?";
    EXPECT_EQ(Texts(), (std::vector<std::string>{kCommence, done, kCommence, done}));
    EXPECT_EQ(CueTitles(disc.string() + ".cue"), (std::vector<std::string>{"a", "c", "b"}));
    EXPECT_TRUE(Disc().TrayOpen());
    const std::string log = Log();
    EXPECT_NE(log.find("Burning CD Audio Disc"), std::string::npos);
    EXPECT_NE(log.find("Total Files Burned: 3"), std::string::npos);
}

TEST_F(BurnFromListTest, AFailedBurnSaysSoLogsAndEjects) {
    ThreeRows();
    UseBurner("cd-r:" + disc.string() + ",write-error=10");
    ui.QueueAnswer(LMessageAnswer::Ok);
    dialog.BurnSelectedFiles(true);
    EXPECT_EQ(Texts(), (std::vector<std::string>{kCommence, kBurnFailed}));
    EXPECT_NE(Log().find("Burn FAILED"), std::string::npos);
    EXPECT_FALSE(fs::exists(disc.string() + ".cue"));
    EXPECT_TRUE(Disc().TrayOpen());
}

TEST_F(BurnFromListTest, ABurnTheUserStopsIsNotAFailure) {
    ThreeRows();
    LUserSettingSet<bool>("CDRecorder", "EraseCDRW", false);
    view.userStops = true;
    // The jobs end as they do when stopped while writing: failed.
    dialog.BurnJobs().audio = [](LProcessInterface&, LCDBurnAudio&) { return PROCESS_FAILED; };
    dialog.BurnJobs().data = [](LProcessInterface&, LBurnDataDisk&) { return PROCESS_FAILED; };
    dialog.BurnJobs().convert = [](LProcessInterface&, LProcessConvert&) { return PROCESS_STOPPED; };
    for (bool audio : {true, false}) {
        ui.ClearCalls();
        ui.QueueAnswer(LMessageAnswer::Ok);
        dialog.BurnSelectedFiles(audio);
        EXPECT_EQ(Texts(), std::vector<std::string>{kCommence}) << audio;
    }
    EXPECT_EQ(Log().find("Burn FAILED"), std::string::npos);
    EXPECT_FALSE(Disc().TrayOpen());
}

TEST_F(BurnFromListTest, BurnsThatDoNotStart) {
    const struct {
        const char* name;
        bool rows;
        bool burner;
        LMessageAnswer commence;
        LProcessResult erase;
        std::vector<std::string> messages; // their beginnings
    } cases[] = {
        {"empty list", false, true, LMessageAnswer::Ok, PROCESS_DONE,
         {"No audio has been recorded or no files have been selected, burning will not commence."}},
        {"no burner", true, false, LMessageAnswer::Ok, PROCESS_DONE,
         {"The Selected drive does not exist.\n\nNo CD or DVD burner was found on this computer."}},
        {"cancelled", true, true, LMessageAnswer::Cancel, PROCESS_DONE, {kCommence}},
        {"erase failed", true, true, LMessageAnswer::Ok, PROCESS_FAILED,
         {kCommence, "Erasing of the disc has failed, burning will not commence."}},
        {"erase stopped", true, true, LMessageAnswer::Ok, PROCESS_STOPPED, {kCommence}},
    };
    ThreeRows();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        JobView caseView;
        MainDialog burner{caseView, LMainDialogWindows{}};
        if (c.rows) burner.LoadSavedAudioFiles();
        SetDiscService(c.burner ? service : nullptr);
        int burns = 0;
        burner.BurnJobs().erase = [&](LProcessInterface&, ProcessEraseDisk&) { return c.erase; };
        burner.BurnJobs().audio = [&](LProcessInterface&, LCDBurnAudio&) { return ++burns, PROCESS_DONE; };
        for (bool audio : {true, false}) {
            ui.ClearCalls();
            ui.QueueAnswer(c.commence);
            burner.BurnSelectedFiles(audio);
            EXPECT_EQ(Texts(), c.messages) << audio;
        }
        EXPECT_EQ(burns, 0);
    }
}

TEST_F(BurnFromListTest, ADataDiscConvertsWhatIsNotInItsFormatAndLeavesNoFolder) {
    ThreeRows();
    const char* done = "Burn has successfully completed. The disc has been ejected.\r\n\r\n"
                       "Total Files Burned: 3\r\nTotal Size:";
    const struct {
        int type;
        bool reencodeAll;
        std::vector<std::string> names; // on the disc
        int conversions;
        LProcessResult burn;
        const char* message; // its beginning
    } cases[] = {
        {1, false, {"a.mp3", "b.mp3", "c.mp3"}, 2, PROCESS_DONE, done},
        {0, false, {"a.wav", "b.wav", "c.wav"}, 1, PROCESS_DONE, done},
        {2, false, {"a.wav", "b.wav", "c.mp3"}, 0, PROCESS_DONE, done},
        {1, true, {"a.mp3", "b.mp3", "c.mp3"}, 3, PROCESS_DONE, done},
        // b.wav removed behind the list's back: left out, the others burnt.
        {1, false, {"a.mp3", "c.mp3"}, 1, PROCESS_FAILED, kBurnFailed},
    };
    const std::set<std::string> before = DataFolders();
    LUserSettingSetString("CDRecorder", "CDLabel", "Side A");
    LUserSettingSet<bool>("CDRecorder", "EraseCDRW", false);
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.names) + std::to_string(c.reencodeAll));
        if (c.names.size() == 2) fs::remove(output / "b.wav");
        LUserSettingSet<int>("OutputFormat", "DataCDType", c.type);
        LUserSettingSet<bool>("OutputFormat", "ReencodeAllFiles", c.reencodeAll);
        view.jobs.clear();
        ui.ClearCalls();
        std::vector<std::string> names;
        std::string label;
        int converted = 0;
        dialog.BurnJobs().data = [&](LProcessInterface&, LBurnDataDisk& job) {
            label = job.compilation.VolumeLabel();
            for (const auto& [name, item] : job.compilation.Root().children) {
                names.push_back(name);
                // A converted file sits in the private folder until the burn ends; the others
                // are the recordings themselves.
                const fs::path folder = fs::path(item->sourcePath).parent_path();
                EXPECT_TRUE(folder == output || DataFolders().count(folder.string())) << name;
                EXPECT_EQ(item->size, fs::file_size(item->sourcePath)) << name;
                converted += folder != output;
            }
            return c.burn;
        };
        ui.QueueAnswer(LMessageAnswer::Ok);
        ui.QueueAnswer(LMessageAnswer::No);
        dialog.BurnSelectedFiles(false);
        EXPECT_EQ(names, c.names);
        EXPECT_EQ(label, "Side A");
        EXPECT_EQ(converted, c.conversions);
        if (c.burn == PROCESS_DONE) {
            EXPECT_EQ(std::count(view.jobs.begin(), view.jobs.end(), "Converting Files"),
                      c.conversions);
        }
        EXPECT_EQ(view.jobs.back(), "Burn Data CD/DVD");
        ASSERT_EQ(Texts().size(), 2u);
        EXPECT_TRUE(Texts()[1].starts_with(c.message)) << Texts()[1];
        EXPECT_EQ(DataFolders(), before);
    }
}

TEST_F(BurnFromListTest, TheBurnWizardSetsItsFormatAndRestoresIt) {
    ThreeRows();
    std::vector<std::string> modes;
    std::vector<int> formats;
    LMainDialogWindows windows;
    windows.burnWizard = [&](const char* mode) {
        modes.push_back(mode);
        formats.push_back(LUserSettingGet<int>("OutputFormat", "OutputFormatNum", -1));
        EXPECT_TRUE(LUserSettingGet<bool>("Wizard", "SetOutputFormat", false));
        LUserSettingSet<bool>("OutputFormat", "BurnCDNow", true);
    };
    MainDialog wizardDialog{view, windows};
    wizardDialog.LoadSavedAudioFiles();
    LUserSettingSet<int>("OutputFormat", "OutputFormatNum", 1);
    LUserSettingSet<bool>("Wizard", "SetOutputFormat", false);
    for (int command : {2011, 2012}) {
        ASSERT_TRUE(wizardDialog.IsCommandEnabled(command));
        wizardDialog.RunCommand(command);
        EXPECT_EQ(LUserSettingGet<int>("OutputFormat", "OutputFormatNum", -1), 1);
        EXPECT_FALSE(LUserSettingGet<bool>("Wizard", "SetOutputFormat", true));
        EXPECT_FALSE(LUserSettingGet<bool>("OutputFormat", "BurnCDNow", true));
    }
    EXPECT_EQ(modes, (std::vector<std::string>{"Audio", "Data"}));
    EXPECT_EQ(formats, (std::vector<int>{4, 2}));
    // Eject has no window of its own: it is always there.
    EXPECT_TRUE(dialog.IsCommandEnabled(2051));
    dialog.RunCommand(2051);
    EXPECT_TRUE(Disc().TrayOpen());
}

} // namespace
