// VelmarBase: engine and scene.
#pragma once

#include "VelmarExport.h"
#include "engine/VXObject.h"

/// A scene object that carries viewing parameters and matrices. The host computes the perspective, full camera, world
/// and inverse view matrices and stores them here, identities until then; the camera computes its object transform
/// alone.
class VELMAR_EXPORT VXCamera : public VXObject
{
public:
    VXCamera();
    ~VXCamera() override;

    float FocalLength() const { return mFocalLength; } ///< in film widths; 0 is orthographic
    void SetFocal(float focalLength);                  ///< also sets or clears ortho
    bool IsOrtho() const { return mOrtho; }
    void SetOrtho(bool on) { mOrtho = on; }
    float FOV() const; ///< full angle in degrees; 90 for focal length 0
    float ModelDistance() const { return mModelDistance; }
    void SetModelDistance(float distance) { mModelDistance = distance; }
    const VERTEX& LocalOrigin() const { return mLocalOrigin; } ///< what the camera turns about
    void SetLocalOrigin(float x, float y, float z) { mLocalOrigin = {x, y, z}; }
    const Mat44& GetRotMat() const { return mRotMat; }
    void SetRotMat(const Mat44 m) { MAT_Copy(m, mRotMat); }
    float Hither() const { return mHither; } ///< near plane
    void SetHither(float distance) { mHither = distance; }
    float Yon() const { return mYon; } ///< far plane
    void SetYon(float distance) { mYon = distance; }
    Mat44& GetPerspectiveMat() { return mPerspectiveMat; }
    const Mat44& GetPerspectiveMat() const { return mPerspectiveMat; }
    void SetPerspectiveMat(const Mat44 m) { MAT_Copy(m, mPerspectiveMat); }
    Mat44& GetFullCameraMat() { return mFullCameraMat; }
    const Mat44& GetFullCameraMat() const { return mFullCameraMat; }
    void SetFullCameraMat(const Mat44 m) { MAT_Copy(m, mFullCameraMat); }
    Mat44& GetWorldMat() { return mWorldMat; }
    const Mat44& GetWorldMat() const { return mWorldMat; }
    void SetWorldMat(const Mat44 m) { MAT_Copy(m, mWorldMat); }
    Mat44& GetInverseViewMat() { return mInverseViewMat; }
    const Mat44& GetInverseViewMat() const { return mInverseViewMat; }
    void SetInverseViewMat(const Mat44 m) { MAT_Copy(m, mInverseViewMat); }

    /// Object transform := away by the model distance, turned by the rotation matrix, moved to the local origin.
    /// @param negate away is along -z
    void CalcViewTransform(bool negate);

    /// The world point behind a point of clip space: `in` through the inverse of the full camera matrix, divided by w
    /// where the transformed w is neither 0 nor 1. With focal length 0, the world matrix's origin whatever `in` is.
    /// Nothing for a null `out`.
    void ScreenToWorld(const VERTEX* in, VERTEX* out) const;
    void GetFocalPoint(VERTEX& point) const; ///< leaves the point as it is

private:
    float mFocalLength = 1;
    VERTEX mLocalOrigin;
    float mModelDistance = 1;
    Mat44 mRotMat;
    bool mOrtho = false;
    Mat44 mPerspectiveMat;
    Mat44 mFullCameraMat;
    float mHither = 0.0156f;
    float mYon = 100;
    Mat44 mWorldMat;
    Mat44 mInverseViewMat;
};
