#include "cli/Commands.h"

#include "codecs/AudioFileTypes.h"

#include "platform/Paths.h"
#include "tags/AudioTagData.h"
#include "tags/TagLock.h"

#include <cstdio>
#include <mutex>
#include <strings.h>
#include <sys/stat.h>
#include <utility>

namespace {

constexpr const char* kUsage =
    "usage: vinora-cli tags FILE [--mode N]\n"
    "       vinora-cli tags FILE --set NAME=VALUE [--set NAME=VALUE]... [--mode N]\n"
    "  Prints the tags of an MP3 or wave file as NAME=VALUE lines, or sets the values given\n"
    "  (an empty VALUE removes the tag) and writes the tags back. IMAGE is the cover image\n"
    "  file of an MP3. In values, \\n, \\r and \\\\ stand for a line feed, a carriage return\n"
    "  and a backslash.\n"
    "  --mode N  wave chunks: 0 LIST INFO, 1 bext, 2 cart, 3 all (default)\n";

int Usage(const char* problem) {
    std::fprintf(stderr, "vinora-cli tags: %s\n%s", problem, kUsage);
    return 2;
}

int Fail(const char* what, const std::string& path) {
    std::fprintf(stderr, "vinora-cli tags: %s %s\n", what, path.c_str());
    return 2;
}

// Values are printed on one line each.
std::string Escape(const std::string& value) {
    std::string out;
    for (char c : value) {
        if (c == '\\')
            out += "\\\\";
        else if (c == '\n')
            out += "\\n";
        else if (c == '\r')
            out += "\\r";
        else
            out += c;
    }
    return out;
}

std::string Unescape(const std::string& value) {
    std::string out;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            out += value[i];
            continue;
        }
        const char next = value[++i];
        out += next == 'n' ? '\n' : next == 'r' ? '\r' : next;
    }
    return out;
}

bool IsTaggedFileType(const std::string& path) {
    return LFindAudioFileType(path.c_str()) != nullptr;
}

bool IsRegularFile(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

} // namespace

int CliTags(const CliArgs& args) {
    std::string path;
    int mode = tagModeAll;
    std::vector<std::pair<std::string, std::string>> values;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--mode" || arg == "--set") {
            if (i + 1 == args.size()) return Usage((arg + " needs a value").c_str());
            const std::string& value = args[++i];
            if (arg == "--mode") {
                if (value.size() != 1 || value[0] < '0' || value[0] > '3')
                    return Usage("--mode takes 0, 1, 2 or 3");
                mode = value[0] - '0';
            } else {
                const std::size_t equals = value.find('=');
                if (equals == 0 || equals == std::string::npos)
                    return Usage("--set takes NAME=VALUE");
                values.emplace_back(value.substr(0, equals), Unescape(value.substr(equals + 1)));
            }
        } else if (path.empty() && !arg.starts_with("--")) {
            path = arg;
        } else {
            return Usage(("unexpected argument \"" + arg + "\"").c_str());
        }
    }
    if (path.empty()) return Usage("missing FILE");
    if (!IsRegularFile(path)) return Fail("cannot open", path);
    if (!IsTaggedFileType(path)) return Fail("not an MP3 or wave (.mp3, .wav) file:", path);

    // Reading and writing back is one tag operation.
    std::lock_guard<LLockObject> lock(LAudioTagLock());
    LAudioTagData tags;
    tags.ReadTags(path.c_str(), mode);
    if (!values.empty()) {
        for (const auto& [name, value] : values) {
            if (name == "IMAGE")
                tags.SetImagePath(value);
            else
                tags.SetTag(name.c_str(), value.c_str(), true);
        }
        if (!tags.WriteTags(path.c_str(), mode, false))
            return Fail("cannot write the tags of", path);
        return 0;
    }
    for (const LHashTable::LHashNode& node : tags)
        std::printf("%s=%s\n", node.name.c_str(), Escape(node.value).c_str());
    if (!tags.GetImagePath().empty()) std::printf("IMAGE=%s\n", tags.GetImagePath().c_str());
    return 0;
}
