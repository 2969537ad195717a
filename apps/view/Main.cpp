// VelmarBase: viewer.
#include "Script.h"
#include "Window.h"

#include "apps/PictureOptions.h"
#include "base/BFile.h"
#include "base/MEM.h"

#include <CLI/CLI.hpp>
#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

using namespace vx::cli;

namespace
{

/// Ends the window system's library, and with it the OpenGL context, after all that lives in it.
struct WindowSystem
{
    ~WindowSystem() { glfwTerminate(); }
};

struct ViewArguments : PictureArguments
{
    std::string script;
    bool noPanels = false;
    float scale = 1;
    bool sized = false;
};

int ReadScript(const std::string& name, vx::view::Script& script)
{
    Input input{BString(name)};
    if (name == "-" && !input.Open())
        return Fail(kFailed, input.Name(), 0, input.Error());
    BFile file(input.Path());
    char* const text = file.Open(BFile::Mode::Read) == 0 ? file.ReadAll() : nullptr;
    if (!text)
        return Fail(kFailed, input.Name(), 0, file.LastError() + ", expected a script of commands");
    const bool read = script.Read({text, std::size_t(MEM_Count(text))}, input.Name().Std());
    MEM_Free(text);
    return read ? int(kDone) : Fail(kFailed, "", 0, script.Error());
}

int OpenModels(const ViewArguments& arguments, vx::view::Session& session, std::vector<std::unique_ptr<Input>>& inputs)
{
    std::vector<BPath> models;
    for (const std::string& name : arguments.Inputs())
    {
        inputs.push_back(std::make_unique<Input>(BString(name)));
        if (!inputs.back()->Open())
            return Fail(kFailed, inputs.back()->Name(), 0, inputs.back()->Error());
        models.push_back(inputs.back()->Path());
    }
    if (models.empty() && arguments.script.empty())
        models.push_back(BundledSample());
    const BString problem = models.empty() ? BString() : session.Open(models);
    return problem.IsEmpty() ? int(kDone) : Fail(kFailed, "", 0, problem);
}

int View(ViewArguments& arguments)
{
    if (const int code = arguments.ReadOptions(); code != kDone)
        return code;
    vx::view::Script script;
    if (!arguments.script.empty())
        if (const int code = ReadScript(arguments.script, script); code != kDone)
            return code;

    Stopwatch watch(arguments.verbose);
    const WindowSystem windowSystem;
    std::vector<std::unique_ptr<Input>> inputs; // standard input lies in a file as long as it is shown
    vx::view::Session session;
    session.SetStart(arguments.picture, arguments.Import());
    if (const int code = OpenModels(arguments, session, inputs); code != kDone)
        return code;
    if (!arguments.Materials().empty())
        if (const BString problem = session.SetMaterials(BString(arguments.Materials())); !problem.IsEmpty())
            return Fail(kFailed, "", 0, problem);
    if (!arguments.Texture().empty())
        if (const BString problem = session.SetTexture(BString(arguments.Texture())); !problem.IsEmpty())
            return Fail(kFailed, "", 0, problem);
    if (const BPath& behind = arguments.picture.backgroundPicture; !behind.IsEmpty())
        if (BString why; !vx::ReadPicture(behind, why))
            return Fail(kFailed, "", 0, behind.FullPath() + ": " + why + ", expected a picture");
    if (const BString problem = session.SetSubdivision(arguments.picture.subdivision, arguments.picture.ownScheme);
        !problem.IsEmpty())
        return Fail(kFailed, "", 0, problem);
    watch.Tell("read the models");

    vx::view::Window window(session);
    vx::view::Window::Wishes wishes{.panels = !arguments.noPanels, .scale = arguments.scale};
    if (arguments.sized)
    {
        wishes.width = arguments.picture.width;
        wishes.height = arguments.picture.height;
    }
    if (const BString problem = window.Open(wishes); !problem.IsEmpty())
        return Fail(kNoOpenGL, "", 0, problem);
    watch.Tell("opened a window: " + session.ContextDescription());
    const BString problem = window.Run(arguments.script.empty() ? nullptr : &script);
    return problem.IsEmpty() ? int(kDone) : Fail(kFailed, "", 0, problem);
}

int Run(int argc, char** argv)
{
    ViewArguments arguments;
    CLI::App app("Shows polygon models in a window.", "velmar-view");
    app.set_version_flag("--version", "velmar-view " VELMAR_VERSION, "Print the version and leave");
    app.set_help_flag("-h,--help", "Print this help and leave");
    arguments.AddModels(app);
    app.add_option("--script", arguments.script, "Run the commands of a file, then stay; - is standard input")
        ->type_name("FILE");
    arguments.AddSize(app, "1280x720", "Size of the picture in pixels, panels not counted");
    app.add_flag("--no-panels", arguments.noPanels, "Show the picture alone; Tab brings the panels back");
    AddNumber(app, "--scale", arguments.scale, 0.5, 4, "Size of letters and panels, beside what the screen asks for");
    arguments.AddMode(app);
    arguments.AddView(app);
    arguments.AddLook(app);
    arguments.AddSurface(app);
    arguments.AddMaterials(app);
    arguments.AddMarks(app);
    app.footer(app.get_footer() + "\n\nCommands of a script, one in a line:\n" + vx::view::Script::Help() +
               "\nExit codes: 0 done, 1 the input could not be used or the work failed, 2 wrong usage,\n"
               "3 no window or no OpenGL to be had.");
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
        const auto rest = app.remaining(true);
        const BString help = "see 'velmar-view --help'";
        if (dynamic_cast<const CLI::ExtrasError*>(&error) && !rest.empty())
            return Fail(kWrongUsage, BString(rest.front()), 0, "unknown option, " + help);
        return Fail(kWrongUsage, "", 0, error.what() + (", " + help));
    }
    arguments.sized = app.count("--size") > 0;
    return View(arguments);
}

} // namespace

int main(int argc, char** argv)
{
    SetProgramName("velmar-view");
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
