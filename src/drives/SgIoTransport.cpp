#include "drives/SgIoTransport.h"

#include "disc/SCSICommands.h"
#include "disc/SCSISense.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <strings.h>
#include <thread>

namespace {

constexpr auto kBusyRetryDelay = std::chrono::seconds(1);
constexpr unsigned char kDriverSense = 0x08;
constexpr size_t kSenseBufferSize = 64;

std::string OpenFailure(const std::string& path, int error) {
    if (error == EBUSY)
        return "The drive " + path +
               " is busy: another program is using it, or a disc in it is mounted";
    std::string text = "Cannot open the drive " + path + ": " + std::strerror(error);
    if (error == EACCES || error == EPERM) text += " (is the user in the cdrom group?)";
    return text;
}

std::string Trim(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

} // namespace

std::unique_ptr<LSgIoTransport> LSgIoTransport::Open(const std::string& path, bool exclusive,
                                                     std::string& error) {
    const int flags = exclusive ? O_RDWR | O_NONBLOCK | O_EXCL | O_CLOEXEC
                                : O_RDONLY | O_NONBLOCK | O_CLOEXEC;
    int fd = ::open(path.c_str(), flags);
    if (fd < 0 && errno == EBUSY && exclusive) {
        std::this_thread::sleep_for(kBusyRetryDelay);
        fd = ::open(path.c_str(), flags);
    }
    if (fd < 0) {
        error = OpenFailure(path, errno);
        return nullptr;
    }
    return std::unique_ptr<LSgIoTransport>(new LSgIoTransport(fd, path));
}

LSgIoTransport::~LSgIoTransport() {
    ::close(fd_);
}

bool LSgIoTransport::Execute(const LSCSICommand& command, LSCSITaskResult& result) {
    sg_io_hdr_t header;
    uint8_t sense[kSenseBufferSize] = {};
    SgIoFillHeader(command, header, sense, sizeof sense);
    int answer;
    do {
        answer = ::ioctl(fd_, SG_IO, &header);
    } while (answer < 0 && errno == EINTR);
    if (answer < 0) return false;
    SgIoReadResult(header, sense, result);
    return true;
}

void SgIoFillHeader(const LSCSICommand& command, sg_io_hdr_t& header, uint8_t* sense,
                    size_t senseSize) {
    std::memset(&header, 0, sizeof header);
    header.interface_id = 'S';
    switch (command.direction) {
    case LSCSIDirection::None: header.dxfer_direction = SG_DXFER_NONE; break;
    case LSCSIDirection::FromDevice: header.dxfer_direction = SG_DXFER_FROM_DEV; break;
    case LSCSIDirection::ToDevice: header.dxfer_direction = SG_DXFER_TO_DEV; break;
    }
    header.cmd_len = static_cast<unsigned char>(command.cdbLength);
    header.cmdp = const_cast<unsigned char*>(command.cdb);
    header.mx_sb_len = static_cast<unsigned char>(std::min<size_t>(senseSize, 255));
    header.sbp = sense;
    if (command.direction != LSCSIDirection::None) {
        header.dxferp = command.buffer;
        header.dxfer_len = static_cast<unsigned int>(command.length);
    }
    header.timeout = command.timeoutMs;
}

void SgIoReadResult(const sg_io_hdr_t& header, const uint8_t* sense, LSCSITaskResult& result) {
    result = {};
    // The host adapter or the kernel gave up (a timeout, a vanished device): the task never
    // completed at the drive.
    const bool delivered = header.host_status == 0 && (header.driver_status & ~kDriverSense) == 0;
    result.serviceResponse = delivered ? SERVICE_TASK_COMPLETE : SERVICE_DELIVERY_OR_TARGET_FAILURE;
    result.taskStatus = header.status;
    if (header.sb_len_wr > 0) {
        LSCSIToFixedSense(sense, std::min<size_t>(header.sb_len_wr, header.mx_sb_len), result.sense);
        // Some drivers report sense with a good status byte: it was a check condition.
        if (result.taskStatus == TASK_STATUS_GOOD && (header.driver_status & kDriverSense))
            result.taskStatus = TASK_STATUS_CHECK_CONDITION;
    }
    const int moved = static_cast<int>(header.dxfer_len) - std::max(header.resid, 0);
    result.transferred = static_cast<size_t>(std::max(moved, 0));
}

std::vector<std::string> ListSgIoDevices(const std::string& folder) {
    std::vector<std::pair<unsigned long, std::string>> found;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        const auto digit = [](unsigned char c) { return c >= '0' && c <= '9'; };
        if (name.size() < 3 || name.size() > 11 || name.compare(0, 2, "sr") != 0 ||
            !std::all_of(name.begin() + 2, name.end(), digit))
            continue;
        found.emplace_back(std::stoul(name.substr(2)), entry.path().string());
    }
    std::sort(found.begin(), found.end());
    std::vector<std::string> paths;
    for (auto& [number, path] : found) paths.push_back(std::move(path));
    return paths;
}

std::unique_ptr<LSCSITransport> OpenSgIoDrive(int index, const std::vector<LDriveIdentity>& drives,
                                              std::string& error, const std::string& folder) {
    if (index < 0 || static_cast<size_t>(index) >= drives.size()) {
        error = "There is no drive number " + std::to_string(index);
        return nullptr;
    }
    const std::string wanted =
        Trim(drives[static_cast<size_t>(index)].vendor) + " " + Trim(drives[static_cast<size_t>(index)].product);
    const std::vector<std::string> nodes = ListSgIoDevices(folder);
    if (nodes.empty()) {
        error = "No optical drive device (" + folder + "/sr*) was found for \"" + wanted + "\"";
        return nullptr;
    }
    std::string tried;
    for (const std::string& node : nodes) {
        std::string openError;
        std::string name;
        if (auto probe = LSgIoTransport::Open(node, false, openError))
            name = GetDeviceMMCName(*probe);
        tried += (tried.empty() ? "" : ", ") + node +
                 (name.empty() ? " (no answer" + (openError.empty() ? "" : ": " + openError) + ")"
                               : " (\"" + name + "\")");
        if (name.empty() || strcasecmp(name.c_str(), wanted.c_str()) != 0) continue;
        std::unique_ptr<LSgIoTransport> drive = LSgIoTransport::Open(node, true, error);
        return drive;
    }
    error = "The drive \"" + wanted + "\" was not found among " + tried;
    return nullptr;
}

LSCSI::Opener SgIoDriveOpener(std::vector<LDriveIdentity> drives, std::string folder) {
    return [drives = std::move(drives), folder = std::move(folder)](int index, std::string& error) {
        return OpenSgIoDrive(index, drives, error, folder);
    };
}
