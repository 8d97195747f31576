#include "cli/Commands.h"

#include "platform/Settings.h"

#include <cstdio>

namespace {

constexpr const char* kUsage = "usage: vinora-cli settings get SECTION KEY [DEFAULT]\n"
                               "       vinora-cli settings set SECTION KEY VALUE\n"
                               "       vinora-cli settings delete SECTION KEY\n"
                               "       vinora-cli settings list [SECTION]\n";

int Usage(const char* problem) {
    std::fprintf(stderr, "vinora-cli settings: %s\n%s", problem, kUsage);
    return 2;
}

int WriteFailed() {
    std::fprintf(stderr, "vinora-cli settings: cannot write the settings file %s\n",
                 GetUserSettingsFilePath().c_str());
    return 2;
}

} // namespace

int CliSettings(const CliArgs& args) {
    if (args.empty()) return Usage("missing action");
    const std::string& action = args[0];
    const std::size_t count = args.size() - 1;

    if (action == "get") {
        if (count < 2 || count > 3) return Usage("get takes SECTION KEY and an optional DEFAULT");
        const char* defaultValue = count == 3 ? args[3].c_str() : "";
        std::printf("%s\n",
                    LUserSettingGetString(args[1].c_str(), args[2].c_str(), defaultValue).c_str());
        return 0;
    }
    if (action == "set") {
        if (count != 3) return Usage("set takes SECTION KEY VALUE");
        // The program reads at most 259 bytes of a value; a longer one would read as empty.
        if (args[3].size() >= kSettingValueSize) return Usage("VALUE is longer than 259 bytes");
        if (!LUserSettingSetString(args[1].c_str(), args[2].c_str(), args[3].c_str()))
            return WriteFailed();
        return 0;
    }
    if (action == "delete") {
        if (count != 2) return Usage("delete takes SECTION KEY");
        if (!LUserSettingDeleteItem(args[1].c_str(), args[2].c_str())) return WriteFailed();
        return 0;
    }
    if (action == "list") {
        if (count > 1) return Usage("list takes an optional SECTION");
        for (const LStoredSetting& setting : LUserSettingList(count == 1 ? args[1] : ""))
            std::printf("%s/%s=%s\n", setting.section.c_str(), setting.key.c_str(),
                        setting.value.c_str());
        return 0;
    }
    return Usage(("unknown action \"" + action + "\"").c_str());
}
