// VelmarBase: viewer.
#pragma once

#include "Session.h"

#include <span>

namespace vx::view
{

/// What mouse and keys do to a session. Places are pixels from the upper left corner of the picture.
class Controls
{
public:
    explicit Controls(Session& session) : mSession(session) {}

    enum class Button
    {
        Left,
        Middle,
        Right,
    };
    struct Modifiers
    {
        bool shift = false, control = false;
    };

    void Press(Button button, Modifiers modifiers, float x, float y);
    void Move(float x, float y);
    void Release(Button button);
    void Wheel(float steps, Modifiers modifiers, float x, float y);
    void Key(int key, Modifiers modifiers); ///< as GLFW numbers them; others than those of Keys() do nothing
    bool IsDragging() const { return mDrag != Drag::Off; }
    float PixelScale() const { return mPixelScale; }
    void SetPixelScale(float scale) { mPixelScale = scale; } ///< device pixels for each pixel as a hand knows them

    // What the window has to do
    bool showPanels = true, showHelp = false;
    bool wantsScreenshot = false, wantsToClose = false;

    /// A key and what it does, for the page that tells.
    struct KeyRow
    {
        int key;
        bool control; ///< held down together with it
        const char* name;
        const char* purpose;
        void (*act)(Controls& controls);
    };
    static std::span<const KeyRow> Keys();
    struct MouseRow
    {
        const char* action;
        const char* purpose;
    };
    static std::span<const MouseRow> MouseActions();

    Session& Of() { return mSession; }
    void Report(const BString& problem); ///< tells it, when there is one
    void NextStyle(int step);

private:
    enum class Drag
    {
        Off,
        Undecided, ///< pressed, and not moved far: a click, if it ends here
        Orbit,
        Pan,
    };

    Session& mSession;
    Drag mDrag = Drag::Off, mDragTo = Drag::Off;
    Button mButton = Button::Left;
    Modifiers mModifiers;
    float mX = 0, mY = 0, mPressX = 0, mPressY = 0;
    float mPixelScale = 1;
    float mWheel = 0; ///< parts of a step that have not grown the selection yet
};

} // namespace vx::view
