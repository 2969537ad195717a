// VelmarBase: viewer.
#include "Controls.h"

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace vx::view
{

static constexpr float kClickSlack = 4;         // pixels that a click may wander
static constexpr float kDegreesPerHeight = 220; // of orbiting, for a drag over the height of the picture
static constexpr float kZoomPerStep = 1.15f;

// --- Mouse

void Controls::Press(Button button, Modifiers modifiers, float x, float y)
{
    if (mDrag != Drag::Off)
        return; // the first button decides
    mDrag = Drag::Undecided;
    mDragTo = button == Button::Left && !modifiers.shift ? Drag::Orbit : Drag::Pan;
    mButton = button;
    mModifiers = modifiers;
    mX = mPressX = x;
    mY = mPressY = y;
}

void Controls::Move(float x, float y)
{
    if (mDrag == Drag::Undecided && std::hypot(x - mPressX, y - mPressY) > kClickSlack * mPixelScale)
        mDrag = mDragTo;
    const float right = x - mX, down = y - mY;
    const float height = float(std::max(mSession.Options().height, 1));
    if (mDrag == Drag::Orbit) // the model follows the hand, so the camera walks the other way
        mSession.MoveCamera().Orbit(-right * kDegreesPerHeight / height, down * kDegreesPerHeight / height);
    else if (mDrag == Drag::Pan)
        mSession.MoveCamera().Pan(right, -down, height);
    if (mDrag == Drag::Undecided)
        return; // what has not moved yet is made up for as soon as it does
    mX = x;
    mY = y;
}

void Controls::Release(Button button)
{
    if (mDrag == Drag::Off || button != mButton)
        return;
    if (mDrag == Drag::Undecided && mButton == Button::Left && !mModifiers.shift)
        mSession.SelectAt(mPressX, mPressY, mModifiers.control);
    mDrag = Drag::Off;
}

void Controls::Wheel(float steps, Modifiers modifiers, float x, float y)
{
    if (!modifiers.control)
    {
        const PreviewOptions& picture = mSession.Options();
        const float half = 0.5f * float(std::max(picture.height, 1));
        mSession.MoveCamera().Zoom(std::pow(kZoomPerStep, steps), (x - 0.5f * float(picture.width)) / half,
                                   (half - y) / half);
        return;
    }
    // Touch pads send many small parts of a step.
    mWheel += steps;
    const int whole = int(std::trunc(mWheel));
    mWheel -= float(whole);
    if (whole != 0)
        mSession.ChangeSelection().Apply(whole > 0 ? Selection::Step::Grow : Selection::Step::Shrink, std::abs(whole));
}

// --- Keys

void Controls::Report(const BString& problem)
{
    if (!problem.IsEmpty())
        mSession.Tell(problem, true);
}

void Controls::NextStyle(int step)
{
    const int mode = int(mSession.Options().mode) + step;
    mSession.Change().mode = DrawMode((mode + kNumDrawModes) % kNumDrawModes);
    mSession.Tell(PresetOf(mSession.Options().mode).name);
}

static void Subdivide(Controls& controls, int step)
{
    const PreviewOptions& options = controls.Of().Options();
    const int level = std::clamp(options.subdivision + step, 0, kMostSubdivision);
    controls.Report(controls.Of().SetSubdivision(level, options.ownScheme));
}

static void Look(Controls& controls, float azimuth, float elevation)
{
    controls.Of().MoveCamera().SetDirection(azimuth, elevation);
}

static constexpr Controls::KeyRow kKeys[] = {
    {GLFW_KEY_F, false, "F", "frame the selection", [](Controls& c) { c.Of().FrameSelected(); }},
    {GLFW_KEY_A, false, "A", "frame all", [](Controls& c) { c.Of().FrameAll(); }},
    {GLFW_KEY_1, false, "1", "from the front", [](Controls& c) { Look(c, 0, 0); }},
    {GLFW_KEY_2, false, "2", "from the side", [](Controls& c) { Look(c, 90, 0); }},
    {GLFW_KEY_3, false, "3", "from above", [](Controls& c) { Look(c, 0, 90); }},
    {GLFW_KEY_0, false, "0", "from a corner", [](Controls& c) { Look(c, 35, 20); }},
    {GLFW_KEY_O, false, "O", "parallel or perspective",
     [](Controls& c) { c.Of().MoveCamera().SetOrtho(!c.Of().Camera().Look().ortho); }},
    {GLFW_KEY_RIGHT_BRACKET, false, "]", "next draw style", [](Controls& c) { c.NextStyle(1); }},
    {GLFW_KEY_LEFT_BRACKET, false, "[", "draw style before", [](Controls& c) { c.NextStyle(-1); }},
    {GLFW_KEY_E, false, "E", "edge lines", [](Controls& c) { c.Of().Change().edgeLines ^= true; }},
    {GLFW_KEY_S, false, "S", "shadows", [](Controls& c) { c.Of().Change().shadows ^= true; }},
    {GLFW_KEY_G, false, "G", "ground", [](Controls& c) { c.Of().Change().ground ^= true; }},
    {GLFW_KEY_C, false, "C", "cage", [](Controls& c) { c.Of().Change().cage ^= true; }},
    {GLFW_KEY_PAGE_UP, false, "Page up", "subdivide more", [](Controls& c) { Subdivide(c, 1); }},
    {GLFW_KEY_PAGE_DOWN, false, "Page down", "subdivide less", [](Controls& c) { Subdivide(c, -1); }},
    {GLFW_KEY_EQUAL, false, "+", "grow the selection",
     [](Controls& c) { c.Of().ChangeSelection().Apply(Selection::Step::Grow); }},
    {GLFW_KEY_MINUS, false, "-", "shrink the selection",
     [](Controls& c) { c.Of().ChangeSelection().Apply(Selection::Step::Shrink); }},
    {GLFW_KEY_I, true, "Ctrl I", "invert the selection", [](Controls& c) { c.Of().ChangeSelection().Invert(); }},
    {GLFW_KEY_A, true, "Ctrl A", "select all", [](Controls& c) { c.Of().ChangeSelection().SelectAll(true); }},
    {GLFW_KEY_ESCAPE, false, "Esc", "close this page, else select nothing",
     [](Controls& c)
     {
         if (!std::exchange(c.showHelp, false))
             c.Of().ChangeSelection().SelectAll(false);
     }},
    {GLFW_KEY_R, false, "R", "read the files again", [](Controls& c) { c.Report(c.Of().Reload()); }},
    {GLFW_KEY_P, false, "P", "save a picture", [](Controls& c) { c.wantsScreenshot = true; }},
    {GLFW_KEY_TAB, false, "Tab", "show or hide the panel", [](Controls& c) { c.showPanels ^= true; }},
    {GLFW_KEY_H, false, "H", "show or hide this page", [](Controls& c) { c.showHelp ^= true; }},
    {GLFW_KEY_Q, true, "Ctrl Q", "leave", [](Controls& c) { c.wantsToClose = true; }},
};

static constexpr Controls::MouseRow kMouseActions[] = {
    {"Drag", "turn the model"},
    {"Shift drag, right or middle drag", "move it"},
    {"Wheel", "zoom about the pointer"},
    {"Click", "select a polygon"},
    {"Ctrl click", "add it or take it away"},
    {"Ctrl wheel", "grow or shrink the selection"},
    {"Drop files", "open models, give them a picture or materials"},
};

std::span<const Controls::KeyRow> Controls::Keys() { return kKeys; }
std::span<const Controls::MouseRow> Controls::MouseActions() { return kMouseActions; }

void Controls::Key(int key, Modifiers modifiers)
{
    if (key == GLFW_KEY_KP_ADD)
        key = GLFW_KEY_EQUAL;
    if (key == GLFW_KEY_KP_SUBTRACT)
        key = GLFW_KEY_MINUS;
    if (key == GLFW_KEY_F1)
        key = GLFW_KEY_H;
    for (const KeyRow& row : kKeys)
        if (row.key == key && row.control == modifiers.control)
        {
            row.act(*this);
            mSession.Touch(); // panels show what has changed
            return;
        }
}

} // namespace vx::view
