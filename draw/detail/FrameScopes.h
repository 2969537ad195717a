// VelmarBase: drawing.
#pragma once

#include "draw/VXSceneDrawEngine.h"
#include "engine/VXObject.h"
#include "shader/VXShaderEngine.h"

/// Graphics state saved for one frame, restored on every way out of it.
class FrameState
{
public:
    explicit FrameState(VXSceneDrawEngine& engine) : mEngine(engine) { mEngine.BeginFrameState(); }
    ~FrameState() { mEngine.EndFrameState(); }
    FrameState(const FrameState&) = delete;
    FrameState& operator=(const FrameState&) = delete;

private:
    VXSceneDrawEngine& mEngine;
};

/// The arrays of one geometry, switched off again at the end.
class ClientArrays
{
public:
    explicit ClientArrays(VXSceneDrawEngine& engine) : mEngine(engine) { mEngine.EnableClientArrays(); }
    ~ClientArrays() { mEngine.DisableClientArrays(); }
    ClientArrays(const ClientArrays&) = delete;
    ClientArrays& operator=(const ClientArrays&) = delete;

private:
    VXSceneDrawEngine& mEngine;
};

/// An object prepared for drawing, or for picking. The end always follows, whatever the object's delegate answered, so
/// that the preparation depth returns to zero; only an object that was ready counts as drawn.
class PreparedObject
{
public:
    PreparedObject(VXObject& object, bool picking)
        : mObject(object), mPicking(picking),
          mReady((picking ? object.PrepareForPicking() : object.PrepareForDrawing()) == 0)
    {
    }
    ~PreparedObject()
    {
        if (mPicking)
            mObject.EndPicking();
        else
            mObject.EndDrawing();
        if (mReady && !mPicking)
            mObject.SetChanged(false);
    }
    PreparedObject(const PreparedObject&) = delete;
    PreparedObject& operator=(const PreparedObject&) = delete;
    bool Ready() const { return mReady; }

private:
    VXObject& mObject;
    bool mPicking;
    bool mReady;
};

/// The shader engine made active while a part of a frame may use shaders.
class ActiveShading
{
public:
    ActiveShading(VXShaderEngine* engine, bool wanted) : mEngine(wanted ? engine : nullptr)
    {
        if (mEngine)
            mEngine->EnableEngine();
    }
    ~ActiveShading()
    {
        if (mEngine)
            mEngine->DisableEngine();
    }
    ActiveShading(const ActiveShading&) = delete;
    ActiveShading& operator=(const ActiveShading&) = delete;

private:
    VXShaderEngine* mEngine;
};

/// Surface colours of an object's style, brought back at the end: tools draw in other colours for a moment.
class KeptColors
{
public:
    explicit KeptColors(VXMaterial& style)
        : mStyle(style), mKd(style.KdColor()), mKs(style.KsColor()), mKa(style.KaColor())
    {
    }
    ~KeptColors()
    {
        mStyle.KdColor() = mKd;
        mStyle.KsColor() = mKs;
        mStyle.KaColor() = mKa;
    }
    KeptColors(const KeptColors&) = delete;
    KeptColors& operator=(const KeptColors&) = delete;

private:
    VXMaterial& mStyle;
    VXMaterialColor4 mKd, mKs, mKa;
};
