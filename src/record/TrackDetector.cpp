#include "record/TrackDetector.h"

#include "platform/Log.h"
#include "platform/Settings.h"

#include <algorithm>

namespace {

int ClampDB(int db) {
    return std::clamp(db, -127, 127);
}

} // namespace

LTrackDetector::LTrackDetector(const Settings& settings)
    : settings_(settings), history_(static_cast<std::size_t>(std::max(settings.historyCapacity, 1))) {}

void LTrackDetector::Reset() {
    started_ = startCandidate_ = endCandidate_ = false;
    candidateStart_ = elapsed_ = waitElapsed_ = 0;
    historyCount_ = 0;
    historySum_ = 0;
}

LTrackDetector::Result LTrackDetector::OnLevel(const LDBMC& levels, int position, int rate) {
    const int mono = levels.GetMonoDB();
    Result result;
    result.loud = mono >= ClampDB(settings_.noiseFloor + 2);
    if (!started_ && !startCandidate_) {
        if (mono > ClampDB(settings_.noiseFloor + 5)) {
            startCandidate_ = true;
            candidateStart_ = position;
        }
        elapsed_ += rate / 8;
    }
    if (!started_) {
        if (settings_.recordAudioOnly) {
            result.verified = AutoDetectStartOfTrack(mono, position, rate);
        } else {
            LOG("Verified start of recording");
            started_ = true;
            startCandidate_ = false;
            result.verified = true;
        }
    }
    if (started_ && settings_.autoSplit) result.ended = AutoDetectEndOfTrack(mono, position, rate);
    return result;
}

void LTrackDetector::GrowHistory() {
    historyCount_ = std::min(historyCount_ + 1, static_cast<int>(history_.size()));
}

void LTrackDetector::Store(int mono) {
    history_[static_cast<std::size_t>(std::max(historyCount_, 1) - 1)] = mono;
}

int LTrackDetector::Evaluate() {
    const int capacity = static_cast<int>(history_.size());
    historyCount_ = std::clamp(historyCount_ - 1, 1, capacity);
    const auto stored = history_.begin() + historyCount_;
    const int hi = std::max(*std::max_element(history_.begin(), stored), -36);
    const int lo = std::min(*std::min_element(history_.begin(), stored), 12);
    // When every value lies below the -36 dB bound, none reaches the upper tenth of the range:
    // then all of them make the average (a quiet gap must still end a track).
    const double limit = *std::max_element(history_.begin(), stored) < -36 ? -127.0
                                                                           : hi - (hi - lo) * 0.1;
    int count = 0;
    for (auto value = history_.begin(); value != stored; ++value) {
        if (*value < limit) continue;
        historySum_ += *value;
        ++count;
    }
    if (count > 0) historyCount_ = std::clamp(count, 1, capacity);
    return count;
}

bool LTrackDetector::AutoDetectStartOfTrack(int mono, int position, int rate) {
    GrowHistory();
    int32_t t = position;
    if (!startCandidate_) {
        waitElapsed_ += rate / 2;
        t = waitElapsed_;
    }
    if (t < candidateStart_ + 2 * rate) {
        Store(mono);
        return false;
    }
    if (Evaluate() > 0) {
        lastAverage_ = historySum_ / historyCount_;
        LUserSettingSet<int>("RecordingPage", "LastAveragedBLevel", lastAverage_);
        if (lastAverage_ > settings_.noiseFloor + 5 && startCandidate_) {
            LOG("Verified start of recording");
            started_ = true;
            startCandidate_ = false;
            candidateStart_ = historyCount_ = historySum_ = elapsed_ = 0;
            return true;
        }
    }
    started_ = startCandidate_ = false;
    candidateStart_ = waitElapsed_ = historyCount_ = historySum_ = 0;
    return false;
}

bool LTrackDetector::AutoDetectEndOfTrack(int mono, int position, int rate) {
    if (mono < ClampDB(settings_.noiseFloor + 2) && !endCandidate_) {
        GrowHistory();
        Store(mono);
        LOG("End of track possibly reached - dB level is %d dB", mono);
        endCandidate_ = true;
        candidateStart_ = elapsed_ = position;
    }
    if (!endCandidate_) return false;
    elapsed_ += rate / 8;
    GrowHistory();
    if (elapsed_ < candidateStart_ + settings_.autoSplitTime * rate) {
        Store(mono);
        return false;
    }
    Evaluate();
    const int average = historySum_ / historyCount_;
    endCandidate_ = false;
    historySum_ = historyCount_ = elapsed_ = 0;
    if (average >= settings_.noiseFloor + 2) {
        LOG("End of track not found - average dB level is %d dB", average);
        return false;
    }
    // The owner stops the track (which needs to know it had started) and then resets.
    LOG("End of track found - average dB level is %d dB", average);
    return true;
}
