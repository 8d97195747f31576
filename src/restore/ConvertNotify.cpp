#include "restore/ConvertNotify.h"

#include <atomic>

namespace {

class LConvertNotifyNone : public LConvertNotify {
public:
    void SetStatusText(const char*) override {}
    void NotifyFile(const char*) override {}
    void NotifyAdd(const char*) override {}
    void NotifyProgress(double) override {}
};

LConvertNotifyNone gNone;
std::atomic<LConvertNotify*> gNotify{&gNone};

} // namespace

LConvertNotify& ConvertNotify() {
    return *gNotify.load();
}

void SetConvertNotify(LConvertNotify* notify) {
    gNotify.store(notify ? notify : &gNone);
}
