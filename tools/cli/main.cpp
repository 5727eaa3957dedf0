// talonvireo-sfr: command-line front end of the talonVireoSFR library.
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "ChartCommand.h"
#include "CliError.h"
#include "DemoCommand.h"
#include "MeasureCommand.h"
#include "RoiCommand.h"

namespace {
using namespace talonvireo::cli;

const char* kUsage =
    "usage: talonvireo-sfr COMMAND [options]\n"
    "commands:\n"
    "  demo      render a project's chart as a raw frame, measure it, show measured vs true\n"
    "  measure   measure a raw chart frame from a file with one library member\n"
    "  roi       measure one slanted-edge region from a file; the whole SFR curve on request\n"
    "  render    render a synthetic chart frame and write it with its ground truth\n"
    "Run 'talonvireo-sfr COMMAND --help' for a command's options.\n";

struct Command {
    const char* name;
    const char* (*help)();
    int (*run)(const std::vector<std::string>&);
};

const Command kCommands[] = {
    {"demo", demoHelp, runDemo},     {"measure", measureHelp, runMeasure}, {"roi", roiHelp, runRoi},
    {"render", chartHelp, runChart}, {"chart", chartHelp, runChart},  // the renderer's earlier name
};
}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> all(argv + 1, argv + argc);
    if (all.empty() || all[0] == "--help" || all[0] == "-h") {
        std::fputs(kUsage, all.empty() ? stderr : stdout);
        return all.empty() ? kExitBadArguments : kExitOk;
    }
    const std::string name = all[0];
    const std::vector<std::string> args(all.begin() + 1, all.end());
    for (const Command& command : kCommands) {
        if (name != command.name) {
            continue;
        }
        if (!args.empty() && (args[0] == "--help" || args[0] == "-h")) {
            std::fputs(command.help(), stdout);
            return kExitOk;
        }
        try {
            return command.run(args);
        } catch (const CliError& e) {
            std::fprintf(stderr, "talonvireo-sfr %s: %s\n", name.c_str(), e.what());
            return e.status();
        } catch (const std::invalid_argument& e) {  // options that do not parse
            std::fprintf(stderr, "talonvireo-sfr %s: bad arguments: %s\n", name.c_str(), e.what());
            return kExitBadArguments;
        } catch (const std::out_of_range& e) {
            std::fprintf(stderr, "talonvireo-sfr %s: bad arguments: value out of range (%s)\n",
                         name.c_str(), e.what());
            return kExitBadArguments;
        } catch (const std::exception& e) {
            std::fprintf(stderr, "talonvireo-sfr %s: failed: %s\n", name.c_str(), e.what());
            return kExitFailed;
        }
    }
    std::fprintf(stderr, "talonvireo-sfr: unknown command '%s'\n%s", name.c_str(), kUsage);
    return kExitBadArguments;
}
