#pragma once

#include "record/NoiseFloor.h"
#include "record/SoundRecordDevice.h"
#include "record/SoundRecorder.h"
#include "sound/SoundSink.h"

#include <optional>
#include <string>

// What the noise page tells its view. On the owner's thread.
class LSampleNoiseView {
public:
    // Texts or the measure button's state changed.
    virtual void Refresh() {}
    // One level report, for the meter.
    virtual void Levels(const LDBMC& /*levels*/) {}

protected:
    ~LSampleNoiseView() = default;
};

// The noise page: meters the input, measures the noise floor during two seconds of silence or
// takes one typed by hand, and stores it. Runs on a thread with a main-thread queue.
class LSampleNoisePage final : private LSoundRecorderNotify {
public:
    explicit LSampleNoisePage(LSampleNoiseView& view);
    ~LSampleNoisePage();
    LSampleNoisePage(const LSampleNoisePage&) = delete;
    LSampleNoisePage& operator=(const LSampleNoisePage&) = delete;

    // Starts metering the input of the settings (or the one set); false when it cannot open.
    bool StartRecorder();
    void StopRecorder() { recorder_.Stop(); }
    // "Measure Noise Floor".
    void CmMeasure();
    // Stores the manual floor; false (stay on the page) when the user declined an unusual one.
    bool CmOk(bool custom, int floor);

    const std::string& Status() const { return status_; }
    const std::string& LevelText() const { return levelText_; }
    const std::string& LastSetText() const { return lastSet_; }
    // The entry field's start value and the box's start state.
    int StoredFloor() const { return storedFloor_; }
    bool IsCustom() const { return custom_; }
    bool IsMeasureEnabled() const { return !measure_.IsMeasuring(); }

    void SetDevice(const LSoundRecordDevice& device) { device_ = device; }
    // Lets an input played from a file at full speed give every level report.
    void SetPaced(bool paced) { paced_ = paced; }

private:
    void srntfLevel(const LDBMC& levels, long user) override;
    // The input stopped (unplugged, or a file played to its end): a measurement is given up.
    void srntfStop(long user) override;

    LSampleNoiseView& view_;
    LSoundRecorder recorder_;
    LSoundSink sink_;
    LNoiseFloorMeasure measure_;
    std::string status_;
    std::string levelText_;
    std::string lastSet_;
    int storedFloor_ = -25;
    bool custom_ = false;
    std::optional<LSoundRecordDevice> device_;
    bool paced_ = false;
    bool inputEnded_ = false; // the recorder stopped by itself
};
