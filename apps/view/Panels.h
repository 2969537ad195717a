// VelmarBase: viewer.
#pragma once

#include "Controls.h"

namespace vx::view
{

/// Everything that stands around and over the picture. Sizes are in the units of the window's events.
class Panels
{
public:
    Panels(Session& session, Controls& controls) : mSession(session), mControls(controls) {}

    /// Fonts and sizes, before the first frame and whenever the scale is another.
    /// @param scale of everything, 1 for plain screens  @param density device pixels for each unit
    void SetScale(float scale, float density);
    float PanelWidth() const;   ///< left of the picture; 0 while it is hidden
    float StatusHeight() const; ///< below the picture; 0 with the panel hidden

    void Draw(float width, float height); ///< one frame of a window of that size, between ImGui's NewFrame and Render

private:
    void DrawSide(float height);
    void DrawHeading();
    void DrawLook();
    void DrawSurface();
    void DrawCamera();
    void DrawSelection();
    void DrawGroups();
    void DrawFiles();
    void DrawStatus(float width, float height);
    void DrawMessage(float height);
    void DrawHint(float width, float height);
    void DrawHelp(float width, float height);

    void Switch(const char* label, bool PreviewOptions::*option);
    void Switch(const char* label, OverlayKind overlay);
    void Color(const char* label, VERTEX PreviewOptions::*option);
    void Label(const char* text) const;
    float Em(float units) const; ///< units of the font's height

    Session& mSession;
    Controls& mControls;
    float mScale = 1;
};

} // namespace vx::view
