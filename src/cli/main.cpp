#include "cli/CliMainLoop.h"
#include "cli/Commands.h"

#include "app/AppStartup.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace {

struct CliCommand {
    const char* name;
    int (*run)(const CliArgs&);
    const char* usage;
};

const CliCommand kCommands[] = {
    {"settings", CliSettings,
     "settings get SECTION KEY [DEFAULT] | settings set SECTION KEY VALUE |\n"
     "                    settings delete SECTION KEY | settings list [SECTION]"},
    {"info", CliInfo, "info FILE"},
    {"decode", CliDecode, "decode IN OUT [--rate R] [--channels C]"},
    {"tags", CliTags, "tags FILE [--mode N] [--set NAME=VALUE]..."},
    {"convert", CliConvert,
     "convert SRC DEST [--restore] [--dc] [--hpf] [--speed 0|1|2] [--clickpop]\n"
     "                    [--noise] [--riaa] [--normalize] [--copy-to DIR]"},
    {"queue", CliQueue, "queue add SRC DEST [--restore] [--copy-to DIR] | queue list | queue run"},
    {"devices", CliDevices, "devices"},
    {"capture", CliCapture, "capture OUT.wav [--device NAME] [--seconds N] [--threshold DB]"},
    {"play", CliPlay, "play FILE [--device NAME]"},
    {"record", CliRecord, "record [--device NAME] [--seconds N] [--until-silence]"},
    {"split-side", CliSplitSide, "split-side FILE [--floor DB]"},
    {"noise-floor", CliNoiseFloor, "noise-floor [--device NAME]"},
    {"demo", CliDemo, "demo"},
    {"split", CliSplit, "split FILE --at TIME [--at TIME]..."},
    {"join", CliJoin, "join FILE FILE [FILE] [--folder DIR]"},
    {"mkiso", CliMkiso, "mkiso OUT.iso [--label L] [--project N] [--boot FILE] PATH..."},
    {"drives", CliDrives, "drives"},
    {"burn-audio", CliBurnAudio, "burn-audio FILE... [--drive N] [--erase]"},
    {"burn-data", CliBurnData,
     "burn-data PATH... [--drive N] [--label L] [--project N] [--verify] [--erase]\n"
     "                    [--speed X] [--from IMAGE]"},
    {"erase", CliErase, "erase [--drive N] [--full]"},
    {"eject", CliEject, "eject [--drive N]"},
};

void PrintHelp(FILE* out) {
    std::fprintf(out, "Usage: vinora-cli COMMAND [ARGS...]\n\n"
                      "Vinora Records Vinyl to CD Converter, without windows.\n\n"
                      "Commands:\n");
    for (const CliCommand& command : kCommands)
        std::fprintf(out, "  %s\n", command.usage);
    std::fprintf(out, "\nExit codes: 0 done, 1 stopped, 2 failed.\n");
}

// The command table for the tools that build the manual page and the shell completion: one
// line per command, its name, a tab and its usage on one line.
void PrintCommandTable() {
    for (const CliCommand& command : kCommands) {
        std::string usage;
        for (const char* c = command.usage; *c; ++c) {
            if (*c != '\n') {
                usage += *c;
                continue;
            }
            usage += ' ';
            while (c[1] == ' ') ++c;
        }
        std::printf("%s\t%s\n", command.name, usage.c_str());
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        PrintHelp(stderr);
        return 2;
    }
    const std::string name = argv[1];
    if (name == "help" && argc == 3 && std::strcmp(argv[2], "--format=table") == 0) {
        PrintCommandTable();
        return 0;
    }
    if (name == "--help" || name == "-h" || name == "help") {
        PrintHelp(stdout);
        return 0;
    }
    for (const CliCommand& command : kCommands) {
        if (name != command.name) continue;
        const LAppStartup startup(CliMainQueue(), nullptr);
        return command.run(CliArgs(argv + 2, argv + argc));
    }
    std::fprintf(stderr, "vinora-cli: unknown command \"%s\" (see vinora-cli --help)\n", argv[1]);
    return 2;
}
