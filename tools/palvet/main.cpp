// palvet: the library's jobs from a shell. Each subcommand parses its
// arguments with CLI11 and then calls the library's own functions.
#include "tool_common.h"

#include <cstdio>

int main(int argc, char** argv)
{
    CLI::App app{"palvet: images, character sets, text, files and system utilities of the palvet library"};
    app.name("palvet");
    app.require_subcommand(1);
    app.fallthrough(false);
    app.set_version_flag("--version", std::string("palvet ") + PALVET_VERSION_STRING);

    tool::AddImageCommands(app);
    tool::AddCharsetCommands(app);
    tool::AddTextCommands(app);
    tool::AddFileCommands(app);
    tool::AddSystemCommands(app);
    tool::AddDemoCommand(app);

    try {
        app.parse(argc, argv);
    } catch (CLI::CallForHelp const& e) {
        return app.exit(e);
    } catch (CLI::CallForAllHelp const& e) {
        return app.exit(e);
    } catch (CLI::CallForVersion const& e) {
        return app.exit(e);
    } catch (CLI::ParseError const& e) {
        // CLI11 has its own codes; scripts get the usual 2 for bad usage.
        app.exit(e);
        return tool::kExitUsage;
    }

    tool::SeparateLibraryLog();
    int status = 0;
    try {
        if (tool::ChosenAction())
            tool::ChosenAction()();
    } catch (tool::Failure const& e) {
        fflush(stdout);
        fprintf(stderr, "palvet: %s\n", e.what());
        status = e.code;
    }
    fflush(stdout);
    if (fflush(tool::Out()) != 0 && status == 0) {
        fprintf(stderr, "palvet: cannot write the output\n");
        status = tool::kExitFailed;
    }
    return status;
}
