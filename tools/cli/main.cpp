// talonvireo-sfr: command-line front end of the talonVireoSFR library.
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "ChartCommand.h"
#include "DemoCommand.h"

namespace {
const char* kUsage =
    "usage: talonvireo-sfr COMMAND [options]\n"
    "commands:\n"
    "  demo    render a slanted edge with a known blur, measure it, show measured vs true\n"
    "  chart   render a synthetic chart frame and write it with its ground truth\n"
    "Run 'talonvireo-sfr COMMAND --help' for a command's options.\n";
}

int main(int argc, char** argv) {
    const std::vector<std::string> all(argv + 1, argv + argc);
    if (all.empty() || all[0] == "--help" || all[0] == "-h") {
        std::fputs(kUsage, all.empty() ? stderr : stdout);
        return all.empty() ? 2 : 0;
    }
    const std::string command = all[0];
    const std::vector<std::string> args(all.begin() + 1, all.end());
    try {
        if (command == "demo") {
            if (!args.empty() && (args[0] == "--help" || args[0] == "-h")) {
                std::fputs(talonvireo::cli::demoHelp(), stdout);
                return 0;
            }
            return talonvireo::cli::runDemo(args);
        }
        if (command == "chart") {
            if (!args.empty() && (args[0] == "--help" || args[0] == "-h")) {
                std::fputs(talonvireo::cli::chartHelp(), stdout);
                return 0;
            }
            return talonvireo::cli::runChart(args);
        }
        std::fprintf(stderr, "talonvireo-sfr: unknown command '%s'\n%s", command.c_str(), kUsage);
        return 2;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "talonvireo-sfr %s: %s\n", command.c_str(), e.what());
        return 2;
    }
}
