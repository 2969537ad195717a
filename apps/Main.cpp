// VelmarBase: command line.
#include "Cli.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <new>
#include <string>
#include <vector>

using namespace vx::cli;

namespace
{

// The verb that the arguments named, for pointing at its help; empty when they named none.
BString VerbOf(const CLI::App& app)
{
    const auto verbs = app.get_subcommands();
    return verbs.empty() ? BString("velmar") : BString("velmar " + verbs.front()->get_name());
}

int FailUsage(const CLI::App& app, const CLI::ParseError& error)
{
    const BString help = "see '" + VerbOf(app) + " --help'";
    const auto rest = app.remaining(true);
    if (dynamic_cast<const CLI::ExtrasError*>(&error) && !rest.empty())
    {
        const bool option = rest.front().size() > 1 && rest.front()[0] == '-';
        return Fail(kWrongUsage, BString(rest.front()), 0,
                    (option ? "unknown option, " : "not expected here, ") + help);
    }
    if (app.get_subcommands().empty())
    {
        std::vector<std::string> verbs;
        for (const CLI::App* const verb : app.get_subcommands({}))
            verbs.push_back(verb->get_name());
        return Fail(kWrongUsage, "", 0,
                    (rest.empty() ? "no verb" : "unknown verb '" + rest.front() + "'") + ", expected " + Listed(verbs) +
                        ", " + help.Std());
    }
    return Fail(kWrongUsage, "", 0, error.what() + (", " + help.Std()));
}

int Run(int argc, char** argv)
{
    int exitCode = kDone;
    CLI::App app("Works on polygon models: renders them to pictures, tells what is in them, makes new ones of them.",
                 "velmar");
    app.set_version_flag("--version", "velmar " VELMAR_VERSION);
    app.set_help_flag("-h,--help", "Print this help and leave");
    app.require_subcommand(1);
    app.footer("Exit codes: 0 done, 1 the input could not be used or the work failed, 2 wrong usage,\n"
               "3 no OpenGL to be had.");
    AddPreviewVerb(app, exitCode);
    AddMaterialsVerb(app, exitCode);
    AddShaderVerb(app, exitCode);
    AddInfoVerb(app, exitCode);
    AddStylesVerb(app, exitCode);
    AddTurntableVerb(app, exitCode);
    AddPickVerb(app, exitCode);
    AddSelectVerb(app, exitCode);
    AddWeldVerb(app, exitCode);
    AddTransferGroupsVerb(app, exitCode);
    AddSubdivideVerb(app, exitCode);
#ifdef VELMAR_WITH_TEXT
    AddTextVerb(app, exitCode);
    AddFontsVerb(app, exitCode);
#endif

    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::Success& asked) // --help, --version
    {
        return app.exit(asked);
    }
    catch (const CLI::ParseError& error)
    {
        return FailUsage(app, error);
    }
    return exitCode;
}

} // namespace

int main(int argc, char** argv)
{
    try
    {
        return Run(argc, argv);
    }
    catch (const std::bad_alloc&)
    {
        return Fail(kFailed, "", 0, "out of memory");
    }
    catch (const std::exception& error) // nothing is known to come here; a message beats an abort
    {
        return Fail(kFailed, "", 0, error.what());
    }
}
