// talonvireo-sfr: command-line front end of the talonVireoSFR library.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "BatchCommand.h"
#include "ChartCommand.h"
#include "ColumnsCommand.h"
#include "Command.h"
#include "DemoCommand.h"
#include "ExitStatus.h"
#include "FocusCommand.h"
#include "MeasureCommand.h"
#include "RoiCommand.h"
#include "station/EdgeReport.h"
#include "station/ToolVersion.h"

namespace {
using namespace talonvireo::cli;

// The command's name as CLI11 parsed it, for messages: "talonvireo-sfr measure".
std::string commandName(const CLI::App& app) {
    for (const CLI::App* sub : app.get_subcommands()) {
        return app.get_name() + " " + sub->get_name();
    }
    return app.get_name();
}
}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Slanted-edge SFR (ISO 12233 MTF) of camera-module chart frames.",
                 "talonvireo-sfr"};
    app.set_version_flag("--version",
                         std::string("talonvireo-sfr ") + talonvireo::station::kToolVersion);
    app.require_subcommand(1, 1);
    app.footer("Run 'talonvireo-sfr COMMAND --help' for a command's options.");
    const Command commands[] = {demoCommand(),   measureCommand(), batchCommand(), roiCommand(),
                                renderCommand(), columnsCommand(), focusCommand()};
    std::vector<std::unique_ptr<OptionValues>> values;
    std::vector<CLI::App*> subs;
    for (const Command& command : commands) {
        CLI::App* sub = app.add_subcommand(command.name, command.summary);
        values.push_back(std::make_unique<OptionValues>(*sub));
        command.declare(*values.back());
        subs.push_back(sub);
        if (std::string(command.name) == "render") {
            sub->alias("chart");  // the renderer's earlier name
        }
    }

    if (argc < 2) {
        std::fputs(app.help().c_str(), stderr);
        return kExitBadArguments;
    }
    const std::string first = argv[1];
    if (first.rfind("-", 0) != 0 && first != "chart" &&
        std::none_of(std::begin(commands), std::end(commands),
                     [&](const Command& c) { return first == c.name; })) {
        std::fprintf(stderr,
                     "talonvireo-sfr: unknown command '%s' (demo, measure, batch, roi, render or "
                     "columns)\n%s",
                     first.c_str(), app.help().c_str());
        return kExitBadArguments;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        const std::string name = commandName(app);
        std::fprintf(stderr, "%s: bad arguments: %s\nRun '%s --help' for the options.\n",
                     name.c_str(), e.what(), name.c_str());
        return kExitBadArguments;
    }
    for (std::size_t i = 0; i < subs.size(); ++i) {
        if (!subs[i]->parsed()) {
            continue;
        }
        try {
            return commands[i].run(*values[i]);
        } catch (const talonvireo::station::Failure& e) {
            talonvireo::station::printWarnings(stderr, e.warnings());
            std::fprintf(stderr, "talonvireo-sfr %s: %s\n", commands[i].name, e.what());
            return exitStatusFor(e.cause());
        } catch (const std::exception& e) {
            std::fprintf(stderr, "talonvireo-sfr %s: failed: %s\n", commands[i].name, e.what());
            return kExitFailed;
        }
    }
    return kExitBadArguments;  // require_subcommand makes this unreachable
}
