// VelmarBase: viewer.
#pragma once

#include "Panels.h"
#include "Script.h"

#include "host/gl/Framebuffer.h"

#include <exception>
#include <memory>

struct GLFWwindow;

namespace vx::view
{

/// The window in which a session is shown: OpenGL context, events, the picture and the panels around it. Draws only
/// when something has changed; waits for events otherwise. One for each process.
class Window : public ScriptHost
{
public:
    explicit Window(Session& session);
    ~Window() override;

    struct Wishes
    {
        int width = 0, height = 0; ///< of the picture; 0 for what suits the screen
        bool panels = true;
        float scale = 1; ///< of panels and lines, beside the screen's own
    };
    BString Open(const Wishes& wishes); ///< @return empty, or what keeps a window from being had

    /// Until it is closed, the script has failed, or the context is lost. @return empty, or what went wrong
    BString Run(Script* script);

    // What scripts ask
    Session& GetSession() override { return mSession; }
    Controls& GetControls() override { return mControls; }
    BString Resize(int width, int height) override;
    BString Screenshot(const BPath& file) override;
    BString WindowShot(const BPath& file) override;
    void Wait(double seconds) override;
    BString DrawNow() override;

private:
    /// Of the picture in the window's framebuffer, whose origin is below; device pixels.
    struct Place
    {
        int x = 0, y = 0, width = 0, height = 0;
    };
    template <class Act>
    static void Handle(GLFWwindow* window, Act act) noexcept;
    void PressOrRelease(int button, int action, int mods);
    void Move(double x, double y);
    void Scroll(double steps);
    void ListenToEvents();
    void StartPanels();
    void ApplyScale();
    void FitTitle();
    Place PictureNow() const;
    float Density() const; ///< device pixels for each unit of events
    bool OverPicture(double x, double y, float& pictureX, float& pictureY) const;
    void LookAround();                       ///< files, messages, wishes of the controls
    void Draw();                             ///< one frame of the window; the picture only when it is stale
    BString DrawPicture(const Place& place); ///< empty, or what went wrong
    void WaitForEvents();

    Session& mSession;
    Controls mControls;
    Panels mPanels;
    GLFWwindow* mWindow = nullptr;
    bool mPanelsStarted = false;
    float mOwnScale = 1;
    bool mScaleStale = true;
    Framebuffer mTarget;
    std::string mTitle;
    BString mProblem;           ///< of the last picture
    BString mLost;              ///< the context is: nothing can be drawn any more
    std::exception_ptr mThrown; ///< by what an event did
    int mRedraws = 3;           ///< frames that panels need to settle after an event
    double mNextLook = 0;
    bool mTellingShown = false;
};

} // namespace vx::view
