#include "burn/DiscService.h"

#include <mutex>

namespace {

class LNoDiscService : public LDiscService {
public:
    std::vector<LDiscDeviceRef> CopyDeviceArray() override { return {}; }
    std::shared_ptr<void> WatchDeviceChanges(std::function<void()>) override { return nullptr; }
};

std::mutex serviceMutex;
std::shared_ptr<LDiscService> installed;

} // namespace

LDiscService& DiscService() {
    std::lock_guard lock(serviceMutex);
    if (!installed) installed = std::make_shared<LNoDiscService>();
    return *installed;
}

void SetDiscService(std::shared_ptr<LDiscService> service) {
    std::lock_guard lock(serviceMutex);
    installed = std::move(service);
}

LDiscDeviceRef CopyDeviceByIndex(unsigned index) {
    std::vector<LDiscDeviceRef> devices = DiscService().CopyDeviceArray();
    return index < devices.size() ? devices[index] : nullptr;
}
