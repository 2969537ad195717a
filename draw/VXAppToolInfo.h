// VelmarBase: drawing.
#pragma once

#include "VelmarExport.h"
#include "base/Vertex.h"

#include <cstdint>

class VXObject;

/// What the host's grouping tool selects. The library passes the value on; further values are the host's.
enum E_GroupModeSelectionType : std::int32_t
{
    kGroupSelectPolygons = 0,
    kGroupSelectVertices = 1,
};

/// The state of the host's grouping and morph tools, as the draw engine sees it. Holds references to variables of the
/// host, which must outlive it; copies nothing, so what it answers is always what the tools hold now.
class VXAppToolInfo
{
public:
    using IsSameMorphEditingObjProc = bool (*)(VXObject* object);
    using CheckElemCollideProc = bool (*)(VXObject* object, std::int32_t element);

    VXAppToolInfo(bool& groupModeOn, E_GroupModeSelectionType& selectionType, bool& checkMultiGrouped,
                  bool& checkNonGrouped, int& groupingMode, std::int32_t& groupWord, std::uint32_t& groupBits,
                  bool& morphModeOn, VERTEX& morphMagicVert, std::int32_t& morphClosestVert, bool& morphDisplaysMesh,
                  bool& displayCDMode, bool& displayCDModeToo, bool& reserved)
        : mGroupModeOn(groupModeOn), mSelectionType(selectionType), mCheckMultiGrouped(checkMultiGrouped),
          mCheckNonGrouped(checkNonGrouped), mGroupingMode(groupingMode), mGroupWord(groupWord), mGroupBits(groupBits),
          mMorphModeOn(morphModeOn), mMorphMagicVert(morphMagicVert), mMorphClosestVert(morphClosestVert),
          mMorphDisplaysMesh(morphDisplaysMesh), mDisplayCDMode(displayCDMode), mDisplayCDModeToo(displayCDModeToo),
          mReserved(reserved)
    {
    }

    bool GroupModeOn() const { return mGroupModeOn; }
    E_GroupModeSelectionType GroupModeSelectionType() const { return mSelectionType; }
    bool CheckMultiGroupedMode() const { return mCheckMultiGrouped; }
    bool CheckNonGroupedMode() const { return mCheckNonGrouped; }
    int CurGroupingMode() const { return mGroupingMode; }
    std::int32_t CurGroupWord() const { return mGroupWord; }  ///< index of the 32-bit word that holds the group's bit
    std::uint32_t CurGroupBits() const { return mGroupBits; } ///< mask inside that word
    bool MorphModeOn() const { return mMorphModeOn; }
    VERTEX MorphMagicVert() const { return mMorphMagicVert; }
    std::int32_t MorphClosestVertIndex() const { return mMorphClosestVert; }
    bool MorphModeDisplayMesh() const { return mMorphDisplaysMesh; }
    bool DisplayCDModeOn() const { return mDisplayCDMode && mDisplayCDModeToo; } ///< only when both switches are on

    void SetIsSameMorphEditingObjProc(IsSameMorphEditingObjProc proc) { mIsSameMorphEditingObj = proc; }
    void SetCheckElemCollideProc(CheckElemCollideProc proc) { mCheckElemCollide = proc; }
    /// The callbacks' answers; false while none is set.
    bool IsSameMorphEditingObj(VXObject* object) const
    {
        return mIsSameMorphEditingObj && mIsSameMorphEditingObj(object);
    }
    bool CheckElemCollide(VXObject* object, std::int32_t element) const
    {
        return mCheckElemCollide && mCheckElemCollide(object, element);
    }
    bool Reserved() const { return mReserved; } ///< the last reference; no meaning to the library

private:
    IsSameMorphEditingObjProc mIsSameMorphEditingObj = nullptr;
    CheckElemCollideProc mCheckElemCollide = nullptr;
    bool& mGroupModeOn;
    E_GroupModeSelectionType& mSelectionType;
    bool& mCheckMultiGrouped;
    bool& mCheckNonGrouped;
    int& mGroupingMode;
    std::int32_t& mGroupWord;
    std::uint32_t& mGroupBits;
    bool& mMorphModeOn;
    VERTEX& mMorphMagicVert;
    std::int32_t& mMorphClosestVert;
    bool& mMorphDisplaysMesh;
    bool& mDisplayCDMode;
    bool& mDisplayCDModeToo;
    bool& mReserved;
};
