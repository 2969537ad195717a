// The state of a host's tools, for tests of what is drawn for them.
#pragma once

#include "draw/VXAppToolInfo.h"

/// Tools as a host would keep them; must outlive the engine that gets the info.
struct Tools
{
    bool group = false, multi = false, none = false, morph = false, showMesh = false, cd1 = false, cd2 = false,
         last = false;
    E_GroupModeSelectionType selection = kGroupSelectPolygons;
    int mode = 0;
    std::int32_t word = 0, closest = 0;
    std::uint32_t bits = 0;
    VERTEX magic;

    VXAppToolInfo* Info()
    {
        return new VXAppToolInfo(group, selection, multi, none, mode, word, bits, morph, magic, closest, showMesh, cd1,
                                 cd2, last);
    }
};
