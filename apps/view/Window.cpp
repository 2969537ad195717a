// VelmarBase: viewer.
#include "Window.h"

#include "host/gl/LoadGL.h"
#include "host/image/Png.h"

#include <GLFW/glfw3.h>
#include <backends/imgui_impl_glfw.h>
#include <backends/imgui_impl_opengl3.h>
#include <imgui.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

namespace vx::view
{

static constexpr int kFramesToSettle = 3;           // panels lag behind an event by a frame or two
static constexpr double kSecondsBetweenLooks = 0.4; // at files
static constexpr int kStandardWidth = 1280, kStandardHeight = 800;

// GLFW tells its troubles to a function; the last one explains why a call failed.
static std::string& LastTrouble()
{
    static std::string text;
    return text;
}

Window::Window(Session& session) : mSession(session), mControls(session), mPanels(session, mControls) {}

Window::~Window()
{
    if (mWindow)
    {
        glfwMakeContextCurrent(mWindow);
        mTarget.Release();
        if (mPanelsStarted)
        {
            ImGui_ImplOpenGL3_Shutdown();
            ImGui_ImplGlfw_Shutdown();
            ImGui::DestroyContext();
        }
    }
}

// --- Opening

BString Window::Open(const Wishes& wishes)
{
    glfwSetErrorCallback(
        [](int, const char* text)
        {
            const std::size_t length = std::min(std::strlen(text), LastTrouble().capacity()); // nothing may be thrown
            LastTrouble().assign(text, length);
        });
    LastTrouble().reserve(1000);
    if (!glfwInit())
        return "no display to open a window on: " + BString(LastTrouble()) +
               "; velmar preview draws pictures without one";
    glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 3);
    glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 3);
    glfwWindowHint(GLFW_OPENGL_PROFILE, GLFW_OPENGL_COMPAT_PROFILE);
    glfwWindowHint(GLFW_DEPTH_BITS, 0); // the picture is drawn into a target of its own
    glfwWindowHint(GLFW_STENCIL_BITS, 0);
    glfwWindowHint(GLFW_SCALE_TO_MONITOR, GLFW_TRUE);
    glfwWindowHint(GLFW_CONTEXT_ROBUSTNESS, GLFW_LOSE_CONTEXT_ON_RESET); // where there is that, a lost one tells
    int left = 0, top = 0, width = kStandardWidth, height = kStandardHeight;
    if (GLFWmonitor* const monitor = glfwGetPrimaryMonitor())
        glfwGetMonitorWorkarea(monitor, &left, &top, &width, &height);
    mWindow = glfwCreateWindow(std::clamp(width * 9 / 10, 320, kStandardWidth),
                               std::clamp(height * 9 / 10, 240, kStandardHeight), "velmar-view", nullptr, nullptr);
    if (!mWindow)
        return "no OpenGL to be had: " + BString(LastTrouble());
    glfwMakeContextCurrent(mWindow);
    glfwSwapInterval(1);
    BString problem = LoadGL();
    if (problem.IsEmpty())
        problem = mSession.PrepareContext();
    if (!problem.IsEmpty())
        return "no OpenGL to be had: " + problem;
    mOwnScale = wishes.scale;
    mControls.showPanels = wishes.panels;
    ListenToEvents();
    StartPanels();
    ApplyScale();
    if (wishes.width > 0)
        problem = Resize(wishes.width, wishes.height);
    if (!problem.IsEmpty())
        mSession.Tell(problem, true);
    return {};
}

static Controls::Modifiers ModifiersOf(int bits)
{
    return {.shift = (bits & GLFW_MOD_SHIFT) != 0, .control = (bits & (GLFW_MOD_CONTROL | GLFW_MOD_SUPER)) != 0};
}

static Controls::Modifiers ModifiersHeld(GLFWwindow* window)
{
    const auto held = [window](int key) { return glfwGetKey(window, key) == GLFW_PRESS; };
    return {.shift = held(GLFW_KEY_LEFT_SHIFT) || held(GLFW_KEY_RIGHT_SHIFT),
            .control = held(GLFW_KEY_LEFT_CONTROL) || held(GLFW_KEY_RIGHT_CONTROL)};
}

// What an event does. Events come through the window system's library, which is C: what is thrown is kept for the loop.
// Any event may change what panels show.
template <class Act>
void Window::Handle(GLFWwindow* window, Act act) noexcept
{
    Window& self = *static_cast<Window*>(glfwGetWindowUserPointer(window));
    self.mRedraws = kFramesToSettle;
    try
    {
        act(self);
    }
    catch (...)
    {
        self.mThrown = std::current_exception();
    }
}

void Window::PressOrRelease(int button, int action, int mods)
{
    double x = 0, y = 0;
    float px = 0, py = 0;
    glfwGetCursorPos(mWindow, &x, &y);
    if (button < GLFW_MOUSE_BUTTON_LEFT || button > GLFW_MOUSE_BUTTON_MIDDLE)
        return;
    const Controls::Button which = button == GLFW_MOUSE_BUTTON_LEFT    ? Controls::Button::Left
                                   : button == GLFW_MOUSE_BUTTON_RIGHT ? Controls::Button::Right
                                                                       : Controls::Button::Middle;
    if (action == GLFW_RELEASE)
        mControls.Release(which);
    else if (OverPicture(x, y, px, py))
        mControls.Press(which, ModifiersOf(mods), px, py);
}

void Window::Move(double x, double y)
{
    float px = 0, py = 0;
    OverPicture(x, y, px, py);
    mControls.Move(px, py);
}

void Window::Scroll(double steps)
{
    double x = 0, y = 0;
    float px = 0, py = 0;
    glfwGetCursorPos(mWindow, &x, &y);
    if (OverPicture(x, y, px, py))
        mControls.Wheel(float(steps), ModifiersHeld(mWindow), px, py);
}

// Set before those of the panels, which call these in turn.
void Window::ListenToEvents()
{
    glfwSetWindowUserPointer(mWindow, this);
    glfwSetMouseButtonCallback(mWindow, [](GLFWwindow* w, int button, int action, int mods)
                               { Handle(w, [=](Window& self) { self.PressOrRelease(button, action, mods); }); });
    glfwSetCursorPosCallback(mWindow, [](GLFWwindow* w, double x, double y)
                             { Handle(w, [=](Window& self) { self.Move(x, y); }); });
    glfwSetScrollCallback(mWindow, [](GLFWwindow* w, double, double steps)
                          { Handle(w, [=](Window& self) { self.Scroll(steps); }); });
    glfwSetKeyCallback(mWindow,
                       [](GLFWwindow* w, int key, int, int action, int mods)
                       {
                           Handle(w,
                                  [=](Window& self)
                                  {
                                      if (action != GLFW_RELEASE && !ImGui::GetIO().WantTextInput)
                                          self.mControls.Key(key, ModifiersOf(mods));
                                  });
                       });
    glfwSetDropCallback(mWindow,
                        [](GLFWwindow* w, int count, const char** names)
                        {
                            Handle(w,
                                   [=](Window& self)
                                   {
                                       const std::vector<BPath> files(names, names + count);
                                       self.mControls.Report(self.mSession.Drop(files));
                                   });
                        });
    glfwSetWindowContentScaleCallback(mWindow, [](GLFWwindow* w, float, float)
                                      { Handle(w, [](Window& self) { self.mScaleStale = true; }); });
    glfwSetWindowRefreshCallback(mWindow, [](GLFWwindow* w) { Handle(w, [](Window&) {}); });
    glfwSetFramebufferSizeCallback(mWindow, [](GLFWwindow* w, int, int) { Handle(w, [](Window&) {}); });
}

void Window::StartPanels()
{
    ImGui::CreateContext();
    ImGui::GetIO().IniFilename = nullptr; // nothing is left in the folder where the viewer runs
    ImGui_ImplGlfw_InitForOpenGL(mWindow, true);
    ImGui_ImplOpenGL3_Init("#version 330");
    mPanelsStarted = true;
}

float Window::Density() const
{
    int width = 0, height = 0, pixelWidth = 0, pixelHeight = 0;
    glfwGetWindowSize(mWindow, &width, &height);
    glfwGetFramebufferSize(mWindow, &pixelWidth, &pixelHeight);
    return width > 0 && pixelWidth > 0 ? float(pixelWidth) / float(width) : 1;
}

// Where units of events are pixels, a fine screen asks for everything to be larger; elsewhere the units have grown.
void Window::ApplyScale()
{
    mScaleStale = false;
    float content = 1, ignored = 1;
    glfwGetWindowContentScale(mWindow, &content, &ignored);
    content = std::clamp(content * mOwnScale, 0.5f, 8.0f);
    const float density = Density();
    ImGui_ImplOpenGL3_DestroyFontsTexture();
    mPanels.SetScale(content / density, density);
    ImGui_ImplOpenGL3_CreateFontsTexture();
    mControls.SetPixelScale(content);
    mSession.Touch();
}

// --- Places

Window::Place Window::PictureNow() const
{
    int width = 0, height = 0;
    glfwGetFramebufferSize(mWindow, &width, &height);
    const float density = Density();
    Place place;
    place.x = int(std::lround(mPanels.PanelWidth() * density));
    place.y = int(std::lround(mPanels.StatusHeight() * density));
    place.width = std::max(width - place.x, 0);
    place.height = std::max(height - place.y, 0);
    return place;
}

bool Window::OverPicture(double x, double y, float& pictureX, float& pictureY) const
{
    const Place place = PictureNow();
    const float density = Density();
    pictureX = float(x) * density - float(place.x);
    pictureY = float(y) * density;
    return pictureX >= 0 && pictureY >= 0 && pictureX < float(place.width) && pictureY < float(place.height) &&
           !ImGui::GetIO().WantCaptureMouse;
}

void Window::FitTitle()
{
    const std::vector<BPath>& models = mSession.Models();
    const std::string title = models.empty() ? "velmar-view" : models.front().FileName().Std() + " \u2013 velmar-view";
    if (title == mTitle)
        return;
    mTitle = title;
    glfwSetWindowTitle(mWindow, title.c_str());
}

// --- Drawing

BString Window::DrawPicture(const Place& place)
{
    const BString problem = mTarget.Create(place.width, place.height, std::min(mSession.Options().samples, 4));
    if (!problem.IsEmpty())
        return problem;
    const auto start = std::chrono::steady_clock::now();
    mTarget.Bind();
    const bool drawn = mSession.Draw(mControls.PixelScale());
    glFinish();
    mSession.SetMilliseconds(
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    return drawn ? BString() : BString(mSession.Telling().text);
}

void Window::Draw()
{
    if (mScaleStale)
        ApplyScale();
    FitTitle();
    int width = 0, height = 0, pixelWidth = 0, pixelHeight = 0;
    glfwGetWindowSize(mWindow, &width, &height);
    glfwGetFramebufferSize(mWindow, &pixelWidth, &pixelHeight);
    mRedraws = std::max(mRedraws - 1, 0);
    if (pixelWidth < 1 || pixelHeight < 1)
        return; // minimised
    mLost = mSession.PrepareContext();
    if (!mLost.IsEmpty())
        return;
    ImGui_ImplOpenGL3_NewFrame();
    ImGui_ImplGlfw_NewFrame();
    ImGui::NewFrame();
    mPanels.Draw(float(width), float(height));
    ImGui::Render();

    const Place place = PictureNow();
    if (place.width > 0 && place.height > 0)
    {
        mSession.SetSize(place.width, place.height);
        if (mSession.IsStale())
        {
            mProblem = DrawPicture(place);
            mRedraws = std::max(mRedraws, 2); // for the counts in the panels
            if (!mProblem.IsEmpty())
                mSession.Tell(mProblem, true);
            mSession.Drawn();
        }
        mTarget.CopyToWindow(place.x, place.y);
    }
    ImGui_ImplOpenGL3_RenderDrawData(ImGui::GetDrawData());
}

// --- The loop

void Window::LookAround()
{
    try
    {
        if (mThrown)
            std::rethrow_exception(std::exchange(mThrown, nullptr));
    }
    catch (const std::bad_alloc&)
    {
        mSession.Tell("out of memory", true);
    }
    const double now = glfwGetTime();
    if (now >= mNextLook)
    {
        mNextLook = now + kSecondsBetweenLooks;
        if (mSession.LookAtFiles())
            mRedraws = kFramesToSettle;
    }
    mSession.SetMoving(mControls.IsDragging());
    if (mControls.wantsScreenshot)
    {
        mControls.wantsScreenshot = false;
        const BPath file = NextScreenshot(".");
        const BString problem = Screenshot(file);
        problem.IsEmpty() ? mSession.Tell("saved " + file.FileName()) : mSession.Tell(problem, true);
    }
    const bool telling = !mSession.Telling().text.empty();
    if (telling != mTellingShown)
        mRedraws = kFramesToSettle;
    mTellingShown = telling;
    if (mControls.wantsToClose)
        glfwSetWindowShouldClose(mWindow, GLFW_TRUE);
}

void Window::WaitForEvents()
{
    if (mRedraws > 0 || mSession.IsStale())
        glfwPollEvents();
    else
        glfwWaitEventsTimeout(kSecondsBetweenLooks);
}

BString Window::Run(Script* script)
{
    if (script)
        Draw(); // what its first line asks for is asked of a picture that is there
    while (!glfwWindowShouldClose(mWindow) && mLost.IsEmpty())
    {
        const bool scripted = script && !script->IsAtEnd();
        if (scripted && !script->RunNext(*this))
            return script->Error();
        if (scripted)
            glfwPollEvents();
        else
            WaitForEvents();
        LookAround();
        int width = 0, height = 0;
        glfwGetFramebufferSize(mWindow, &width, &height);
        if (width < 1 || height < 1)
        {
            if (!scripted)
                glfwWaitEventsTimeout(kSecondsBetweenLooks); // minimised: nothing can be drawn
        }
        else if (mRedraws > 0 || mSession.IsStale())
        {
            Draw();
            glfwSwapBuffers(mWindow);
        }
    }
    return mLost;
}

// --- What scripts ask

BString Window::DrawNow()
{
    mRedraws = kFramesToSettle;
    while (mRedraws > 0 || mSession.IsStale())
    {
        Draw();
        if (!mLost.IsEmpty())
            return mLost;
        const Place place = PictureNow();
        if (place.width < 1 || place.height < 1)
            return "the window is too small to show anything";
    }
    return mProblem;
}

BString Window::Resize(int width, int height)
{
    constexpr double kPatience = 3; // seconds that a window system gets
    const double start = glfwGetTime();
    const float density = Density();
    const Place frame = PictureNow();
    glfwSetWindowSize(mWindow, int(std::ceil(float(width + frame.x) / density)),
                      int(std::ceil(float(height + frame.y) / density)));
    Place now = PictureNow();
    while ((now.width != width || now.height != height) && glfwGetTime() < start + kPatience)
    {
        glfwWaitEventsTimeout(0.02);
        now = PictureNow();
    }
    if (now.width == width && now.height == height)
        return {};
    return BString::Format("the window system gives a picture of %d x %d pixels instead of %d x %d", now.width,
                           now.height, width, height);
}

BString Window::Screenshot(const BPath& file)
{
    if (BString problem = DrawNow(); !problem.IsEmpty())
        return problem;
    const PicturePtr picture = mTarget.ReadBack(false);
    return picture ? WritePng(*picture, file) : BString("out of memory");
}

BString Window::WindowShot(const BPath& file)
{
    if (BString problem = DrawNow(); !problem.IsEmpty())
        return problem;
    Draw();
    int width = 0, height = 0;
    glfwGetFramebufferSize(mWindow, &width, &height);
    const PicturePtr picture = Framebuffer::ReadWindow(width, height);
    return picture ? WritePng(*picture, file) : BString("out of memory");
}

void Window::Wait(double seconds)
{
    const double end = glfwGetTime() + seconds;
    do
    {
        LookAround();
        if (mRedraws > 0 || mSession.IsStale())
        {
            Draw();
            glfwSwapBuffers(mWindow);
        }
        glfwWaitEventsTimeout(std::clamp(end - glfwGetTime(), 0.001, 0.05));
    } while (glfwGetTime() < end && !glfwWindowShouldClose(mWindow) && mLost.IsEmpty());
}

} // namespace vx::view
